#pragma once

#include <QImage>

#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// A block of any depth, alpha premultiplied, as an image of 8 bits a channel, alpha not premultiplied. What lies
/// outside 0 to 1 is clipped.
[[nodiscard]] QImage eightBitImage(PixelBlock const& block);

}  // namespace qrtplay
