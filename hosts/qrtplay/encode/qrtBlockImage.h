#pragma once

#include <QImage>

#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// A block of 8 bits as an image that can be drawn; shares the pixels. Null for other depths.
[[nodiscard]] QImage imageOf(PixelBlock const& block);
/// A copy of an image, of 8 bits.
[[nodiscard]] PixelBlock blockOf(QImage const& image);

}  // namespace qrtplay
