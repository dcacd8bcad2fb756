#pragma once

#include "base/qrtKit.h"
#include "graph/qrtPixelLayout.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Where the chroma of a picture lies, for the shader.
struct ChromaPlace {
    float scaleX = 1;  ///< texels of the chroma plane per pixel
    float scaleY = 1;
    float offsetX = 0;  ///< in texels, to be added to the scaled position
    float offsetY = 0;
    float fieldSites[2] = {0, 0};     ///< of the first chroma line of either field, in lines of the field
    float lastFieldRows[2] = {0, 0};  ///< of the chroma of either field
    bool isByField = false;  ///< interlaced 4:2:0: chroma lines belong to the fields in turn, as the lines of luma do
};

/// `location`: as stated; where it is not, that of the standards the format comes from.
[[nodiscard]] ChromaPlace chromaPlace(AVFrame const& picture, PixelLayout const& layout, AVChromaLocation location);

}  // namespace qrtplay
