#pragma once

#include <vector>

#include "base/qrtKit.h"
#include "media/qrtAv.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// The colours of a decoded picture, computed on the processor in double precision straight from the definitions of its
/// matrix, range and chroma position, to hold what OpenGL draws against: four bytes a pixel, top row first.
std::vector<unsigned char> referenceColours(AVFrame const& picture, VideoFacts const& facts);

/// The largest difference between two pictures of `width` x `height` pixels, the first with its bottom row first (as
/// OpenGL reads it), the second with its top row first. 256 when their sizes are not alike.
int largestDifference(std::vector<unsigned char> const& bottomFirst, std::vector<unsigned char> const& topFirst,
                      int width, int height);

}  // namespace qrtplay
