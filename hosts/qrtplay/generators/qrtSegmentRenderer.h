#pragma once

#include <QOpenGLExtraFunctions>
#include <map>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtList.h"
#include "foundation/core/qrtSharedPtr.h"

namespace qrtplay {

/// Brings the pictures of external segments, of whatever kind they are, into textures of a graph engine.
///
/// Memory: one picture, reused by all segments that render into memory.
/// Threading and OpenGL: one thread, its context current; the state is left as it was where the segments do so.
class SegmentRenderer final {
public:
    /// Replaces the segments. Empty pointers are passed over; the first of several with one id counts.
    void setSegments(List<SharedPtr<ExternalSegment>> const& segments);

    /// Renders frame `frame`, counted at `rate`, of the segment `id` into a `GL_TEXTURE_RECTANGLE` texture of RGBA with
    /// 8 bits. A failure names the segment, the frame and what it answered.
    Outcome render(QOpenGLExtraFunctions& gl, std::string const& id, int64 frame, Rational const& rate,
                   GLuint rectangleTexture, int width, int height);

private:
    struct Target {
        GLuint texture = 0;
        VideoBufferResolution format;
    };

    Outcome renderInto(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time, Target const& target);
    static Outcome renderWithOpenGL(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time,
                                    Target const& target);
    Outcome renderInMemory(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time, Target const& target);

    std::map<std::string, SharedPtr<ExternalSegment>> m_segments;
    std::vector<unsigned char> m_picture;
};

}  // namespace qrtplay
