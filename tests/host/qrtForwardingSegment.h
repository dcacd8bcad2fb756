#pragma once

#include <atomic>

#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtSharedPtr.h"

namespace qrtplay {

/// Passes everything on to another segment and counts how often it renders.
class ForwardingSegment final : public ExternalSegment {
public:
    explicit ForwardingSegment(SharedPtr<ExternalSegment> const& segment) : m_segment(segment) {}
    [[nodiscard]] static SharedPtr<ForwardingSegment> create(SharedPtr<ExternalSegment> const& segment) {
        return SharedPtr<ForwardingSegment>(new ForwardingSegment(segment));
    }

    [[nodiscard]] String const& getId() const override { return m_segment->getId(); }
    [[nodiscard]] Subject* getSubject() override { return m_segment->getSubject(); }
    [[nodiscard]] bool isRamSegment() const override { return m_segment->isRamSegment(); }
    [[nodiscard]] bool hasOwnBuffers() const override { return m_segment->hasOwnBuffers(); }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const& resolution) override {
        return m_segment->getOwnRamBuffer(resolution);
    }
    [[nodiscard]] unsigned int getOwnTexture(unsigned int rectangle) override {
        return m_segment->getOwnTexture(rectangle);
    }
    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override {
        ++renderCount;
        return m_segment->renderToTexture(texture, rectangle, resolution, time);
    }
    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                       Time const& time) override {
        ++renderCount;
        return m_segment->renderToRam(buffer, size, resolution, time);
    }

    std::atomic<int> renderCount{0};

private:
    const SharedPtr<ExternalSegment> m_segment;
};

}  // namespace qrtplay
