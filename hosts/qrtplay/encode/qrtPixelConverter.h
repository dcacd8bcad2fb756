#pragma once

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// What an encoder wants its pictures to be.
struct EncodedColour {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorSpace matrix = AVCOL_SPC_RGB;
    AVColorRange range = AVCOL_RANGE_JPEG;
};

/// Turns blocks of pixels into pictures for an encoder; alpha is left out. Floats stay floats: they go into
/// AV_PIX_FMT_GBRPF32 only, and nothing but floats does.
///
/// Threading: one thread.
class PixelConverter final {
public:
    explicit PixelConverter(EncodedColour const& colour) : m_colour(colour) {}

    /// Failures say what is wrong with the block.
    Outcome convert(PixelBlock const& block, AvPtr<AVFrame>& picture);

private:
    Outcome convertIntegers(PixelBlock const& block, AVFrame& picture);

    const EncodedColour m_colour;
    AvPtr<SwsContext> m_scaler;  // for blocks of the kind that came last
};

}  // namespace qrtplay
