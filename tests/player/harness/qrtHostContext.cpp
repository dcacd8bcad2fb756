#include "harness/qrtHostContext.h"

#include <EGL/egl.h>

#include <QtPlatformHeaders/QEGLNativeContext>
#include <QtPlatformHeaders/QGLXNativeContext>
#include <stdexcept>

#undef Status  // X11's

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

HostContext::HostContext() {
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setVersion(3, 2);
    m_surface.setFormat(format);
    m_surface.create();
    m_context.setFormat(format);
    if (!m_context.create() || !m_context.makeCurrent(&m_surface)) throw std::runtime_error("no OpenGL for the tests");

    const QVariant handle = m_context.nativeHandle();
    if (handle.canConvert<QGLXNativeContext>()) {
        m_nativeContext = handle.value<QGLXNativeContext>().context();
    } else {
        const auto egl = handle.value<QEGLNativeContext>();
        m_nativeContext = egl.context();
        m_nativeWindow = egl.display();
    }
}

HostContext::~HostContext() {
    m_context.doneCurrent();
}

void HostContext::makeCurrent() {
    m_context.makeCurrent(&m_surface);
}

void HostContext::doneCurrent() {
    m_context.doneCurrent();
}

std::vector<float> HostContext::readTexture(unsigned int texture, int width, int height) const {
    auto& gl = this->gl();
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    std::vector<float> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, -1.0f);
    if (gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
        gl.glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, pixels.data());
    }
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glDeleteFramebuffers(1, &framebuffer);
    return pixels;
}

int HostContext::countTextures() const {
    int count = 0;
    for (GLuint name = 1; name <= 4096; ++name) count += gl().glIsTexture(name) ? 1 : 0;
    return count;
}

int HostContext::countFramebuffers() const {
    int count = 0;
    for (GLuint name = 1; name <= 4096; ++name) count += gl().glIsFramebuffer(name) ? 1 : 0;
    return count;
}

}  // namespace QRT_0_81
