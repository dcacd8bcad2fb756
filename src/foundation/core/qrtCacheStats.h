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
    /// Whose cache is asked about.
    enum class CacheType : int {
        producer = 0,     ///< the player's frames
        graph_engine = 1  ///< what the graph engine keeps, decoded frames for instance
    };

    /// A run of frames; both ends are inclusive.
    struct FrameRange {
        int64 first = 0;  ///< the lowest frame number
        int64 last = 0;   ///< the highest frame number
        /// Whether both ends are equal.
        [[nodiscard]] bool operator==(FrameRange const& other) const noexcept = default;
    };

    /// A record without ranges.
    [[nodiscard]] static SharedPtr<CacheStats> create();
    ~CacheStats() override;

    /// The runs, in ascending order and without overlap. Owned by the record.
    /// @{
    [[nodiscard]] Vector<FrameRange>& getFrameRanges() noexcept { return m_frameRanges; }
    [[nodiscard]] Vector<FrameRange> const& getFrameRanges() const noexcept { return m_frameRanges; }
    /// @}

private:
    CacheStats() = default;

    Vector<FrameRange> m_frameRanges;
};

}  // namespace QRT_0_81
