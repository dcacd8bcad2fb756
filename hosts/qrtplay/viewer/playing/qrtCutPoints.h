#pragma once

#include <optional>
#include <vector>

#include "base/qrtKit.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// The frames at which anything on a timeline begins or ends, for jumping from cut to cut.
class CutPoints final {
public:
    CutPoints() = default;
    /// `rate`: output frames per second, in which frames are counted.
    CutPoints(Timeline const& timeline, Rational const& rate, int64 frameCount);

    [[nodiscard]] std::optional<int64> before(int64 frame) const;
    [[nodiscard]] std::optional<int64> after(int64 frame) const;

private:
    std::vector<int64> m_frames;  // ascending
};

}  // namespace qrtplay
