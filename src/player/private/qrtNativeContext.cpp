#include "qrtNativeContext.h"

#if defined(_WIN32)

#include <QtPlatformHeaders/QWGLNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native, QSurface*) {
    return QVariant::fromValue(QWGLNativeContext(static_cast<HGLRC>(native.context), static_cast<HWND>(native.window)));
}

// These systems adopt a context without making it current.
struct HostContextRelease::Current {};
HostContextRelease::HostContextRelease(NativeContext const&) {}
HostContextRelease::~HostContextRelease() = default;

}  // namespace QRT_0_81

#elif defined(__APPLE__)

#include <QtPlatformHeaders/QCocoaNativeContext>

namespace QRT_0_81 {

QVariant toQtNativeHandle(NativeContext const& native, QSurface*) {
    return QVariant::fromValue(QCocoaNativeContext(reinterpret_cast<NSOpenGLContext*>(native.context)));
}

// These systems adopt a context without making it current.
struct HostContextRelease::Current {};
HostContextRelease::HostContextRelease(NativeContext const&) {}
HostContextRelease::~HostContextRelease() = default;

}  // namespace QRT_0_81

#else

#include <EGL/egl.h>
#include <GL/glx.h>
#include <QOpenGLContext>
#include <QSurface>
#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>

namespace QRT_0_81 {

namespace {

/// The visual of a context that was made from a framebuffer configuration; 0 when that has none or is unknown.
///
/// Qt can find the configuration by itself but loses the list that it gets from the server, a few kilobytes with every
/// context that it adopts; with the visual given it does not look.
VisualID visualOf(GLXContext context, Display* display) {
    int configId = 0;
    int screen = 0;
    if (glXQueryContext(display, context, GLX_FBCONFIG_ID, &configId) != Success) return 0;
    if (glXQueryContext(display, context, GLX_SCREEN, &screen) != Success) return 0;
    int const attributes[] = {GLX_FBCONFIG_ID, configId, None};
    int count = 0;
    GLXFBConfig* const configs = glXChooseFBConfig(display, screen, attributes, &count);
    XVisualInfo* const info = configs && count > 0 ? glXGetVisualFromFBConfig(display, configs[0]) : nullptr;
    const VisualID visual = info ? info->visualid : 0;
    if (info) XFree(info);
    if (configs) XFree(configs);
    return visual;
}

}  // namespace

QVariant toQtNativeHandle(NativeContext const& native, QSurface* surface) {
    // Whether the platform plugin works through GLX or EGL shows in the native handle of any context that it makes.
    QOpenGLContext probe;
    probe.setFormat(surface->format());
    if (!probe.create() || !probe.makeCurrent(surface)) return {};
    const QVariant handle = probe.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        const auto context = static_cast<GLXContext>(native.context);
        const auto window = static_cast<Window>(reinterpret_cast<quintptr>(native.window));
        const VisualID visual = visualOf(context, glXGetCurrentDisplay());
        return QVariant::fromValue(QGLXNativeContext(context, nullptr, window, visual));
    }
    if (handle.canConvert<QEGLNativeContext>()) {
        return QVariant::fromValue(QEGLNativeContext(native.context, native.window));
    }
    return {};
}

/// What was current, through either interface; never both.
struct HostContextRelease::Current {
    Display* glxDisplay = nullptr;
    GLXDrawable glxDraw = 0;
    GLXDrawable glxRead = 0;
    GLXContext glxContext = nullptr;
    EGLDisplay eglDisplay = EGL_NO_DISPLAY;
    EGLSurface eglDraw = EGL_NO_SURFACE;
    EGLSurface eglRead = EGL_NO_SURFACE;
    EGLContext eglContext = EGL_NO_CONTEXT;
};

HostContextRelease::HostContextRelease(NativeContext const& native) {
    if (!native.context) return;
    if (native.context == glXGetCurrentContext()) {
        m_current = std::make_unique<Current>();
        m_current->glxDisplay = glXGetCurrentDisplay();
        m_current->glxDraw = glXGetCurrentDrawable();
        m_current->glxRead = glXGetCurrentReadDrawable();
        m_current->glxContext = glXGetCurrentContext();
        glXMakeContextCurrent(m_current->glxDisplay, None, None, nullptr);
    } else if (native.context == eglGetCurrentContext()) {
        m_current = std::make_unique<Current>();
        m_current->eglDisplay = eglGetCurrentDisplay();
        m_current->eglDraw = eglGetCurrentSurface(EGL_DRAW);
        m_current->eglRead = eglGetCurrentSurface(EGL_READ);
        m_current->eglContext = eglGetCurrentContext();
        eglMakeCurrent(m_current->eglDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
}

HostContextRelease::~HostContextRelease() {
    if (!m_current) return;
    if (m_current->glxContext) {
        glXMakeContextCurrent(m_current->glxDisplay, m_current->glxDraw, m_current->glxRead, m_current->glxContext);
    } else {
        eglMakeCurrent(m_current->eglDisplay, m_current->eglDraw, m_current->eglRead, m_current->eglContext);
    }
}

}  // namespace QRT_0_81

#endif
