#include "graph/qrtGlState.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>

#include "graph/qrtCoreFunctions.h"

namespace qrtplay {

namespace {

/// Sampler objects are younger than OpenGL 3.2.
bool hasSamplers() {
    QOpenGLContext const* const context = QOpenGLContext::currentContext();
    return context && context->hasExtension("GL_ARB_sampler_objects");
}

GLenum asEnum(GLint value) {
    return static_cast<GLenum>(value);
}

GLuint asName(GLint value) {
    return static_cast<GLuint>(value);
}

bool isAlignment(GLenum store) {
    return store == GL_UNPACK_ALIGNMENT || store == GL_PACK_ALIGNMENT;
}

}  // namespace

GlState::GlState(QOpenGLExtraFunctions& gl, Extent extent)
    : m_gl(gl), m_core(currentCoreFunctions()), m_hasSamplers(hasSamplers()) {
    m_drawFramebuffer = integer(GL_DRAW_FRAMEBUFFER_BINDING);
    m_readFramebuffer = integer(GL_READ_FRAMEBUFFER_BINDING);
    m_renderbuffer = integer(GL_RENDERBUFFER_BINDING);
    m_program = integer(GL_CURRENT_PROGRAM);
    m_vertexArray = integer(GL_VERTEX_ARRAY_BINDING);
    for (size_t i = 0; i < buffers.size(); ++i)
        m_buffers[i] = integer(buffers[i].query);
    for (size_t i = 0; i < pixelStores.size(); ++i)
        m_pixelStores[i] = integer(pixelStores[i]);
    for (size_t i = 0; i < switches.size(); ++i)
        m_switches[i] = m_gl.glIsEnabled(switches[i]) == GL_TRUE;
    saveTextures(extent);
    saveFragments();
    saveRasterization();
    startKnown();
}

GlState::~GlState() {
    restoreRasterization();
    restoreFragments();
    restoreTextures();
    for (size_t i = 0; i < switches.size(); ++i)
        m_switches[i] ? m_gl.glEnable(switches[i]) : m_gl.glDisable(switches[i]);
    for (size_t i = 0; i < pixelStores.size(); ++i)
        m_gl.glPixelStorei(pixelStores[i], m_pixelStores[i]);
    for (size_t i = 0; i < buffers.size(); ++i)
        m_gl.glBindBuffer(buffers[i].target, asName(m_buffers[i]));
    m_gl.glBindVertexArray(asName(m_vertexArray));
    m_gl.glUseProgram(asName(m_program));
    m_gl.glBindRenderbuffer(GL_RENDERBUFFER, asName(m_renderbuffer));
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, asName(m_readFramebuffer));
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, asName(m_drawFramebuffer));
}

GLint GlState::integer(GLenum name) const {
    GLint value = 0;
    m_gl.glGetIntegerv(name, &value);
    return value;
}

void GlState::saveTextures(Extent extent) {
    GLuint unitCount = pictureUnits;
    if (extent == Extent::everything) {
        unitCount = asName(integer(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS));
        m_targetCount = textureTargets.size();
    }
    m_activeTexture = integer(GL_ACTIVE_TEXTURE);
    m_units.resize(unitCount);
    for (GLuint number = 0; number < unitCount; ++number) {
        Unit& unit = m_units[number];
        m_gl.glActiveTexture(GL_TEXTURE0 + number);
        for (size_t i = 0; i < m_targetCount; ++i)
            unit.textures[i] = integer(textureTargets[i].query);
        if (m_hasSamplers) unit.sampler = integer(GL_SAMPLER_BINDING);
        if (unit.sampler != 0) m_gl.glBindSampler(number, 0);
    }
    m_gl.glActiveTexture(GL_TEXTURE0);
}

void GlState::restoreTextures() {
    for (GLuint number = 0; number < m_units.size(); ++number) {
        Unit const& unit = m_units[number];
        m_gl.glActiveTexture(GL_TEXTURE0 + number);
        for (size_t i = 0; i < m_targetCount; ++i)
            m_gl.glBindTexture(textureTargets[i].target, asName(unit.textures[i]));
        if (m_hasSamplers) m_gl.glBindSampler(number, asName(unit.sampler));
    }
    m_gl.glActiveTexture(asEnum(m_activeTexture));
}

void GlState::saveFragments() {
    m_gl.glGetBooleanv(GL_COLOR_WRITEMASK, m_colourMask.data());
    m_gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clearColour.data());
    m_blend = {integer(GL_BLEND_SRC_RGB),   integer(GL_BLEND_DST_RGB),      integer(GL_BLEND_SRC_ALPHA),
               integer(GL_BLEND_DST_ALPHA), integer(GL_BLEND_EQUATION_RGB), integer(GL_BLEND_EQUATION_ALPHA)};
    m_gl.glGetFloatv(GL_BLEND_COLOR, m_blendColour.data());
    m_gl.glGetBooleanv(GL_DEPTH_WRITEMASK, &m_depthMask);
    m_depthFunction = integer(GL_DEPTH_FUNC);
    m_gl.glGetFloatv(GL_DEPTH_CLEAR_VALUE, &m_clearDepth);
    m_gl.glGetFloatv(GL_DEPTH_RANGE, m_depthRange.data());
    m_clearStencil = integer(GL_STENCIL_CLEAR_VALUE);
    m_stencilFront = {integer(GL_STENCIL_FUNC),           integer(GL_STENCIL_REF),  integer(GL_STENCIL_VALUE_MASK),
                      integer(GL_STENCIL_WRITEMASK),      integer(GL_STENCIL_FAIL), integer(GL_STENCIL_PASS_DEPTH_FAIL),
                      integer(GL_STENCIL_PASS_DEPTH_PASS)};
    m_stencilBack = {integer(GL_STENCIL_BACK_FUNC),           integer(GL_STENCIL_BACK_REF),
                     integer(GL_STENCIL_BACK_VALUE_MASK),     integer(GL_STENCIL_BACK_WRITEMASK),
                     integer(GL_STENCIL_BACK_FAIL),           integer(GL_STENCIL_BACK_PASS_DEPTH_FAIL),
                     integer(GL_STENCIL_BACK_PASS_DEPTH_PASS)};
    m_logicOperation = integer(GL_LOGIC_OP_MODE);
}

void GlState::restoreFragments() {
    m_gl.glColorMask(m_colourMask[0], m_colourMask[1], m_colourMask[2], m_colourMask[3]);
    m_gl.glClearColor(m_clearColour[0], m_clearColour[1], m_clearColour[2], m_clearColour[3]);
    m_gl.glBlendFuncSeparate(asEnum(m_blend[0]), asEnum(m_blend[1]), asEnum(m_blend[2]), asEnum(m_blend[3]));
    m_gl.glBlendEquationSeparate(asEnum(m_blend[4]), asEnum(m_blend[5]));
    m_gl.glBlendColor(m_blendColour[0], m_blendColour[1], m_blendColour[2], m_blendColour[3]);
    m_gl.glDepthMask(m_depthMask);
    m_gl.glDepthFunc(asEnum(m_depthFunction));
    m_gl.glClearDepthf(m_clearDepth);
    m_gl.glDepthRangef(m_depthRange[0], m_depthRange[1]);
    m_gl.glClearStencil(m_clearStencil);
    const auto restore = [this](GLenum face, Stencil const& stencil) {
        m_gl.glStencilFuncSeparate(face, asEnum(stencil.function), stencil.reference, asName(stencil.valueMask));
        m_gl.glStencilMaskSeparate(face, asName(stencil.writeMask));
        m_gl.glStencilOpSeparate(face, asEnum(stencil.onFailure), asEnum(stencil.onDepthFailure),
                                 asEnum(stencil.onPass));
    };
    restore(GL_FRONT, m_stencilFront);
    restore(GL_BACK, m_stencilBack);
    if (m_core) m_core->glLogicOp(asEnum(m_logicOperation));
}

void GlState::saveRasterization() {
    m_gl.glGetIntegerv(GL_VIEWPORT, m_viewport.data());
    m_gl.glGetIntegerv(GL_SCISSOR_BOX, m_scissorBox.data());
    m_culledFace = integer(GL_CULL_FACE_MODE);
    m_frontFace = integer(GL_FRONT_FACE);
    m_gl.glGetFloatv(GL_LINE_WIDTH, &m_lineWidth);
    m_gl.glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &m_polygonOffset[0]);
    m_gl.glGetFloatv(GL_POLYGON_OFFSET_UNITS, &m_polygonOffset[1]);
    m_gl.glGetIntegerv(GL_POLYGON_MODE, m_polygonMode.data());
    m_gl.glGetFloatv(GL_POINT_SIZE, &m_pointSize);
    m_provokingVertex = integer(GL_PROVOKING_VERTEX);
}

void GlState::restoreRasterization() {
    m_gl.glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    m_gl.glScissor(m_scissorBox[0], m_scissorBox[1], m_scissorBox[2], m_scissorBox[3]);
    m_gl.glCullFace(asEnum(m_culledFace));
    m_gl.glFrontFace(asEnum(m_frontFace));
    m_gl.glLineWidth(m_lineWidth);
    m_gl.glPolygonOffset(m_polygonOffset[0], m_polygonOffset[1]);
    if (!m_core) return;
    m_core->glPolygonMode(GL_FRONT_AND_BACK, asEnum(m_polygonMode[0]));
    m_core->glPointSize(m_pointSize);
    m_core->glProvokingVertex(asEnum(m_provokingVertex));
}

void GlState::startKnown() {
    for (const GLenum name : switches)
        m_gl.glDisable(name);
    for (const GLenum store : pixelStores)
        m_gl.glPixelStorei(store, isAlignment(store) ? 1 : 0);
    for (Binding const& buffer : buffers)
        m_gl.glBindBuffer(buffer.target, 0);
    m_gl.glBindVertexArray(0);
    m_gl.glUseProgram(0);
    m_gl.glBindRenderbuffer(GL_RENDERBUFFER, 0);
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    m_gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    m_gl.glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
    if (m_core) m_core->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

}  // namespace qrtplay
