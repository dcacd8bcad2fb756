#pragma once

#include <array>
#include <optional>

#include "base/qrtKit.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Three rows of three, row by row.
using Matrix3 = std::array<double, 9>;

/// From linear light in the primaries given to linear light in those of ITU-R BT.709, white staying white. Empty for
/// primaries that nobody knows.
[[nodiscard]] std::optional<Matrix3> toBt709(AVColorPrimaries primaries);

/// The share of linear red, green and blue in luminance.
[[nodiscard]] std::optional<std::array<double, 3>> luminanceWeights(AVColorPrimaries primaries);

}  // namespace qrtplay
