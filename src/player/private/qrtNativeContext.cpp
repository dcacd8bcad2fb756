#include "qrtNativeContext.h"

#if defined(_WIN32)

#include <QtPlatformHeaders/QWGLNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native) {
    return QVariant::fromValue(
        QWGLNativeContext(static_cast<HGLRC>(native.context), static_cast<HWND>(native.window)));
}

}  // namespace QRT_0_81

#elif defined(__APPLE__)

#include <QtPlatformHeaders/QCocoaNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native) {
    return QVariant::fromValue(QCocoaNativeContext(reinterpret_cast<NSOpenGLContext*>(native.context)));
}

}  // namespace QRT_0_81

#else

#include <QOpenGLContext>
#include <EGL/egl.h>
#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native) {
    // Whether the platform plugin works through GLX or EGL shows in the native handle of any context that it makes.
    QOpenGLContext probe;
    if (!probe.create()) return {};
    const QVariant handle = probe.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        return QVariant::fromValue(QGLXNativeContext(static_cast<GLXContext>(native.context), nullptr,
                                                     static_cast<Window>(reinterpret_cast<quintptr>(native.window))));
    }
    if (handle.canConvert<QEGLNativeContext>()) {
        return QVariant::fromValue(QEGLNativeContext(native.context, native.window));
    }
    return {};
}

}  // namespace QRT_0_81

#endif
