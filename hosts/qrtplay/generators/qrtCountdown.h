#pragma once

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// What a counting leader shows in one of its frames.
struct Countdown {
    /// `frame` of `frameCount` at `rate` frames per second; the nearest frame when it lies outside. A rate that is not
    /// positive counts as 24.
    Countdown(int64 frame, int64 frameCount, Rational const& rate);

    int64 number = 1;    ///< seconds until the end, those that have begun included; 1 to the last frame
    double turn = 0;     ///< how much of the present second has passed before this frame, 0 up to but not 1
    bool isPop = false;  ///< the first two frames of the last second but one: the mark to align sound with
};

}  // namespace qrtplay
