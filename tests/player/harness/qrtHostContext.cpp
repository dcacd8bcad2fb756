#include "harness/qrtHostContext.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <stdexcept>

#include "common/native_context.h"

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

    const examples::NativeContext native = examples::nativeContextOf(m_context);
    m_nativeContext = native.context;
    m_nativeWindow = native.window;
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
    std::vector<float> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, -1.0f);
    auto& gl = this->gl();
    if (!gl.glIsTexture(texture)) return pixels;

    QOpenGLShaderProgram program;
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, R"(#version 150
        void main() {
            gl_Position = vec4(float((gl_VertexID & 1) * 4 - 1), float((gl_VertexID & 2) * 2 - 1), 0.0, 1.0);
        })");
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, R"(#version 150
        uniform sampler2DRect frame;
        out vec4 color;
        void main() { color = texture(frame, gl_FragCoord.xy); })");
    program.link();

    QOpenGLFramebufferObjectFormat format;
    format.setInternalTextureFormat(GL_RGBA32F);
    QOpenGLFramebufferObject target(width, height, format);
    QOpenGLVertexArrayObject vertexArray;
    vertexArray.create();
    const QOpenGLVertexArrayObject::Binder binder(&vertexArray);
    target.bind();
    program.bind();
    gl.glViewport(0, 0, width, height);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    gl.glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, pixels.data());
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    program.release();
    target.release();
    return pixels;
}

int HostContext::countTextures() const {
    int count = 0;
    for (GLuint name = 1; name <= 4096; ++name)
        count += gl().glIsTexture(name) ? 1 : 0;
    return count;
}

int HostContext::countFramebuffers() const {
    int count = 0;
    for (GLuint name = 1; name <= 4096; ++name)
        count += gl().glIsFramebuffer(name) ? 1 : 0;
    return count;
}

}  // namespace QRT_0_81
