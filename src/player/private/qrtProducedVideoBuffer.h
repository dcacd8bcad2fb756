#pragma once

#include <typeinfo>

#include "foundation/cache/qrtCacheData.h"
#include "foundation/core/qrtTypes.h"
#include "foundation/core/qrtVideoBuffer.h"

namespace QRT_0_81 {

/// The producer cache's record: one produced frame under its number.
class ProducedVideoBuffer final : public CacheData {
public:
    ProducedVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer> const& videoBuffer);
    /// Lets go of the frame, which gives its resource back unless a host still holds it.
    ~ProducedVideoBuffer() override;

    /// The record as a produced frame, or null when it is none. The class has no descendants: comparing the type is
    /// enough, and no bases need to be searched as a dynamic cast does.
    [[nodiscard]] static ProducedVideoBuffer const* from(SharedPtr<CacheData> const& data) noexcept {
        CacheData const* const record = data.get();
        if (!record || typeid(*record) != typeid(ProducedVideoBuffer)) return nullptr;
        return static_cast<ProducedVideoBuffer const*>(record);
    }

    [[nodiscard]] int64 getFrameNumber() const noexcept { return m_frameNumber; }
    [[nodiscard]] SharedPtr<VideoBuffer> const& getVideoBuffer() const noexcept { return m_videoBuffer; }

private:
    const int64 m_frameNumber;
    SharedPtr<VideoBuffer> m_videoBuffer;
};

}  // namespace QRT_0_81
