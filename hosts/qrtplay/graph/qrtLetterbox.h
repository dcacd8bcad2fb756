#pragma once

#include "foundation/core/qrtRational.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// A rectangle in pixels of the output; the origin is one of its corners, whichever the user takes for (0, 0).
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] bool operator==(PixelRect const&) const noexcept = default;
};

/// Where a picture of `width` x `height` pixels of aspect `sampleAspect` lies in an output of square pixels: as large as
/// fits, undistorted, centred, on whole pixels and at least one pixel wide and high.
[[nodiscard]] PixelRect letterbox(int width, int height, Rational const& sampleAspect, int outputWidth, int outputHeight);

}  // namespace qrtplay
