#pragma once

#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Frames in the order of playing: `first`, `first + step`, ... up to `last`, which is one of them.
struct FrameRange {
    static constexpr int64 toTheEnd = -1;  ///< as `last`, until `fitFrameRanges` knows better

    int64 first = 0;
    int64 last = 0;
    int32 step = 1;  ///< negative to play backwards, never 0

    [[nodiscard]] int64 count() const noexcept { return (last - first) / step + 1; }
    [[nodiscard]] int64 frame(int64 position) const noexcept { return first + position * step; }
    [[nodiscard]] bool operator==(FrameRange const&) const noexcept = default;
};

/// Reads a list such as "7", "0-99", "10-90x5", "100-", "99-0x-1" or "0-9,20,40-30". Without a step a range that falls
/// plays backwards, and with any step it does not matter whether that is written with its sign. A last frame that the
/// step does not hit is left out. Failures name the part that is wrong.
Outcome parseFrameRanges(std::string const& text, std::vector<FrameRange>& ranges);

/// Gives ranges to the end their last frame, and all frames when there are no ranges. Failures name the first part that
/// is not among the first `frameCount` frames.
Outcome fitFrameRanges(std::vector<FrameRange>& ranges, int64 frameCount);

/// How many frames the ranges have together.
[[nodiscard]] int64 totalFrames(std::vector<FrameRange> const& ranges);

/// As `parseFrameRanges` reads them.
[[nodiscard]] std::string textOf(FrameRange const& range);

}  // namespace qrtplay
