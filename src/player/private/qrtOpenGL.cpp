#include "qrtOpenGL.h"

#include "qrtDebugLine.h"

namespace QRT_0_81 {

namespace {

constexpr char glSource[] = "src/player/private/qrtOpenGL";
constexpr char engineSourceName[] = "src/player/private/qrtPlayerImpl";  // the format functions speak for the engine

std::unique_ptr<QOpenGLExtraFunctions> functionsOfCurrentContext() {
    auto functions = std::make_unique<QOpenGLExtraFunctions>();
    functions->initializeOpenGLFunctions();
    return functions;
}

}  // namespace

FramebufferBindingGuard::FramebufferBindingGuard() : m_functions(functionsOfCurrentContext()) {
    m_functions->glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readFramebuffer);
    m_functions->glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawFramebuffer);
}

FramebufferBindingGuard::~FramebufferBindingGuard() {
    m_functions->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawFramebuffer));
    m_functions->glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readFramebuffer));
}

TextureFramebuffer::TextureFramebuffer(unsigned int texture, bool rectangle)
    : m_functions(functionsOfCurrentContext()) {
    m_functions->glGenFramebuffers(1, &m_framebuffer);
    m_functions->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    const GLenum target = rectangle ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D;
    m_functions->glBindTexture(target, texture);
    m_functions->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, target, texture, 0);
    const GLenum completeness = m_functions->glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (completeness == GL_FRAMEBUFFER_COMPLETE) return;
    QRT_DEBUG_LINE(glSource, "ERROR: glCheckFramebufferStatus() returned : %d\n", static_cast<int>(completeness));
    m_status.set(Status::general_failure);
}

TextureFramebuffer::~TextureFramebuffer() {
    if (m_framebuffer == 0) return;
    m_functions->glBindFramebuffer(GL_FRAMEBUFFER, 0);
    m_functions->glDeleteFramebuffers(1, &m_framebuffer);
}

void blitFramebuffer(QOpenGLExtraFunctions* functions, unsigned int readFramebuffer, int width, int height,
                     unsigned int drawFramebuffer) {
    functions->glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer);
    functions->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawFramebuffer);
    functions->glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
}

void drainGlErrors() {
    constexpr int mostErrors = 64;  // a lost context may answer with an error for ever
    for (int i = 0; i < mostErrors && glGetError() != GL_NO_ERROR; ++i) {
    }
}

GLenum getOglFormat(VideoBufferResolution const& resolution) {
    switch (resolution.getNumChannels()) {
        case 1: return GL_RED;
        case 3: return GL_RGB;
        default: return GL_RGBA;
    }
}

GLenum getOglType(VideoBufferResolution const& resolution) {
    switch (resolution.getBitsPerChannel()) {
        case 8: return GL_UNSIGNED_BYTE;
        case 16: return resolution.isFloat() ? GL_HALF_FLOAT : GL_UNSIGNED_SHORT;
        case 32: return resolution.isFloat() ? GL_FLOAT : GL_UNSIGNED_INT;
        default:
            DebugLine::post(engineSourceName, __LINE__, "getOglType() Unsupported QRT::VideoBufferResolution");
            return GL_UNSIGNED_BYTE;
    }
}

}  // namespace QRT_0_81
