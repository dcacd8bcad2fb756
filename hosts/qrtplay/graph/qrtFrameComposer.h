#pragma once

#include <QOpenGLExtraFunctions>
#include <memory>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "graph/qrtCanvasPool.h"
#include "graph/qrtColourManagement.h"
#include "graph/qrtLayerProvider.h"
#include "graph/qrtPicturePainter.h"
#include "graph/qrtReadyPictures.h"
#include "graph/qrtRenderTarget.h"
#include "timeline/qrtFramePlan.h"

namespace qrtplay {

/// Draws what an output frame is made of into a rectangle texture, with OpenGL 3.2 core, over opaque black; alpha is 1
/// everywhere, row 0 is the bottom of the picture.
///
/// Pictures and generators are drawn straight into the texture. Only groups that have to be complete before they are
/// mixed take an intermediate picture, of 16-bit floats, which is kept for the next frame. OpenGL: everything is made
/// when it is needed. All calls need the same context current, `release` included; without it what was made stays
/// behind. The state of the context is left as it was (see `GlState`), and no error. Threading: one thread.
class FrameComposer final {
public:
    using Target = RenderTarget;

    /// So many groups may lie in each other that each have to be complete before they are mixed; each takes memory.
    static constexpr int mostNestedGroups = 16;

    void setScaling(Scaling scaling) noexcept { m_scaling = scaling; }
    /// Null for the built-in conversion of colours to the display's (see `DisplayConversion`).
    void setColourManagement(std::shared_ptr<ColourManagement const> colours) { m_colours = std::move(colours); }

    /// What converts pictures on the CPU where it can; null to have all done by shaders. Borrowed.
    void setReadyPictures(ReadyPictures* ready) noexcept { m_ready = ready; }

    /// A failure is the one of the first leaf that fails, in its own words, or names the file that cannot be drawn; the
    /// texture then holds something unfinished.
    Outcome compose(QOpenGLExtraFunctions& gl, FrameNode const& root, LayerProvider& provider, Target const& target);
    void release(QOpenGLExtraFunctions& gl);

private:
    struct Frame;

    Outcome begin(QOpenGLExtraFunctions& gl, Target const& target);
    static void makeBlack(Frame const& frame);
    Outcome end(QOpenGLExtraFunctions& gl);
    Outcome draw(Frame const& frame, FrameNode const& node, Blend blend, double weight);
    Outcome drawMedia(Frame const& frame, FrameNode const& node, Blend blend, double weight);
    Outcome drawGenerator(Frame const& frame, FrameNode const& node, Blend blend, double weight);
    Outcome drawGroup(Frame const& frame, FrameNode const& node, Blend blend, double weight);
    Outcome drawStack(Frame const& frame, FrameNode const& node);
    Outcome drawDissolve(Frame const& frame, FrameNode const& node, double weight);

    Scaling m_scaling = Scaling::fit;
    std::shared_ptr<ColourManagement const> m_colours;
    ReadyPictures* m_ready = nullptr;
    CanvasPool m_canvases;
    PicturePainter m_painter{m_canvases};
    GLuint m_framebuffer = 0;
};

}  // namespace qrtplay
