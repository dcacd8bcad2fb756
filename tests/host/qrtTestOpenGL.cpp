#include "host/qrtTestOpenGL.h"

#include <gtest/gtest.h>

namespace qrtplay {

TestContext::TestContext() {
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    m_surface.setFormat(format);
    m_surface.create();
    m_context.setFormat(format);
    EXPECT_TRUE(m_context.create());
    EXPECT_TRUE(m_context.makeCurrent(&m_surface));
}

TestContext::~TestContext() {
    m_context.doneCurrent();
}

TestTexture::TestTexture(QOpenGLExtraFunctions& gl, int width, int height)
    : m_gl(gl), m_width(width), m_height(height) {
    gl.glGenTextures(1, &m_name);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, m_name);
    gl.glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    gl.glGenFramebuffers(1, &m_framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, m_name, 0);
    gl.glClearColor(0, 1, 0, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

TestTexture::~TestTexture() {
    m_gl.glDeleteFramebuffers(1, &m_framebuffer);
    m_gl.glDeleteTextures(1, &m_name);
}

std::vector<unsigned char> TestTexture::pixels() {
    std::vector<unsigned char> pixels(static_cast<size_t>(m_width) * static_cast<size_t>(m_height) * 4);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    m_gl.glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return pixels;
}

}  // namespace qrtplay
