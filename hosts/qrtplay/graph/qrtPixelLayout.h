#pragma once

#include <array>
#include <optional>

#include "media/qrtAv.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// How a decoded picture lies in memory, as far as it can be uploaded to textures as it is.
///
/// Texels of a plane are 1 to 4 channels of 8 or 16 bits. Components are red, green and blue, or luma and the two chromas;
/// of a grey picture only the first counts.
struct PixelLayout {
    struct Plane {
        int source = 0;    ///< which plane of the picture
        int channels = 0;  ///< per texel; 0 for an unused plane
        int widthShift = 0;
        int heightShift = 0;  ///< log2 of how many pixels share a sample, horizontally and vertically
    };
    struct Component {
        int plane = 0;    ///< index into `planes`
        int channel = 0;  ///< of the texel
    };

    std::array<Plane, 3> planes;
    std::array<Component, 3> components;
    int planeCount = 0;
    int componentCount = 0;    ///< 1 for grey, else 3
    int bytesPerChannel = 1;   ///< 1 or 2
    int bits = 8;              ///< that carry the sample ...
    int shift = 0;             ///< ... and how far they are from the low end of the channel
    bool isRgb = false;
};

/// Empty when pictures of the format have to be converted first, to `uploadableFormat(format)`.
[[nodiscard]] std::optional<PixelLayout> describeLayout(AVPixelFormat format);

/// A format that `describeLayout` knows and that loses nothing of `format` but bits beyond 16, and alpha. It stays in the
/// same colour model with the same chroma resolution where there is such a format.
[[nodiscard]] AVPixelFormat uploadableFormat(AVPixelFormat format);

}  // namespace qrtplay
