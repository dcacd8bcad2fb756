#pragma once

#include "base/qrtKit.h"
#include "graph/qrtPlacement.h"

namespace qrtplay {

/// How a picture as stored becomes one that stands upright: mirrored first, then turned.
struct Orientation {
    int clockwiseQuarterTurns = 0;
    bool isFlippedHorizontally = false;

    [[nodiscard]] bool isOnItsSide() const noexcept { return (clockwiseQuarterTurns & 1) != 0; }
};

/// From output pixels (the origin at the bottom left) to the columns and rows of a stored picture that has been scaled
/// to the size of its place: stored = matrix * output + offset. Each number of the matrix is 0, 1 or -1.
struct Turn {
    int columnFromX = 1;
    int columnFromY = 0;
    int columnOffset = 0;
    int rowFromX = 0;
    int rowFromY = -1;
    int rowOffset = 0;
};

/// `place`: of the upright picture on the output.
[[nodiscard]] Turn turnInto(PixelRect const& place, Orientation const& orientation);

}  // namespace qrtplay
