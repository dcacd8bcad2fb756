#include "common/native_context.h"

#include <QOpenGLContext>
#include <QVariant>

// After Qt's own headers, which do not survive X11's.
#include <EGL/egl.h>
#include <GL/glx.h>
#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>

namespace examples {

NativeContext nativeContextOf(QOpenGLContext const& context) {
    const QVariant handle = context.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) return {handle.value<QGLXNativeContext>().context(), nullptr};
    const auto egl = handle.value<QEGLNativeContext>();
    return {egl.context(), egl.display()};
}

}  // namespace examples
