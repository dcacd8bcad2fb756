#pragma once

#include <vector>

#include "timeline/qrtFramePlan.h"
#include "timeline/qrtTimelineNode.h"

namespace qrtplay {

/// What is seen of a node at `time` of its parent, counted from the node's begin, while a frame as long as `frame` is
/// shown.
[[nodiscard]] FrameNode pictureOf(TimelineNode const& node, ExactTime const& time, ExactTime const& frame);

/// What is heard of a node that begins at output sample 0, from `firstSample` up to `endSample`.
[[nodiscard]] std::vector<SoundSpan> soundOf(TimelineNode const& node, int64 firstSample, int64 endSample,
                                             Rational const& sampleRate);

}  // namespace qrtplay
