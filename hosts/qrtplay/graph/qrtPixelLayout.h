#pragma once

#include <array>
#include <optional>

#include "base/qrtKit.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// How a decoded picture lies in memory, as far as it can be uploaded to textures as it is.
///
/// Texels of a plane are 1 to 4 channels: integers of 8 or 16 bits or floats of 32. Components are red, green and blue
/// (or X, Y and Z), or luma and the two chromas, and alpha; of a grey picture only the first and alpha count.
struct PixelLayout {
    static constexpr size_t alpha = 3;  ///< its number among the components

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

    std::array<Plane, 4> planes;
    std::array<Component, 4> components;
    int planeCount = 0;
    int componentCount = 0;   ///< alpha aside: 1 for grey, else 3
    int bytesPerChannel = 1;  ///< 1, 2 or 4
    int bits = 8;             ///< that carry the sample ...
    int shift = 0;            ///< ... and how far they are from the low end of the channel
    bool isRgb = false;
    bool isXyz = false;
    bool isFloat = false;
    bool hasAlpha = false;
    bool isSwapped = false;  ///< the bytes of a channel are not in the machine's order
};

/// Empty when pictures of the format have to be converted first, to `uploadableFormat(format)`.
[[nodiscard]] std::optional<PixelLayout> describeLayout(AVPixelFormat format);

/// A format that `describeLayout` knows and that loses nothing of `format` but bits beyond 16. It stays in the same
/// colour model with the same chroma resolution where there is such a format.
[[nodiscard]] AVPixelFormat uploadableFormat(AVPixelFormat format);

}  // namespace qrtplay
