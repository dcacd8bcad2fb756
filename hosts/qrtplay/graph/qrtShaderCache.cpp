#include "graph/qrtShaderCache.h"

#include <QOpenGLShader>
#include <utility>

namespace qrtplay {

namespace {

// No vertex buffer is needed.
constexpr char vertexSource[] = R"(#version 150
void main() {
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
})";

// One timeline needs a few; who goes through this many kinds of pictures may wait for a shader again.
constexpr size_t mostPrograms = 64;

}  // namespace

Outcome ShaderCache::find(std::string const& fragmentSource, QOpenGLShaderProgram*& program) {
    if (const auto found = m_programs.find(fragmentSource); found != m_programs.end()) {
        program = found->second.get();
        return Outcome();
    }
    auto made = std::make_unique<QOpenGLShaderProgram>();
    const bool built = made->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexSource) &&
                       made->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource.c_str()) && made->link();
    if (!built) return Outcome::failure("the shader cannot be built: " + made->log().simplified().toStdString());
    if (m_programs.size() >= mostPrograms) m_programs.clear();
    program = made.get();
    m_programs.emplace(fragmentSource, std::move(made));
    return Outcome();
}

}  // namespace qrtplay
