#include "graph/qrtCpuForm.h"

#include <utility>

#include "graph/qrtDisplayConversion.h"
#include "graph/qrtOrientation.h"
#include "graph/qrtRgbaLines.h"

namespace qrtplay {

namespace {

/// What is not positive means nothing, either way up.
Rational inverse(Rational const& aspect) {
    if (aspect.getNumerator() <= 0) return Rational(1, 1);
    return Rational(static_cast<int32>(aspect.getDenominator()), static_cast<uint32>(aspect.getNumerator()));
}

bool canScale(AVFrame const& picture, PixelLayout const& layout, PixelRect const& place) {
    if (place.width == picture.width && place.height == picture.height) return true;
    const bool isShrunk = place.width <= picture.width && place.height <= picture.height;
    const bool isEnlarged = place.width >= picture.width && place.height >= picture.height;
    return !layout.isRgb && picture.interlaced_frame == 0 && (isShrunk || isEnlarged);
}

}  // namespace

PixelRect placeOf(LayerPicture const& layer, Scaling scaling, int outputWidth, int outputHeight) {
    int width = layer.picture->width;
    int height = layer.picture->height;
    Rational aspect = layer.facts.sampleAspect;
    if (layer.facts.clockwiseQuarterTurns % 2 != 0) {
        std::swap(width, height);
        aspect = inverse(aspect);
    }
    return placement(scaling, width, height, aspect, outputWidth, outputHeight);
}

AVChromaLocation chromaLocationOf(LayerPicture const& layer) {
    const bool isStated = layer.picture->chroma_location != AVCHROMA_LOC_UNSPECIFIED;
    return isStated ? layer.picture->chroma_location : layer.facts.chromaLocation;
}

std::optional<CpuForm> cpuForm(LayerPicture const& layer, PixelRect const& place, bool hasManagedColours) {
    AVFrame const& picture = *layer.picture;
    const bool isUpright = layer.facts.clockwiseQuarterTurns == 0 && !layer.facts.isFlippedHorizontally;
    const auto layout = describeLayout(static_cast<AVPixelFormat>(picture.format));
    if (hasManagedColours || !isUpright || !layout || !canScale(picture, *layout, place)) return std::nullopt;

    const CpuForm form{place.width, place.height, coloursOf(picture, *layout, layer.facts), chromaLocationOf(layer)};
    DisplayConversion conversion;
    if (displayConversion(form.colour, conversion).failed() || !conversion.isUnchanged) return std::nullopt;
    const auto transform = colourTransform(form.colour, *layout);
    const ChromaPlace chroma = chromaPlace(picture, *layout, form.chromaLocation);
    if (!transform || !RgbaLines::create(*layout, *transform, chroma)) return std::nullopt;
    return form;
}

}  // namespace qrtplay
