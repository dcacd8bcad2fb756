#include "graph/qrtLetterbox.h"

#include <algorithm>
#include <cmath>

namespace qrtplay {

PixelRect letterbox(int width, int height, Rational const& sampleAspect, int outputWidth, int outputHeight) {
    const double pixelAspect = sampleAspect.getValue() > 0 ? sampleAspect.getValue() : 1.0;
    const double aspect = pixelAspect * width / height;
    PixelRect rect{0, 0, outputWidth, outputHeight};
    if (aspect * outputHeight > outputWidth)
        rect.height = std::clamp(static_cast<int>(std::lround(outputWidth / aspect)), 1, outputHeight);
    else
        rect.width = std::clamp(static_cast<int>(std::lround(outputHeight * aspect)), 1, outputWidth);
    rect.x = (outputWidth - rect.width) / 2;
    rect.y = (outputHeight - rect.height) / 2;
    return rect;
}

}  // namespace qrtplay
