#include "common/native_context.h"

#include <QOpenGLContext>

#if QT_VERSION_MAJOR == 5

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

#else

namespace examples {

NativeContext nativeContextOf(QOpenGLContext const& context) {
    if (auto const* const glx = context.nativeInterface<QNativeInterface::QGLXContext>()) {
        return {glx->nativeContext(), nullptr};
    }
    auto const* const egl = context.nativeInterface<QNativeInterface::QEGLContext>();
    return egl ? NativeContext{egl->nativeContext(), egl->display()} : NativeContext{};
}

}  // namespace examples

#endif
