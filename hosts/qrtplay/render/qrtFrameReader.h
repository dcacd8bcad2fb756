#pragma once

#include <QImage>
#include <QOpenGLExtraFunctions>

#include "foundation/core/qrtVideoBuffer.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Turns delivered frames of 4 channels of 8 bits into images, top row first.
///
/// Threading and OpenGL: the thread and context of `gl`, current in every call and at the end. The state that is changed is
/// the framebuffer binding for reading, left 0, and the pack alignment, left 4.
class FrameReader final {
public:
    explicit FrameReader(QOpenGLExtraFunctions& gl);
    ~FrameReader();
    Q_DISABLE_COPY(FrameReader)

    /// A texture is read with the host's own context, memory is copied.
    Outcome read(VideoBuffer const& frame, QImage& image);

private:
    Outcome readTexture(GLuint texture, QImage& bottomFirst);

    QOpenGLExtraFunctions& m_gl;
    GLuint m_framebuffer = 0;
};

}  // namespace qrtplay
