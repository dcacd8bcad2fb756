#pragma once

#include <QOpenGLShaderProgram>
#include <map>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Programs that draw one triangle over the whole viewport, by the source of their fragment shader.
///
/// Threading and OpenGL: one thread; the same context current in every call, `release` included.
class ShaderCache final {
public:
    /// `program` is valid until the next call.
    Outcome find(std::string const& fragmentSource, QOpenGLShaderProgram*& program);
    void release() { m_programs.clear(); }

private:
    std::map<std::string, std::unique_ptr<QOpenGLShaderProgram>> m_programs;
};

}  // namespace qrtplay
