#pragma once

#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

struct PlayParamsPrivate;

/// Whether one of the first `numSteps` steps of playback from `from` stands on `frame`. A step that leaves the range
/// does not end the walk; it only stands nowhere.
///
/// Costs the same however many steps there are: the number of the step is computed from the play mode's rules. Only
/// where 64 bits could wrap around, or the walk starts outside of its range, is it walked.
[[nodiscard]] bool walkReaches(PlayParamsPrivate const& from, int32 numSteps, int64 frame);

}  // namespace QRT_0_81
