#pragma once

#include <QOpenGLExtraFunctions>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"
#include "media/qrtVideoFacts.h"
#include "timeline/qrtFramePlan.h"

namespace qrtplay {

/// A decoded picture with what has to be known to draw it.
struct LayerPicture {
    FramePtr picture;  ///< null: nothing to be seen
    VideoFacts facts;
    std::string path;  ///< of the file; colour management recognises its colour space by it
};

/// Supplies the leaves of the tree that is drawn.
///
/// Threading and OpenGL: the thread that draws, its context current.
class LayerProvider {
public:
    virtual ~LayerProvider() = default;

    virtual Outcome mediaPicture(FrameNode const& node, LayerPicture& picture) = 0;
    /// Renders a generator's picture into a `GL_TEXTURE_RECTANGLE` texture of RGBA with 8 bits, alpha premultiplied,
    /// row 0 at the bottom; may leave any OpenGL state behind but that of other contexts.
    virtual Outcome generatorPicture(FrameNode const& node, GLuint texture, int width, int height) = 0;
};

}  // namespace qrtplay
