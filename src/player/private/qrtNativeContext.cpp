#include "qrtNativeContext.h"

#if defined(_WIN32)

#include <QtPlatformHeaders/QWGLNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native) {
    return QVariant::fromValue(
        QWGLNativeContext(static_cast<HGLRC>(native.context), static_cast<HWND>(native.window)));
}

// These systems adopt a context without making it current.
struct HostContextRelease::Current {};
HostContextRelease::HostContextRelease(NativeContext const&) {}
HostContextRelease::~HostContextRelease() = default;

}  // namespace QRT_0_81

#elif defined(__APPLE__)

#include <QtPlatformHeaders/QCocoaNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native) {
    return QVariant::fromValue(QCocoaNativeContext(reinterpret_cast<NSOpenGLContext*>(native.context)));
}

// These systems adopt a context without making it current.
struct HostContextRelease::Current {};
HostContextRelease::HostContextRelease(NativeContext const&) {}
HostContextRelease::~HostContextRelease() = default;

}  // namespace QRT_0_81

#else

#include <QOpenGLContext>
#include <EGL/egl.h>
#include <GL/glx.h>
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

struct HostContextRelease::Current {
    Display* display;
    GLXDrawable drawDrawable;
    GLXDrawable readDrawable;
    GLXContext context;
};

HostContextRelease::HostContextRelease(NativeContext const& native) {
    GLXContext const context = glXGetCurrentContext();
    if (!context || context != native.context) return;
    m_current.reset(
        new Current{glXGetCurrentDisplay(), glXGetCurrentDrawable(), glXGetCurrentReadDrawable(), context});
    glXMakeContextCurrent(m_current->display, None, None, nullptr);
}

HostContextRelease::~HostContextRelease() {
    if (!m_current) return;
    glXMakeContextCurrent(m_current->display, m_current->drawDrawable, m_current->readDrawable, m_current->context);
}

}  // namespace QRT_0_81

#endif
