#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtSubject.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What the segments of all generators share: the generator itself, which may be changed while the player renders it.
///
/// The frame of a request is its tick count, at the generator's own rate; outside the generator the nearest frame is
/// rendered. Each segment has a subject of its own, which tells with an `InvalidationHint` that all its frames look
/// different after a change. Nothing is told of a change that leaves the picture as it is.
/// Threading: `setText`, `setColour` and `generator` may be called from any thread, the render operations on the player
/// thread. Observers are called on the thread of the change, without a lock. A frame that is being rendered meanwhile
/// may still show the old state.
class GeneratorSegment : public ExternalSegment {
public:
    void setText(std::string const& text);
    /// Red, green, blue, alpha: 0 to 1, not premultiplied.
    void setColour(std::vector<double> const& colour);
    [[nodiscard]] Generator generator() const;

    // ExternalSegment
    [[nodiscard]] String const& getId() const override { return m_id; }
    [[nodiscard]] Subject* getSubject() override { return &m_subject; }
    [[nodiscard]] bool hasOwnBuffers() const override { return false; }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const& resolution) override;
    [[nodiscard]] unsigned int getOwnTexture(unsigned int rectangle) override;

protected:
    explicit GeneratorSegment(Generator const& generator);

private:
    /// Tells that every frame of `changed` looks different now.
    void notifyOf(Generator const& changed);

    const String m_id;
    Subject m_subject;
    mutable std::mutex m_mutex;
    Generator m_generator;  // under m_mutex
};

}  // namespace qrtplay
