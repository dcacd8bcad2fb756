#pragma once

#include <QOpenGLExtraFunctions>
#include <array>

#include "base/qrtKit.h"

namespace qrtplay {

/// Hands back, at the end of its scope, the OpenGL state that drawing a picture changes, and starts from a known one: no
/// test, no blending, no dithering, all channels written, default unpacking.
///
/// Saved: framebuffers, viewport, program, vertex array, active texture unit, rectangle textures of the first units,
/// colour mask, clear colour, the switches of the tests, unpacking parameters and buffer.
/// Threading: construct and destroy on one thread with the same context current; `gl` is borrowed.
class GlState final {
public:
    static constexpr GLuint textureUnits = 3;

    explicit GlState(QOpenGLExtraFunctions& gl);
    ~GlState();
    Q_DISABLE_COPY(GlState)

private:
    static constexpr std::array<GLenum, 7> switches{GL_BLEND,        GL_CULL_FACE,    GL_DEPTH_TEST,      GL_DITHER,
                                                    GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_FRAMEBUFFER_SRGB};
    static constexpr std::array<GLenum, 6> unpacking{GL_UNPACK_ALIGNMENT,  GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS,
                                                     GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST};

    QOpenGLExtraFunctions& m_gl;
    GLint m_drawFramebuffer = 0;
    GLint m_readFramebuffer = 0;
    std::array<GLint, 4> m_viewport{};
    GLint m_program = 0;
    GLint m_vertexArray = 0;
    GLint m_activeTexture = 0;
    std::array<GLint, textureUnits> m_textures{};
    std::array<GLboolean, 4> m_colourMask{};
    std::array<GLfloat, 4> m_clearColour{};
    std::array<bool, switches.size()> m_switches{};
    std::array<GLint, unpacking.size()> m_unpacking{};
    GLint m_unpackBuffer = 0;
};

}  // namespace qrtplay
