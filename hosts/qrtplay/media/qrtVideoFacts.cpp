#include "media/qrtVideoFacts.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/display.h>
}

namespace qrtplay {

namespace {

/// The formats of JPEG's heritage, whose name is the only statement of their range.
bool isFullRangeFormat(AVPixelFormat format) {
    switch (format) {
        case AV_PIX_FMT_YUVJ411P:
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ444P: return true;
        default: return false;
    }
}

AVColorTransferCharacteristic usualTransfer(AVPixFmtDescriptor const* descriptor, bool isRgb) {
    if (descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_FLOAT) != 0) return AVCOL_TRC_LINEAR;
    return isRgb ? AVCOL_TRC_IEC61966_2_1 : AVCOL_TRC_BT709;
}

}  // namespace

ColourFacts completeColour(ColourFacts stated, AVPixelFormat pixelFormat, int height) {
    constexpr int firstHighDefinitionHeight = 720;
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(pixelFormat);
    const bool isRgb = descriptor && (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;

    ColourFacts complete = stated;
    if (isRgb) {
        complete.matrix = AVCOL_SPC_RGB;
        complete.range = AVCOL_RANGE_JPEG;
    } else {
        // A stream of luma and chroma that calls its matrix RGB contradicts itself; the default serves it best.
        if (stated.matrix == AVCOL_SPC_UNSPECIFIED || stated.matrix == AVCOL_SPC_RESERVED ||
            stated.matrix == AVCOL_SPC_RGB)
            complete.matrix = height >= firstHighDefinitionHeight ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
        const bool isGrey = descriptor && descriptor->nb_components < 3;
        if (isFullRangeFormat(pixelFormat) || (isGrey && stated.range == AVCOL_RANGE_UNSPECIFIED))
            complete.range = AVCOL_RANGE_JPEG;
        if (complete.range == AVCOL_RANGE_UNSPECIFIED) complete.range = AVCOL_RANGE_MPEG;
    }
    if (stated.primaries == AVCOL_PRI_UNSPECIFIED || stated.primaries == AVCOL_PRI_RESERVED)
        complete.primaries = height >= firstHighDefinitionHeight ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
    if (stated.transfer == AVCOL_TRC_UNSPECIFIED || stated.transfer == AVCOL_TRC_RESERVED ||
        stated.transfer == AVCOL_TRC_RESERVED0)
        complete.transfer = usualTransfer(descriptor, isRgb);
    return complete;
}

void readDisplayMatrix(int32 const (&matrix)[9], VideoFacts& facts) {
    int32 upright[9];
    std::copy(std::begin(matrix), std::end(matrix), upright);
    const double determinant = static_cast<double>(matrix[0]) * matrix[4] - static_cast<double>(matrix[1]) * matrix[3];
    facts.isFlippedHorizontally = determinant < 0;
    if (facts.isFlippedHorizontally) {  // what remains of the matrix after its picture has been mirrored
        for (int column = 0; column < 2; ++column)
            upright[column] = std::max(upright[column], -INT32_MAX) * -1;
    }
    constexpr double quarter = 90;
    const double counterClockwise = av_display_rotation_get(upright);
    if (!std::isfinite(counterClockwise)) return;
    facts.clockwiseQuarterTurns = (4 - static_cast<int>(std::lround(counterClockwise / quarter))) % 4;
}

}  // namespace qrtplay
