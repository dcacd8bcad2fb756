#pragma once

#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtSharedPtr.h"
#include "qrtExternalSegmentCacheManager.h"

namespace QRT_0_81 {

/// Stands in front of a host's segment: answers from the frame cache what was rendered before, has the host render the
/// rest, and drops frames that the host declares invalid.
///
/// The constraint of the segment's own kind (memory or texture) decides whether its frames are cached, whichever of the
/// two render operations is used; without one every call passes straight through. Lives as long as a graph engine
/// wants, beyond the player's end too. Threading: as `ExternalSegment` says; notifications may come on any thread.
class ExternalSegmentWrapper final : public ExternalSegment, public Observer {
public:
    ExternalSegmentWrapper(ExternalSegmentCacheManager* cacheManager, SharedPtr<ExternalSegment> const& segment);
    ~ExternalSegmentWrapper() override;

    [[nodiscard]] String const& getId() const override { return m_segment->getId(); }
    [[nodiscard]] Subject* getSubject() override { return m_segment->getSubject(); }
    [[nodiscard]] bool isRamSegment() const override { return m_segment->isRamSegment(); }

    // With caching on, the segment's own storage is out of reach: the caller gets its copy in its own buffer.
    [[nodiscard]] bool hasOwnBuffers() const override;
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const& resolution) override;
    [[nodiscard]] unsigned int getOwnTexture(unsigned int rectangle) override;

    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override;
    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                       Time const& time) override;

protected:
    void update(Subject* subject, NotificationHint const& hint) override;

private:
    [[nodiscard]] bool isVram() const { return !m_segment->isRamSegment(); }
    [[nodiscard]] bool isCaching() const { return m_cacheManager.isEnabled(isVram()); }

    ExternalSegmentCacheManager m_cacheManager;  // a handle: outlives the engine's own
    const SharedPtr<ExternalSegment> m_segment;
};

}  // namespace QRT_0_81
