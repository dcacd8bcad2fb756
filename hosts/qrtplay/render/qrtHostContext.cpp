#include "render/qrtHostContext.h"

#include <QGuiApplication>
#include <QSurfaceFormat>
#include <QVariant>

#if defined(Q_OS_LINUX)
#include <EGL/egl.h>
#include <GL/glx.h>

#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>
#endif

namespace qrtplay {

Outcome HostContext::create() {
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    m_surface.setFormat(format);
    m_surface.create();
    m_context.setFormat(format);
    if (!m_context.create() || !m_context.makeCurrent(&m_surface))
        return Outcome::failure("no OpenGL context can be had on this display");
    const auto version = m_context.format().version();
    if (m_context.isOpenGLES() || version < qMakePair(3, 2))
        return Outcome::failure("the display offers OpenGL " + std::to_string(version.first) + "." +
                                std::to_string(version.second) + " only; 3.2 is needed");
    takeNativeHandles();
    if (!m_nativeContext) return Outcome::failure("Qt does not tell the native OpenGL context on this display");
    return Outcome();
}

HostContext::~HostContext() {
    m_context.doneCurrent();
}

void HostContext::takeNativeHandles() {
#if defined(Q_OS_LINUX)
    const QVariant handle = m_context.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        m_nativeContext = handle.value<QGLXNativeContext>().context();
    } else if (handle.canConvert<QEGLNativeContext>()) {
        const auto native = handle.value<QEGLNativeContext>();
        m_nativeContext = native.context();
        m_nativeWindow = native.display();
    }
#endif
}

int HostContext::largestFrameSide() const {
    GLint rectangle = 0;
    GLint viewport[2] = {};
    gl().glGetIntegerv(GL_MAX_RECTANGLE_TEXTURE_SIZE, &rectangle);
    gl().glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({rectangle, viewport[0], viewport[1]});
}

}  // namespace qrtplay
