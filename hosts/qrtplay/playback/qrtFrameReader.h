#pragma once

#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "foundation/core/qrtVideoBufferResolution.h"

namespace qrtplay {

/// The player's output format for frames of this size and depth.
[[nodiscard]] VideoBufferResolution outputFormat(int width, int height, PixelFormat format);

/// Turns delivered frames into blocks of pixels, top row first.
///
/// Threading and OpenGL: the thread and context of `gl`, current in every call and at the end. The state that is
/// changed is the framebuffer binding for reading, left 0, and the pack alignment, left 4.
class FrameReader final {
public:
    explicit FrameReader(QOpenGLExtraFunctions& gl);
    ~FrameReader();
    Q_DISABLE_COPY(FrameReader)

    /// A texture is read with the host's own context, memory is copied. The failure does not name the frame.
    Outcome read(VideoBuffer const& frame, PixelBlock& block);

private:
    Outcome readTexture(GLuint texture, PixelBlock& bottomFirst);

    QOpenGLExtraFunctions& m_gl;
    GLuint m_framebuffer = 0;
};

}  // namespace qrtplay
