#pragma once

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// How a picture gets the size of the output.
enum class Scaling {
    fit,         ///< as large as fits; bars where the shapes differ
    fill,        ///< as small as leaves no bars; cut off where the shapes differ
    one_to_one,  ///< a pixel for a pixel, whatever their aspect; bars or cut off
};

/// A rectangle in pixels of the output; the origin is one of its corners, whichever the user takes for (0, 0).
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] bool operator==(PixelRect const&) const noexcept = default;
};

/// Where a picture of `width` x `height` pixels of aspect `sampleAspect` lies in an output of square pixels:
/// undistorted, centred, on whole pixels and at least one pixel wide and high. It exceeds the output where it is cut
/// off, by no more than `maxPlacedSide`.
[[nodiscard]] PixelRect placement(Scaling scaling, int width, int height, Rational const& sampleAspect, int outputWidth,
                                  int outputHeight);

/// Whole numbers up to here, and halves between them, are exact in the shaders' arithmetic.
constexpr int maxPlacedSide = 1 << 22;

/// The part of `rect` that lies on the output; empty (no width or height) when there is none.
[[nodiscard]] PixelRect visiblePart(PixelRect const& rect, int outputWidth, int outputHeight);

}  // namespace qrtplay
