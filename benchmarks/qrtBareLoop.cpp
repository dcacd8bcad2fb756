#include "qrtBareLoop.h"

#include <chrono>

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

BareLoop::BareLoop(VideoBufferResolution const& resolution) {
    QOpenGLFramebufferObjectFormat format;
    format.setTextureTarget(GL_TEXTURE_RECTANGLE);
    format.setInternalTextureFormat(resolution.isFloat() ? GL_RGBA16F : GL_RGBA8);
    for (int i = 0; i < numFramebuffers; ++i) {
        m_framebuffers.push_back(
            std::make_unique<QOpenGLFramebufferObject>(QSize(resolution.getWidth(), resolution.getHeight()), format));
    }
}

double BareLoop::run(int numFrames, std::function<void(int, GLuint)> const& render) {
    auto& gl = *QOpenGLContext::currentContext()->functions();
    const auto begin = std::chrono::steady_clock::now();
    for (int frame = 0; frame < numFrames; ++frame) {
        QOpenGLFramebufferObject& framebuffer = *m_framebuffers[static_cast<size_t>(frame % numFramebuffers)];
        framebuffer.bind();
        gl.glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glFinish();
        render(frame, framebuffer.texture());
        gl.glFinish();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace QRT_0_81
