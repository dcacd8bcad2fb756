#include "graph/qrtColourTables.h"

#include <QOpenGLFunctions_3_2_Core>
#include <algorithm>

#include "graph/qrtCoreFunctions.h"
#include "graph/qrtGlState.h"

namespace qrtplay {

namespace {

// More colour spaces than a timeline has cameras.
constexpr size_t mostShaders = 16;

GLenum targetOf(ColourShader::Table const& table) {
    if (table.dimensions == 1) return GL_TEXTURE_1D;
    return table.dimensions == 2 ? GL_TEXTURE_2D : GL_TEXTURE_3D;
}

/// Fills the texture that is bound.
void fill(QOpenGLFunctions_3_2_Core& gl, ColourShader::Table const& table) {
    const GLint internal = table.channels == 1 ? GL_R32F : GL_RGB32F;
    const GLenum format = table.channels == 1 ? GL_RED : GL_RGB;
    const GLenum target = targetOf(table);
    const GLint filter = table.isLinear ? GL_LINEAR : GL_NEAREST;
    gl.glTexParameteri(target, GL_TEXTURE_MIN_FILTER, filter);
    gl.glTexParameteri(target, GL_TEXTURE_MAG_FILTER, filter);
    for (const int side : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T, GL_TEXTURE_WRAP_R})
        gl.glTexParameteri(target, static_cast<GLenum>(side), GL_CLAMP_TO_EDGE);
    float const* const values = table.values.data();
    if (target == GL_TEXTURE_1D)
        gl.glTexImage1D(target, 0, internal, table.width, 0, format, GL_FLOAT, values);
    else if (target == GL_TEXTURE_2D)
        gl.glTexImage2D(target, 0, internal, table.width, table.height, 0, format, GL_FLOAT, values);
    else
        gl.glTexImage3D(target, 0, internal, table.width, table.height, table.depth, 0, format, GL_FLOAT, values);
}

}  // namespace

Outcome ColourTables::upload(QOpenGLExtraFunctions& gl, Uploaded& uploaded) {
    auto* const core = currentCoreFunctions();
    if (!core) return Outcome::failure("colour management needs OpenGL 3.2");
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    gl.glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_FALSE);
    for (ColourShader::Table const& table : uploaded.shader->tables) {
        GLuint& texture = uploaded.textures.emplace_back();
        gl.glGenTextures(1, &texture);
        gl.glBindTexture(targetOf(table), texture);
        fill(*core, table);
    }
    return Outcome();
}

Outcome ColourTables::bind(QOpenGLExtraFunctions& gl, std::shared_ptr<ColourShader const> const& shader,
                           QOpenGLShaderProgram& program, GLuint firstUnit) {
    if (firstUnit + shader->tables.size() > GlState::pictureUnits)
        return Outcome::failure("colour management needs more tables than OpenGL has texture units");
    const auto isIt = [&shader](Uploaded const& uploaded) { return uploaded.shader == shader; };
    auto found = std::find_if(m_uploaded.begin(), m_uploaded.end(), isIt);
    if (found == m_uploaded.end()) {
        m_uploaded.push_front({shader, {}});
        found = m_uploaded.begin();
        if (Outcome outcome = upload(gl, *found); outcome.failed()) {
            m_uploaded.pop_front();
            return outcome;
        }
    }
    m_uploaded.splice(m_uploaded.begin(), m_uploaded, found);
    while (m_uploaded.size() > mostShaders) {
        discard(gl, m_uploaded.back());
        m_uploaded.pop_back();
    }
    for (size_t i = 0; i < shader->tables.size(); ++i) {
        ColourShader::Table const& table = shader->tables[i];
        const GLuint unit = firstUnit + static_cast<GLuint>(i);
        gl.glActiveTexture(GL_TEXTURE0 + unit);
        gl.glBindTexture(targetOf(table), found->textures[i]);
        program.setUniformValue(table.sampler.c_str(), static_cast<GLint>(unit));
    }
    return Outcome();
}

void ColourTables::discard(QOpenGLExtraFunctions& gl, Uploaded& uploaded) {
    gl.glDeleteTextures(static_cast<GLsizei>(uploaded.textures.size()), uploaded.textures.data());
}

void ColourTables::release(QOpenGLExtraFunctions& gl) {
    for (Uploaded& uploaded : m_uploaded)
        discard(gl, uploaded);
    m_uploaded.clear();
}

}  // namespace qrtplay
