#pragma once

#include <cstddef>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// What one output frame is made of, as a tree.
struct FrameNode {
    enum class Kind {
        nothing,    ///< transparent
        media,      ///< a picture of `Timeline::media()[source]`
        generator,  ///< a picture of `Timeline::generators()[source]`, which the host renders
        stack,      ///< the children over each other, the first one at the bottom
        dissolve,   ///< the first child turns into the second: (1 - mix) * first + mix * second
    };

    Kind kind = Kind::nothing;
    size_t source = 0;
    ExactTime time;  ///< of the picture, from the source's first frame on; may lie outside the source
    double mix = 0;
    std::vector<FrameNode> children;

    [[nodiscard]] bool operator==(FrameNode const&) const noexcept = default;
};

/// A stretch of sound of one media, to be added to the output with a gain.
struct SoundSpan {
    size_t media = 0;       ///< index into `Timeline::media()`
    int64 firstSample = 0;  ///< on the output's sample grid, from the beginning of the timeline on
    int64 sampleCount = 0;
    ExactTime time;         ///< of the first sample, from the source's first frame on
    ExactTime speed{1, 1};  ///< source seconds per second of output; negative plays backwards
    double gainFrom = 1;    ///< of the first sample ...
    double gainTo = 1;      ///< ... changing linearly up to this of the sample after the last

    [[nodiscard]] bool operator==(SoundSpan const&) const noexcept = default;
};

}  // namespace qrtplay
