#include "qrtNativeContext.h"

#include "qrtContextAdoption.h"

#if defined(_WIN32) || defined(__APPLE__)

namespace QRT_0_81 {

std::unique_ptr<QOpenGLContext> adoptContext(NativeContext const& native, QSurface*) {
#if defined(_WIN32)
    return adoptWgl(static_cast<HGLRC>(native.context), static_cast<HWND>(native.window));
#else
    return adoptCocoa(reinterpret_cast<NSOpenGLContext*>(native.context));
#endif
}

// These systems adopt a context without making it current.
struct HostContextRelease::Current {};
HostContextRelease::HostContextRelease(NativeContext const&) {}
HostContextRelease::~HostContextRelease() = default;

}  // namespace QRT_0_81

#else

#include <QSurface>
#include <utility>

namespace QRT_0_81 {

namespace {

/// The visual of a context that was made from a framebuffer configuration; null when that has none or is unknown.
XPtr<XVisualInfo> visualOfConfiguration(GLXContext context, Display* display) {
    int configId = 0;
    int screen = 0;
    if (glXQueryContext(display, context, GLX_FBCONFIG_ID, &configId) != Success) return nullptr;
    if (glXQueryContext(display, context, GLX_SCREEN, &screen) != Success) return nullptr;
    int const attributes[] = {GLX_FBCONFIG_ID, configId, None};
    int count = 0;
    const XPtr<GLXFBConfig> configs(glXChooseFBConfig(display, screen, attributes, &count));
    if (!configs || count == 0) return nullptr;
    return XPtr<XVisualInfo>(glXGetVisualFromFBConfig(display, *configs));
}

/// The visual of a window, and so of a context that was made for it before there were configurations.
XPtr<XVisualInfo> visualOfWindow(Window window, Display* display) {
    XWindowAttributes attributes{};
    if (window == None || !XGetWindowAttributes(display, window, &attributes)) return nullptr;
    XVisualInfo wanted{};
    wanted.visualid = XVisualIDFromVisual(attributes.visual);
    int count = 0;
    return XPtr<XVisualInfo>(XGetVisualInfo(display, VisualIDMask, &wanted, &count));
}

/// Qt can find the configuration by itself but loses the list that it gets from the server, a few kilobytes with every
/// context that it adopts, and looks for that of the first such context ever after; with the visual given it does not
/// look.
XPtr<XVisualInfo> visualOf(NativeContext const& native, Display* display) {
    XPtr<XVisualInfo> visual = visualOfConfiguration(static_cast<GLXContext>(native.context), display);
    return visual ? std::move(visual) : visualOfWindow(reinterpret_cast<Window>(native.window), display);
}

}  // namespace

std::unique_ptr<QOpenGLContext> adoptContext(NativeContext const& native, QSurface* surface) {
    // Whether the platform plugin works through GLX or EGL shows in any context that it makes.
    auto probe = std::make_unique<QOpenGLContext>();
    probe->setFormat(surface->format());
    if (!probe->create() || !probe->makeCurrent(surface)) return nullptr;
    if (isOfGlx(*probe)) {
        XPtr<XVisualInfo> visual = visualOf(native, glXGetCurrentDisplay());
        probe.reset();
        return adoptGlx(static_cast<GLXContext>(native.context), std::move(visual));
    }
    if (isOfEgl(*probe)) {
        probe.reset();
        return adoptEgl(native.context, native.window);
    }
    return nullptr;
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
