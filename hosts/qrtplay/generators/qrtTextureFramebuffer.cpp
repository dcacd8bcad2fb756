#include "generators/qrtTextureFramebuffer.h"

namespace qrtplay {

TextureFramebuffer::TextureFramebuffer(QOpenGLExtraFunctions& gl, GLuint texture, GLenum target) : m_gl(gl) {
    m_gl.glGenFramebuffers(1, &m_name);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_name);
    m_gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, target, texture, 0);
    m_isComplete = m_gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

TextureFramebuffer::~TextureFramebuffer() {
    m_gl.glDeleteFramebuffers(1, &m_name);
    constexpr int mostErrors = 16;  // a lost context reports for ever
    for (int i = 0; i < mostErrors && m_gl.glGetError() != GL_NO_ERROR; ++i) {
    }
}

}  // namespace qrtplay
