#pragma once

#include <array>
#include <optional>

#include "base/qrtKit.h"
#include "graph/qrtPixelLayout.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// From the samples that a texture yields (0 for no bit set, 1 for all bits of a channel set) to red, green and blue
/// between 0 and 1: rgb = matrix * samples + offset; floats stay as they are. Transfer curve and primaries stay what
/// they are.
struct ColourTransform {
    std::array<double, 9> matrix{};  ///< row by row: the first three numbers make red
    std::array<double, 3> offset{};
    double alphaScale = 1;  ///< alpha = sample * alphaScale; its range is always full
};

/// Empty for a matrix that is no linear function of the samples (ICtCp and the constant-luminance ones).
/// `colour` has to be complete.
[[nodiscard]] std::optional<ColourTransform> colourTransform(ColourFacts const& colour, PixelLayout const& layout);

}  // namespace qrtplay
