#include "media/qrtVideoFacts.h"

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
    return complete;
}

}  // namespace qrtplay
