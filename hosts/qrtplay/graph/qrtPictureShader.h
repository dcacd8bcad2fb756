#pragma once

#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// What the shader that turns samples of a picture into colours of the display has to know when it is built.
struct PictureTraits {
    bool isGrey = false;
    bool isSubsampled = false;  ///< pixels share chroma
    bool isInterlaced = false;  ///< chroma that pixels share vertically belongs to the lines of one field
    bool isFloat = false;
    bool hasAlpha = false;
    bool isPremultiplied = false;  ///< the colours as stored have been multiplied with alpha
};

/// The beginning of a fragment shader in GLSL 1.50, up to `vec4 texelAt(int column, int line)`, which gives the colour
/// of a pixel, alpha premultiplied. `displayedSource` defines `vec3 displayed(vec3)`.
[[nodiscard]] std::string pictureSource(PictureTraits const& traits, std::string const& displayedSource);

}  // namespace qrtplay
