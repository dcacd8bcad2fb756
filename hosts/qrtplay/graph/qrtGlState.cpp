#include "graph/qrtGlState.h"

namespace qrtplay {

GlState::GlState(QOpenGLExtraFunctions& gl) : m_gl(gl) {
    m_gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawFramebuffer);
    m_gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readFramebuffer);
    m_gl.glGetIntegerv(GL_VIEWPORT, m_viewport.data());
    m_gl.glGetIntegerv(GL_CURRENT_PROGRAM, &m_program);
    m_gl.glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &m_vertexArray);
    m_gl.glGetIntegerv(GL_ACTIVE_TEXTURE, &m_activeTexture);
    for (GLuint unit = 0; unit < textureUnits; ++unit) {
        m_gl.glActiveTexture(GL_TEXTURE0 + unit);
        m_gl.glGetIntegerv(GL_TEXTURE_BINDING_RECTANGLE, &m_textures[unit]);
    }
    m_gl.glGetBooleanv(GL_COLOR_WRITEMASK, m_colourMask.data());
    m_gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clearColour.data());
    m_gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    for (size_t i = 0; i < switches.size(); ++i) {
        m_switches[i] = m_gl.glIsEnabled(switches[i]) == GL_TRUE;
        m_gl.glDisable(switches[i]);
    }
    for (size_t i = 0; i < unpacking.size(); ++i) {
        m_gl.glGetIntegerv(unpacking[i], &m_unpacking[i]);
        m_gl.glPixelStorei(unpacking[i], unpacking[i] == GL_UNPACK_ALIGNMENT ? 1 : 0);
    }
    m_gl.glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &m_unpackBuffer);
    m_gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
}

GlState::~GlState() {
    m_gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, static_cast<GLuint>(m_unpackBuffer));
    for (size_t i = 0; i < unpacking.size(); ++i) m_gl.glPixelStorei(unpacking[i], m_unpacking[i]);
    for (size_t i = 0; i < switches.size(); ++i) {
        if (m_switches[i]) m_gl.glEnable(switches[i]);
    }
    m_gl.glClearColor(m_clearColour[0], m_clearColour[1], m_clearColour[2], m_clearColour[3]);
    m_gl.glColorMask(m_colourMask[0], m_colourMask[1], m_colourMask[2], m_colourMask[3]);
    for (GLuint unit = 0; unit < textureUnits; ++unit) {
        m_gl.glActiveTexture(GL_TEXTURE0 + unit);
        m_gl.glBindTexture(GL_TEXTURE_RECTANGLE, static_cast<GLuint>(m_textures[unit]));
    }
    m_gl.glActiveTexture(static_cast<GLenum>(m_activeTexture));
    m_gl.glBindVertexArray(static_cast<GLuint>(m_vertexArray));
    m_gl.glUseProgram(static_cast<GLuint>(m_program));
    m_gl.glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readFramebuffer));
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawFramebuffer));
}

}  // namespace qrtplay
