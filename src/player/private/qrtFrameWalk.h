#pragma once

#include "foundation/core/qrtTypes.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

/// The same as `walkReaches`, with nothing taken for granted.
[[nodiscard]] bool walkReachesInGeneral(PlayParamsPrivate const& from, int32 numSteps, int64 frame);

/// Whether one of the first `numSteps` steps of playback from `from` stands on `frame`. A step that leaves the range
/// does not end the walk; it only stands nowhere.
///
/// Costs the same however many steps there are: the number of the step is computed from the play mode's rules. Only
/// where 64 bits could wrap around, or the walk starts outside of its range, is it walked.
[[nodiscard]] inline bool walkReaches(PlayParamsPrivate const& from, int32 numSteps, int64 frame) {
    // Nearly every frame that is asked about lies straight ahead, frame by frame: the same in every mode.
    const bool isAhead = from.step == 1 && numSteps > 0 && from.startFrame <= from.currentFrame &&
                         from.currentFrame < frame && frame <= from.endFrame;
    const uint64 distance = static_cast<uint64>(frame) - static_cast<uint64>(from.currentFrame);
    return (isAhead && distance <= static_cast<uint64>(numSteps)) || walkReachesInGeneral(from, numSteps, frame);
}

}  // namespace QRT_0_81
