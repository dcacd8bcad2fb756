#pragma once

#include <string>

namespace examples {

/// A row of `width` pixels of four bytes as 64 characters: '#' where it is light, '.' where it is dark.
[[nodiscard]] inline std::string rowText(unsigned char const* row, int width) {
    constexpr int length = 64;
    constexpr unsigned char middleGrey = 128;
    std::string text;
    for (int i = 0; i < length; ++i) {
        const int x = (2 * i + 1) * width / (2 * length);
        text += row[4 * x] > middleGrey ? '#' : '.';
    }
    return text;
}

}  // namespace examples
