#include "playback/qrtNativeContext.h"

#include <QOpenGLFunctions>
#include <algorithm>

#if defined(Q_OS_LINUX) && QT_VERSION_MAJOR == 5
#include <EGL/egl.h>
#include <GL/glx.h>

#include <QVariant>
#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>
#endif

namespace qrtplay {

namespace {

int largestFrameSide(QOpenGLFunctions& gl) {
    GLint rectangle = 0;
    GLint viewport[2] = {};
    gl.glGetIntegerv(GL_MAX_RECTANGLE_TEXTURE_SIZE, &rectangle);
    gl.glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({rectangle, viewport[0], viewport[1]});
}

#if !defined(Q_OS_LINUX)

void setHandles(NativeContext& /*native*/, QOpenGLContext const& /*context*/) {}

#elif QT_VERSION_MAJOR == 5

void setHandles(NativeContext& native, QOpenGLContext const& context) {
    const QVariant handle = context.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        native.context = handle.value<QGLXNativeContext>().context();
    } else if (handle.canConvert<QEGLNativeContext>()) {
        const auto egl = handle.value<QEGLNativeContext>();
        native.context = egl.context();
        native.window = egl.display();
    }
}

#else

void setHandles(NativeContext& native, QOpenGLContext const& context) {
    if (auto const* const glx = context.nativeInterface<QNativeInterface::QGLXContext>()) {
        native.context = glx->nativeContext();
    } else if (auto const* const egl = context.nativeInterface<QNativeInterface::QEGLContext>()) {
        native.context = egl->nativeContext();
        native.window = egl->display();
    }
}

#endif

}  // namespace

NativeContext nativeContextOf(QOpenGLContext& context) {
    NativeContext native;
    native.largestFrameSide = largestFrameSide(*context.functions());
    setHandles(native, context);
    return native;
}

}  // namespace qrtplay
