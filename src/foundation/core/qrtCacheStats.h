#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtTypes.h"
#include "foundation/core/qrtVector.h"

namespace QRT_0_81 {

/// Which frames a cache held at one moment, as runs of consecutive frame numbers.
class QRT_CORE_EXPORT CacheStats final : public RefCountedMT {
public:
    enum class CacheType : int { producer = 0, graph_engine = 1 };

    /// A run of frames; both ends are inclusive.
    struct FrameRange {
        int64 first = 0;
        int64 last = 0;
        [[nodiscard]] bool operator==(FrameRange const& other) const noexcept = default;
    };

    /// A record without ranges.
    [[nodiscard]] static SharedPtr<CacheStats> create();
    ~CacheStats() override;

    /// In ascending order, without overlap.
    [[nodiscard]] Vector<FrameRange>& getFrameRanges() noexcept { return m_frameRanges; }
    [[nodiscard]] Vector<FrameRange> const& getFrameRanges() const noexcept { return m_frameRanges; }

private:
    CacheStats() = default;

    Vector<FrameRange> m_frameRanges;
};

}  // namespace QRT_0_81
