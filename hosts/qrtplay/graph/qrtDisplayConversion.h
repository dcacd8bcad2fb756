#pragma once

#include <array>
#include <optional>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "graph/qrtPixelLayout.h"
#include "graph/qrtPrimaries.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// From red, green and blue as a picture codes them to those of the display: primaries of ITU-R BT.709, the usual
/// curve.
///
/// What standard dynamic range codes with these primaries is what the display takes and passes unchanged. All else is
/// made light that the display would show, brought to its primaries and coded for it; what it cannot show is clipped.
struct DisplayConversion {
    bool isUnchanged = true;
    /// Functions of GLSL 1.50: `vec3 decoded(vec3)` to light, 1 being reference white, and `vec3 encoded(vec3)` back.
    std::string functions;
    Matrix3 matrix{};                   ///< between the two
    std::array<double, 3> luminance{};  ///< weights of red, green and blue in what `decoded` takes
};

/// What is known of the colours of a picture: its own statements, then those of its clip. Primaries that nobody has
/// stated are taken for those of the display; a guess by the size of a picture is no reason to change its colours.
[[nodiscard]] ColourFacts coloursOf(AVFrame const& picture, PixelLayout const& layout, VideoFacts const& facts);

/// Fails for a transfer curve or primaries that are not known. `colour`: as `coloursOf` has made it.
Outcome displayConversion(ColourFacts const& colour, DisplayConversion& conversion);

}  // namespace qrtplay
