#pragma once

#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// A copy of a picture of half or float values, its colours decoded from the curve of an sRGB display (IEC 61966-2-1)
/// to linear light; alpha stays. A curve that goes through 0 and 1, goes on above 1 and is mirrored below 0, so that
/// nothing is clipped. Other depths come back as they are.
[[nodiscard]] PixelBlock linearLight(PixelBlock const& block);

}  // namespace qrtplay
