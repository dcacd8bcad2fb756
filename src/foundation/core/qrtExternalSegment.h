#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtTime.h"
#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

class Subject;

/// A stretch of the timeline that the host renders itself.
///
/// Threading: the render operations are called on the player thread with its OpenGL context current.
/// `rectangle` is a flag: non-zero means a `GL_TEXTURE_RECTANGLE` texture, zero a `GL_TEXTURE_2D` one.
/// The `Time` of a request is expressed in frames: its tick count is the frame number.
class QRT_CORE_EXPORT ExternalSegment : public RefCountedMT {
public:
    ~ExternalSegment() override;

    /// Identifies the segment among those of its composition; prefix of its cache keys.
    [[nodiscard]] virtual String const& getId() const = 0;
    /// Notifies about this segment (an `InvalidationHint` drops cached frames), or null.
    [[nodiscard]] virtual Subject* getSubject() = 0;
    /// Whether the segment renders into memory rather than into textures.
    [[nodiscard]] virtual bool isRamSegment() const = 0;
    /// Whether, after rendering, the segment keeps the picture in storage of its own.
    [[nodiscard]] virtual bool hasOwnBuffers() const = 0;
    /// The segment's own picture in memory, or null; owned by the segment.
    [[nodiscard]] virtual void* getOwnRamBuffer(VideoBufferResolution const& resolution) = 0;
    /// The name of the segment's own texture, or 0; owned by the segment.
    [[nodiscard]] virtual unsigned int getOwnTexture(unsigned int rectangle) = 0;
    /// Renders the frame at `time` into `texture`.
    virtual Status renderToTexture(unsigned int texture, unsigned int rectangle,
                                   VideoBufferResolution const& resolution, Time const& time) = 0;
    /// Renders the frame at `time` into `buffer` of `size` bytes.
    virtual Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                               Time const& time) = 0;
};

}  // namespace QRT_0_81
