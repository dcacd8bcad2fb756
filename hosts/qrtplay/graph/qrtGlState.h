#pragma once

#include <QOpenGLExtraFunctions>
#include <array>
#include <vector>

#include "base/qrtKit.h"

class QOpenGLFunctions_3_2_Core;

namespace qrtplay {

/// Hands back, at the end of its scope, the OpenGL state that drawing changes, and starts from a known one: nothing
/// bound but textures, no test, no blending, no dithering, filled polygons, all channels written, default pixel
/// transfer.
///
/// Not handed back, for OpenGL 3.2 cannot tell or lends it for a scope only: queries, transform feedback and
/// conditional rendering under way, indexed buffer bindings, and what differs between draw buffers. Threading:
/// construct and destroy on one thread with the same context current; `gl` is borrowed.
class GlState final {
public:
    enum class Extent {
        pictures,    ///< of the textures those that pictures are drawn with
        everything,  ///< all, for code that nobody knows
    };
    /// That drawing pictures may use: their planes and the tables of colour management.
    static constexpr GLuint pictureUnits = 16;

    explicit GlState(QOpenGLExtraFunctions& gl, Extent extent = Extent::pictures);
    ~GlState();
    Q_DISABLE_COPY(GlState)

private:
    static constexpr std::array<GLenum, 30> switches{GL_BLEND,
                                                     GL_CULL_FACE,
                                                     GL_DEPTH_TEST,
                                                     GL_DITHER,
                                                     GL_SCISSOR_TEST,
                                                     GL_STENCIL_TEST,
                                                     GL_FRAMEBUFFER_SRGB,
                                                     GL_COLOR_LOGIC_OP,
                                                     GL_DEPTH_CLAMP,
                                                     GL_LINE_SMOOTH,
                                                     GL_POLYGON_SMOOTH,
                                                     GL_POLYGON_OFFSET_FILL,
                                                     GL_POLYGON_OFFSET_LINE,
                                                     GL_POLYGON_OFFSET_POINT,
                                                     GL_PRIMITIVE_RESTART,
                                                     GL_PROGRAM_POINT_SIZE,
                                                     GL_RASTERIZER_DISCARD,
                                                     GL_SAMPLE_ALPHA_TO_COVERAGE,
                                                     GL_SAMPLE_ALPHA_TO_ONE,
                                                     GL_SAMPLE_COVERAGE,
                                                     GL_SAMPLE_MASK,
                                                     GL_TEXTURE_CUBE_MAP_SEAMLESS,
                                                     GL_CLIP_DISTANCE0,
                                                     GL_CLIP_DISTANCE0 + 1,
                                                     GL_CLIP_DISTANCE0 + 2,
                                                     GL_CLIP_DISTANCE0 + 3,
                                                     GL_CLIP_DISTANCE0 + 4,
                                                     GL_CLIP_DISTANCE0 + 5,
                                                     GL_CLIP_DISTANCE0 + 6,
                                                     GL_CLIP_DISTANCE0 + 7};
    static constexpr std::array<GLenum, 14> pixelStores{
        GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH,   GL_UNPACK_SKIP_ROWS,   GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SWAP_BYTES,
        GL_UNPACK_LSB_FIRST, GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_IMAGES, GL_PACK_ALIGNMENT,     GL_PACK_ROW_LENGTH,
        GL_PACK_SKIP_ROWS,   GL_PACK_SKIP_PIXELS,    GL_PACK_SWAP_BYTES,    GL_PACK_LSB_FIRST};

    struct Binding {
        GLenum target;
        GLenum query;
    };
    static constexpr std::array<Binding, 5> buffers{
        {{GL_ARRAY_BUFFER, GL_ARRAY_BUFFER_BINDING},
         {GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_UNPACK_BUFFER_BINDING},
         {GL_PIXEL_PACK_BUFFER, GL_PIXEL_PACK_BUFFER_BINDING},
         {GL_UNIFORM_BUFFER, GL_UNIFORM_BUFFER_BINDING},
         {GL_TRANSFORM_FEEDBACK_BUFFER, GL_TRANSFORM_FEEDBACK_BUFFER_BINDING}}};
    // The ones that pictures are drawn with come first.
    static constexpr size_t pictureTargets = 4;
    static constexpr std::array<Binding, 10> textureTargets{
        {{GL_TEXTURE_RECTANGLE, GL_TEXTURE_BINDING_RECTANGLE},
         {GL_TEXTURE_1D, GL_TEXTURE_BINDING_1D},
         {GL_TEXTURE_2D, GL_TEXTURE_BINDING_2D},
         {GL_TEXTURE_3D, GL_TEXTURE_BINDING_3D},
         {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_BINDING_CUBE_MAP},
         {GL_TEXTURE_1D_ARRAY, GL_TEXTURE_BINDING_1D_ARRAY},
         {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BINDING_2D_ARRAY},
         {GL_TEXTURE_BUFFER, GL_TEXTURE_BINDING_BUFFER},
         {GL_TEXTURE_2D_MULTISAMPLE, GL_TEXTURE_BINDING_2D_MULTISAMPLE},
         {GL_TEXTURE_2D_MULTISAMPLE_ARRAY, GL_TEXTURE_BINDING_2D_MULTISAMPLE_ARRAY}}};

    struct Unit {
        std::array<GLint, textureTargets.size()> textures{};
        GLint sampler = 0;
    };
    struct Stencil {
        GLint function = GL_ALWAYS;
        GLint reference = 0;
        GLint valueMask = 0;
        GLint writeMask = 0;
        GLint onFailure = GL_KEEP;
        GLint onDepthFailure = GL_KEEP;
        GLint onPass = GL_KEEP;
    };

    [[nodiscard]] GLint integer(GLenum name) const;
    void saveTextures(Extent extent);
    void saveFragments();
    void saveRasterization();
    void startKnown();
    void restoreTextures();
    void restoreFragments();
    void restoreRasterization();

    QOpenGLExtraFunctions& m_gl;
    QOpenGLFunctions_3_2_Core* m_core;  // what OpenGL has beyond OpenGL ES; null where the context has less
    const bool m_hasSamplers;
    size_t m_targetCount = pictureTargets;

    GLint m_drawFramebuffer = 0;
    GLint m_readFramebuffer = 0;
    GLint m_renderbuffer = 0;
    GLint m_program = 0;
    GLint m_vertexArray = 0;
    GLint m_activeTexture = 0;
    std::vector<Unit> m_units;
    std::array<GLint, buffers.size()> m_buffers{};
    std::array<GLint, pixelStores.size()> m_pixelStores{};
    std::array<bool, switches.size()> m_switches{};

    std::array<GLint, 4> m_viewport{};
    std::array<GLint, 4> m_scissorBox{};
    std::array<GLboolean, 4> m_colourMask{};
    std::array<GLfloat, 4> m_clearColour{};
    std::array<GLint, 6> m_blend{};  // factors of colour and alpha, equations of both
    std::array<GLfloat, 4> m_blendColour{};
    GLboolean m_depthMask = GL_TRUE;
    GLint m_depthFunction = GL_LESS;
    GLfloat m_clearDepth = 1;
    std::array<GLfloat, 2> m_depthRange{};
    GLint m_clearStencil = 0;
    Stencil m_stencilFront;
    Stencil m_stencilBack;
    GLint m_culledFace = GL_BACK;
    GLint m_frontFace = GL_CCW;
    GLfloat m_lineWidth = 1;
    std::array<GLfloat, 2> m_polygonOffset{};
    std::array<GLint, 2> m_polygonMode{};
    GLfloat m_pointSize = 1;
    GLint m_logicOperation = GL_COPY;
    GLint m_provokingVertex = GL_LAST_VERTEX_CONVENTION;
};

}  // namespace qrtplay
