#pragma once

#include <array>
#include <vector>

namespace qrtplay {

/// Red, green, blue, alpha from 0 to 1.
using GeneratorColour = std::array<float, 4>;

/// A generator's colour, whatever a file says it is: missing channels are 0 and a missing alpha 1; what lies outside 0
/// to 1, or is no number, is moved inside.
[[nodiscard]] inline GeneratorColour straight(std::vector<double> const& channels) {
    GeneratorColour colour{0, 0, 0, 1};
    for (size_t i = 0; i < colour.size() && i < channels.size(); ++i)
        colour[i] = channels[i] >= 1 ? 1.0f : channels[i] > 0 ? static_cast<float>(channels[i]) : 0.0f;
    return colour;
}

/// The same with red, green and blue multiplied by alpha.
[[nodiscard]] inline GeneratorColour premultiplied(std::vector<double> const& channels) {
    GeneratorColour colour = straight(channels);
    for (size_t i = 0; i < 3; ++i)
        colour[i] *= colour[3];
    return colour;
}

}  // namespace qrtplay
