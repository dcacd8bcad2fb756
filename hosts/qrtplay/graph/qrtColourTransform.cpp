#include "graph/qrtColourTransform.h"

#include <cmath>

namespace qrtplay {

namespace {

using Matrix = std::array<double, 9>;

/// The weights of red and blue in luma.
struct LumaWeights {
    double red;
    double blue;
};

std::optional<LumaWeights> lumaWeights(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709: return LumaWeights{0.2126, 0.0722};       // ITU-R BT.709-6, item 3.2
        case AVCOL_SPC_BT470BG:                                         // ITU-R BT.601-7, item 2.5.1, of 625 lines ...
        case AVCOL_SPC_SMPTE170M: return LumaWeights{0.299, 0.114};     // ... and of 525
        case AVCOL_SPC_BT2020_NCL: return LumaWeights{0.2627, 0.0593};  // ITU-R BT.2020-2, table 4
        case AVCOL_SPC_SMPTE240M: return LumaWeights{0.212, 0.087};     // SMPTE ST 240, as ITU-T H.273 lists it
        case AVCOL_SPC_FCC: return LumaWeights{0.30, 0.11};             // 47 CFR 73.682, as ITU-T H.273 lists it
        default: return std::nullopt;
    }
}

/// From luma (0 to 1) and the two colour differences (-0.5 to 0.5) to red, green and blue.
std::optional<Matrix> differenceMatrix(AVColorSpace space) {
    if (space == AVCOL_SPC_YCGCO) return Matrix{1, -1, 1, 1, 1, 0, 1, -1, -1};  // ITU-T H.273, equations 48 to 50
    const auto weights = lumaWeights(space);
    if (!weights) return std::nullopt;
    const double green = 1 - weights->red - weights->blue;
    const double redFromCr = 2 * (1 - weights->red);
    const double blueFromCb = 2 * (1 - weights->blue);
    return Matrix{1, 0,          redFromCr, 1, -blueFromCb * weights->blue / green, -redFromCr * weights->red / green,
                  1, blueFromCb, 0};
}

/// Scales and shifts the samples of one component: value = sample * scale + offset.
struct Quantisation {
    double scale;
    double offset;
};

}  // namespace

std::optional<ColourTransform> colourTransform(ColourFacts const& colour, PixelLayout const& layout) {
    const double channelMax = layout.bytesPerChannel == 2 ? 65535.0 : 255.0;
    const double codePerSample = channelMax / std::exp2(layout.shift);
    const double codeMax = std::exp2(layout.bits) - 1;
    const double unit = std::exp2(layout.bits - 8);  // limited range is defined for 8 bits and scaled

    Quantisation luma{codePerSample / codeMax, 0};
    Quantisation chroma{codePerSample / codeMax, -128 * unit / codeMax};
    if (colour.range != AVCOL_RANGE_JPEG) {  // ITU-R BT.709-6, items 4.6 and 4.9: 16 to 235 and 16 to 240
        luma = {codePerSample / (219 * unit), -16.0 / 219};
        chroma = {codePerSample / (224 * unit), -128.0 / 224};
    }

    ColourTransform transform;
    if (layout.isFloat) {
        luma = {1, 0};  // a float says what it means
    } else {
        transform.alphaScale = codePerSample / codeMax;
    }
    if (layout.isRgb) {
        transform.matrix = {luma.scale, 0, 0, 0, luma.scale, 0, 0, 0, luma.scale};
        transform.offset = {luma.offset, luma.offset, luma.offset};
        return transform;
    }
    if (layout.componentCount == 1) {
        transform.matrix = {luma.scale, 0, 0, luma.scale, 0, 0, luma.scale, 0, 0};
        transform.offset = {luma.offset, luma.offset, luma.offset};
        return transform;
    }
    const auto differences = differenceMatrix(colour.matrix);
    if (!differences) return std::nullopt;
    for (size_t row = 0; row < 3; ++row) {
        const double* const from = differences->data() + row * 3;
        transform.matrix[row * 3] = from[0] * luma.scale;
        transform.matrix[row * 3 + 1] = from[1] * chroma.scale;
        transform.matrix[row * 3 + 2] = from[2] * chroma.scale;
        transform.offset[row] = from[0] * luma.offset + (from[1] + from[2]) * chroma.offset;
    }
    return transform;
}

}  // namespace qrtplay
