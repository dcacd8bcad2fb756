#include "playback/qrtNativeContext.h"

#include <QOpenGLFunctions>
#include <QVariant>
#include <algorithm>

#if defined(Q_OS_LINUX)
#include <EGL/egl.h>
#include <GL/glx.h>

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

}  // namespace

NativeContext nativeContextOf(QOpenGLContext& context) {
    NativeContext native;
    native.largestFrameSide = largestFrameSide(*context.functions());
#if defined(Q_OS_LINUX)
    const QVariant handle = context.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        native.context = handle.value<QGLXNativeContext>().context();
    } else if (handle.canConvert<QEGLNativeContext>()) {
        const auto egl = handle.value<QEGLNativeContext>();
        native.context = egl.context();
        native.window = egl.display();
    }
#endif
    return native;
}

}  // namespace qrtplay
