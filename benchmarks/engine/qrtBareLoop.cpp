#include "qrtBareLoop.h"

#include <cstring>
#include <stdexcept>

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

constexpr char vertexShader[] = R"(#version 150
void main() {
    vec2 corner = vec2(float((gl_VertexID & 1) * 4 - 1), float((gl_VertexID & 2) * 2 - 1));
    gl_Position = vec4(corner, 0.0, 1.0);
})";

constexpr char fragmentShader[] = R"(#version 150
uniform float shade;
out vec4 color;
void main() {
    color = vec4(shade, gl_FragCoord.x / 1920.0, gl_FragCoord.y / 1080.0, 1.0);
})";

GLenum internalFormat(VideoBufferResolution const& resolution) {
    const bool hasAlpha = resolution.getNumChannels() == 4;
    switch (resolution.getBitsPerChannel()) {
        case 16: return hasAlpha ? GL_RGBA16F : GL_RGB16F;
        case 32: return hasAlpha ? GL_RGBA32F : GL_RGB32F;
        default: return hasAlpha ? GL_RGBA8 : GL_RGB8;
    }
}

GLenum transferFormat(VideoBufferResolution const& resolution) {
    return resolution.getNumChannels() == 4 ? GL_RGBA : GL_RGB;
}

GLenum transferType(VideoBufferResolution const& resolution) {
    switch (resolution.getBitsPerChannel()) {
        case 16: return GL_HALF_FLOAT;
        case 32: return GL_FLOAT;
        default: return GL_UNSIGNED_BYTE;
    }
}

}  // namespace

QuadRenderer::QuadRenderer() {
    m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader);
    m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader);
    m_program.link();
    m_shadeLocation = m_program.uniformLocation("shade");
    m_vertexArray.create();
}

QuadRenderer::~QuadRenderer() = default;

void QuadRenderer::draw(int width, int height, float shade) {
    auto& gl = *QOpenGLContext::currentContext()->functions();
    gl.glViewport(0, 0, width, height);
    m_program.bind();
    m_program.setUniformValue(m_shadeLocation, shade);
    const QOpenGLVertexArrayObject::Binder binder(&m_vertexArray);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
}

BareReadBack::BareReadBack(VideoBufferResolution const& resolution)
    : m_resolution(resolution), m_pixelBuffer(QOpenGLBuffer::PixelPackBuffer) {
    m_pixelBuffer.create();
    m_pixelBuffer.bind();
    m_pixelBuffer.allocate(nullptr, static_cast<int>(resolution.getBufferSize()));
    m_pixelBuffer.release();
}

void BareReadBack::read(void* data) {
    m_pixelBuffer.bind();
    QOpenGLContext::currentContext()->functions()->glReadPixels(0, 0, m_resolution.getWidth(), m_resolution.getHeight(),
                                                                transferFormat(m_resolution),
                                                                transferType(m_resolution), nullptr);
    void const* const mapped = m_pixelBuffer.map(QOpenGLBuffer::ReadOnly);
    if (!mapped) throw std::runtime_error("the pixel buffer cannot be mapped");
    std::memcpy(data, mapped, m_resolution.getBufferSize());
    m_pixelBuffer.unmap();
    m_pixelBuffer.release();
}

BareLoop::BareLoop(VideoBufferResolution const& resolution, bool readsBack) {
    QOpenGLFramebufferObjectFormat format;
    format.setTextureTarget(GL_TEXTURE_RECTANGLE);
    format.setInternalTextureFormat(internalFormat(resolution));
    for (size_t i = 0; i < numBuffers; ++i) {
        m_framebuffers.push_back(
            std::make_unique<QOpenGLFramebufferObject>(QSize(resolution.getWidth(), resolution.getHeight()), format));
    }
    if (!readsBack) return;
    m_readBack = std::make_unique<BareReadBack>(resolution);
    for (size_t i = 0; i < numBuffers; ++i)
        m_blocks.push_back(std::make_unique<unsigned char[]>(resolution.getBufferSize()));
}

void BareLoop::run(int numFrames, std::function<void(int, GLuint)> const& render) {
    auto& gl = *QOpenGLContext::currentContext()->functions();
    for (int frame = 0; frame < numFrames; ++frame) {
        const size_t buffer = static_cast<size_t>(frame) % numBuffers;
        QOpenGLFramebufferObject& framebuffer = *m_framebuffers[buffer];
        framebuffer.bind();
        gl.glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glFinish();
        render(frame, framebuffer.texture());
        gl.glFinish();
        if (!m_readBack) continue;
        framebuffer.bind();  // what renders may have left its own
        m_readBack->read(m_blocks[buffer].get());
    }
}

}  // namespace QRT_0_81
