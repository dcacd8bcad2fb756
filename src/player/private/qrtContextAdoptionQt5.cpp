#include <QVariant>

#include "qrtContextAdoption.h"

#if defined(_WIN32)
#include <QtPlatformHeaders/QWGLNativeContext>
#elif defined(__APPLE__)
#include <QtPlatformHeaders/QCocoaNativeContext>
#else
#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>
#endif

namespace QRT_0_81 {

namespace {

template <class Native>
std::unique_ptr<QOpenGLContext> adopt(Native const& native) {
    auto context = std::make_unique<QOpenGLContext>();
    context->setNativeHandle(QVariant::fromValue(native));
    return context->create() ? std::move(context) : nullptr;
}

}  // namespace

#if defined(_WIN32)

std::unique_ptr<QOpenGLContext> adoptWgl(HGLRC context, HWND window) {
    return adopt(QWGLNativeContext(context, window));
}

#elif defined(__APPLE__)

std::unique_ptr<QOpenGLContext> adoptCocoa(NSOpenGLContext* context) {
    return adopt(QCocoaNativeContext(context));
}

#else

std::unique_ptr<QOpenGLContext> adoptGlx(GLXContext context, XPtr<XVisualInfo> visual) {
    return adopt(QGLXNativeContext(context, nullptr, None, visual ? visual->visualid : 0));
}

std::unique_ptr<QOpenGLContext> adoptEgl(EGLContext context, EGLDisplay display) {
    return adopt(QEGLNativeContext(context, display));
}

bool isOfGlx(QOpenGLContext const& context) {
    return context.nativeHandle().canConvert<QGLXNativeContext>();
}

bool isOfEgl(QOpenGLContext const& context) {
    return context.nativeHandle().canConvert<QEGLNativeContext>();
}

#endif

}  // namespace QRT_0_81
