#pragma once

#include "foundation/core/qrtRational.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// The frame of a clip of `sourceRate` that is on show when output frame `frame` of `outputRate` begins: exact, also after
/// years, as times computed with floating point are not. -1 when a rate is not positive or the frame negative.
[[nodiscard]] int64 sourceFrameOf(int64 frame, Rational const& outputRate, Rational const& sourceRate);

/// The first output frame that shows source frame `frame` or a later one: the reverse of `sourceFrameOf`.
[[nodiscard]] int64 firstOutputFrameOf(int64 frame, Rational const& outputRate, Rational const& sourceRate);

}  // namespace qrtplay
