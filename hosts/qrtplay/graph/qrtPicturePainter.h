#pragma once

#include <QOpenGLExtraFunctions>
#include <list>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "graph/qrtCanvasPool.h"
#include "graph/qrtColourManagement.h"
#include "graph/qrtColourTables.h"
#include "graph/qrtDisplayConversion.h"
#include "graph/qrtLayerProvider.h"
#include "graph/qrtOrientation.h"
#include "graph/qrtPictureConverter.h"
#include "graph/qrtPictureTextures.h"
#include "graph/qrtReadyPictures.h"
#include "graph/qrtRenderTarget.h"
#include "graph/qrtSampling.h"
#include "graph/qrtShaderCache.h"

namespace qrtplay {

/// Draws single pictures with OpenGL 3.2 in the colours of the display (see `DisplayConversion`), upright, and scaled
/// where their size is not that of their place.
///
/// A picture of two fields that is scaled vertically shows the lines of its first field only: both together would comb,
/// and lines that have been scaled cannot be told apart any more. Unscaled it shows all.
/// The alpha of pictures is straight, but of OpenEXR's, whose colours have been multiplied with it.
/// OpenGL: everything is made when it is needed. All calls need the same context current, `release` included, and a
/// `GlState` around them; without it what was made stays behind.
/// Threading: one thread.
class PicturePainter final {
public:
    /// What is drawn into: a framebuffer with a texture of this size.
    struct Surface {
        GLuint framebuffer = 0;
        GLuint texture = 0;  ///< the framebuffer's, where pixels may be written straight into it; else 0
        int width = 0;
        int height = 0;
    };
    struct Manner {
        Scaling scaling = Scaling::fit;
        Blend blend = Blend::over;
        double weight = 1;                          ///< of the picture, its alpha included
        ColourManagement const* colours = nullptr;  ///< in the place of `DisplayConversion`
        ReadyPictures* ready = nullptr;             ///< converts what the CPU can; null: all is done in shaders
    };

    explicit PicturePainter(CanvasPool& canvases) : m_canvases(canvases) {}

    /// Whether the picture leaves nothing to be seen of what is on the surface.
    [[nodiscard]] static bool covers(LayerPicture const& layer, Surface const& surface, Manner const& manner);
    /// Outside of the picture's place nothing changes.
    Outcome paint(QOpenGLExtraFunctions& gl, LayerPicture const& layer, Surface const& surface, Manner const& manner);
    /// Draws a rectangle texture of the surface's size as it is, alpha premultiplied.
    Outcome paintTexture(QOpenGLExtraFunctions& gl, GLuint texture, Surface const& surface, Blend blend, double weight);
    void release(QOpenGLExtraFunctions& gl);

private:
    struct Upload;
    struct Pass;

    Outcome prepare(AVFrame const& picture, LayerPicture const& layer, Manner const& manner, Upload& upload);
    Outcome paintReady(QOpenGLExtraFunctions& gl, RgbaPixels const& pixels, PixelRect const& place,
                       Surface const& surface, Manner const& manner);
    Outcome draw(QOpenGLExtraFunctions& gl, Pass const& pass, Upload const* upload);
    Outcome drawScaled(QOpenGLExtraFunctions& gl, Upload const& upload, Pass const& last, PixelRect const& visible,
                       Sampling const& columns, Sampling const& lines);
    Outcome bindPicture(QOpenGLExtraFunctions& gl, QOpenGLShaderProgram& program, Upload const& upload);
    PictureTextures& texturesFor(QOpenGLExtraFunctions& gl, AVFrame const& picture);

    struct Textures {
        int width = 0;
        int height = 0;
        int format = AV_PIX_FMT_NONE;
        PictureTextures textures;
    };

    CanvasPool& m_canvases;
    PictureConverter m_converter;
    std::list<Textures> m_textures;  // the ones used last come first
    ColourTables m_tables;
    ShaderCache m_shaders;
    GLuint m_vertexArray = 0;
};

}  // namespace qrtplay
