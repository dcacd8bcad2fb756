#pragma once

#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <list>
#include <memory>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "graph/qrtColourManagement.h"

namespace qrtplay {

/// The tables of colour shaders as textures.
///
/// Threading and OpenGL: one thread; the same context current in every call, `release` included. Changes the 1D, 2D and
/// 3D textures of the units it binds, and the active unit.
class ColourTables final {
public:
    /// Binds the tables to texture units from `firstUnit` on and tells `program`, which is in use, where they are.
    Outcome bind(QOpenGLExtraFunctions& gl, std::shared_ptr<ColourShader const> const& shader,
                 QOpenGLShaderProgram& program, GLuint firstUnit);
    void release(QOpenGLExtraFunctions& gl);

private:
    struct Uploaded {
        std::shared_ptr<ColourShader const> shader;
        std::vector<GLuint> textures;
    };

    Outcome upload(QOpenGLExtraFunctions& gl, Uploaded& uploaded);
    static void discard(QOpenGLExtraFunctions& gl, Uploaded& uploaded);

    std::list<Uploaded> m_uploaded;  // the one used last comes first
};

}  // namespace qrtplay
