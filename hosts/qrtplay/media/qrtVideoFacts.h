#pragma once

#include <string>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtLimits.h"
#include "foundation/core/qrtRational.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// How many frames a still picture has that stands for any time: each of them is frame 0.
constexpr int64 endlessFrameCount = INT64_MAX;

/// How the numbers of a picture stand for colours.
struct ColourFacts {
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;

    [[nodiscard]] bool operator==(ColourFacts const&) const noexcept = default;
};

/// What is known about a video stream once it is open.
struct VideoFacts {
    int width = 0;  ///< in pixels as stored, before it is turned
    int height = 0;
    Rational sampleAspect{1, 1};  ///< width of a pixel over its height
    Rational frameRate{24, 1};    ///< frames per second; of a clip with varying rate the average
    int64 frameCount = 0;         ///< frames that are shown, those that a truncated file lacks included
    AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
    ColourFacts colour;                  ///< complete: what the stream leaves open has been filled in
    int clockwiseQuarterTurns = 0;       ///< 0 to 3, by which the picture has to be turned to stand upright
    bool isFlippedHorizontally = false;  ///< mirrored, before it is turned
    AVFieldOrder fieldOrder = AV_FIELD_PROGRESSIVE;
    ExactTime startTime;  ///< of frame 0 in the file's own counting
    std::string codecName;
};

/// Fills in what a stream leaves open, as players have agreed to: BT.709 from 720 rows on and BT.601 below, limited
/// range unless the pixel format says full or is grey; an RGB format has no matrix and full range. Light is coded as
/// BT.709 says, in RGB as sRGB says, and floating-point numbers are the light itself.
[[nodiscard]] ColourFacts completeColour(ColourFacts stated, AVPixelFormat pixelFormat, int height);

/// Fills in how a picture has to be turned and mirrored, from the matrix of nine numbers that a stream states for it. A
/// matrix that does neither in quarters is taken for the nearest that does.
void readDisplayMatrix(int32 const (&matrix)[9], VideoFacts& facts);

}  // namespace qrtplay
