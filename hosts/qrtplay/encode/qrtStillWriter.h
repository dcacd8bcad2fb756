#pragma once

#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// Writes a picture as a PNG, TIFF, EXR or JPEG file, told by the ending of its name, as deep as the block is: 8 or 16
/// bits for PNG and TIFF, half or float for EXR, 8 bits for JPEG.
///
/// The file appears under its name only when it is whole; one that stood there before is replaced, and stays when
/// writing fails. Failures name the path. Any thread may call it. `quality`: of JPEG, 1 to 100, about as other programs
/// count it.
Outcome writeStill(std::string const& path, PixelBlock const& block, int quality);

}  // namespace qrtplay
