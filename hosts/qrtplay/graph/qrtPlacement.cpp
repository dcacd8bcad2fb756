#include "graph/qrtPlacement.h"

#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

int rounded(double side, int least, int most) {
    return static_cast<int>(std::lround(std::clamp(side, static_cast<double>(least), static_cast<double>(most))));
}

}  // namespace

PixelRect placement(Scaling scaling, int width, int height, Rational const& sampleAspect, int outputWidth,
                    int outputHeight) {
    PixelRect rect{0, 0, outputWidth, outputHeight};
    if (scaling == Scaling::one_to_one) {
        rect.width = width;
        rect.height = height;
    } else {
        const double pixelAspect = sampleAspect.getValue() > 0 ? sampleAspect.getValue() : 1.0;
        const double aspect = pixelAspect * width / height;
        const bool isWider = aspect * outputHeight > outputWidth;
        const bool fits = scaling == Scaling::fit;
        if (isWider == fits)
            rect.height = rounded(outputWidth / aspect, fits ? 1 : outputHeight, fits ? outputHeight : maxPlacedSide);
        else
            rect.width = rounded(outputHeight * aspect, fits ? 1 : outputWidth, fits ? outputWidth : maxPlacedSide);
    }
    rect.x = (outputWidth - rect.width) / 2;
    rect.y = (outputHeight - rect.height) / 2;
    return rect;
}

PixelRect visiblePart(PixelRect const& rect, int outputWidth, int outputHeight) {
    const int right = std::min(rect.x + rect.width, outputWidth);
    const int top = std::min(rect.y + rect.height, outputHeight);
    PixelRect part{std::max(rect.x, 0), std::max(rect.y, 0), 0, 0};
    part.width = std::max(right - part.x, 0);
    part.height = std::max(top - part.y, 0);
    return part;
}

}  // namespace qrtplay
