#include "qrtContextAdoption.h"

namespace QRT_0_81 {

namespace {

std::unique_ptr<QOpenGLContext> owned(QOpenGLContext* adopted) {
    std::unique_ptr<QOpenGLContext> context(adopted);
    return context && context->isValid() ? std::move(context) : nullptr;
}

}  // namespace

#if defined(_WIN32)

std::unique_ptr<QOpenGLContext> adoptWgl(HGLRC context, HWND window) {
    return owned(QNativeInterface::QWGLContext::fromNative(context, window));
}

#elif defined(__APPLE__)

std::unique_ptr<QOpenGLContext> adoptCocoa(NSOpenGLContext* context) {
    return owned(QNativeInterface::QCocoaGLContext::fromNative(context));
}

#else

std::unique_ptr<QOpenGLContext> adoptGlx(GLXContext context, XPtr<XVisualInfo> visual) {
    using Native = QNativeInterface::QGLXContext;
    // Qt frees the visual.
    return owned(visual ? Native::fromNative(context, visual.release(), nullptr) : Native::fromNative(context));
}

std::unique_ptr<QOpenGLContext> adoptEgl(EGLContext context, EGLDisplay display) {
    return owned(QNativeInterface::QEGLContext::fromNative(context, display));
}

bool isOfGlx(QOpenGLContext const& context) {
    return context.nativeInterface<QNativeInterface::QGLXContext>();
}

bool isOfEgl(QOpenGLContext const& context) {
    return context.nativeInterface<QNativeInterface::QEGLContext>();
}

#endif

}  // namespace QRT_0_81
