#pragma once

#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtPixelBlock.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// A file as FFmpeg's decoders read it back, whole. A failure is a failure of the test.
struct DecodedFile {
    explicit DecodedFile(std::string const& path);

    [[nodiscard]] AVStream const* stream(AVMediaType type) const;
    /// Metadata of the container or of a stream; empty without it.
    [[nodiscard]] std::string tag(char const* key) const;

    AvPtr<AVFormatContext> format;
    std::vector<AvPtr<AVFrame>> pictures;
    std::vector<float> left;  ///< the first channel of the sound

private:
    void decode(unsigned stream);
    void take(AVFrame const& frame);
};

/// A picture in RGBA with 8 or 16 bits or float, converted without loss where the picture's own format allows it.
PixelBlock blockOf(AVFrame const& picture, PixelFormat format);

/// A picture with all kinds of values in it, the same for the same seed. Floats reach beyond 1 and below 0; alpha is 1.
PixelBlock noiseBlock(int width, int height, PixelFormat format, unsigned seed);
/// Colours that run smoothly, which lossy codecs keep well.
PixelBlock gradientBlock(int width, int height, PixelFormat format, int phase);
/// The largest difference between two channels of integer blocks of one kind, on the scale of 8 bits; 1000 for other
/// sizes.
double largestDifference(PixelBlock const& a, PixelBlock const& b);

}  // namespace qrtplay
