#pragma once

#include <cstdint>
#include <vector>

namespace qrtplay {

/// A part of a picture in one opaque colour, in pixels from the bottom left corner on.
struct ColourPatch {
    int x;
    int y;
    int width;
    int height;
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// The colour bars of SMPTE ECR 1-1978 (later EG 1): seven bars of 75 % on top, the castellation of reversed blue bars
/// below, then -I, white, +Q and black with the PLUGE strips. They cover a picture of any size and shape without a gap.
///
/// As 8-bit RGB: 0 is 0 IRE and 255 is 100 IRE, so that black, at the setup of 7.5 IRE, leaves room for the PLUGE strip
/// that is darker. The coloured bars are 75 % of full RGB. -I and +Q are chroma of 20 IRE on black; the components that
/// would be negative are 0.
[[nodiscard]] std::vector<ColourPatch> smpteBars(int width, int height);

}  // namespace qrtplay
