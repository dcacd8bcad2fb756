#include "encode/qrtLinearLight.h"

#include <QFloat16>
#include <cmath>
#include <cstring>
#include <vector>

namespace qrtplay {

namespace {

// IEC 61966-2-1, 5.2.
float decoded(float value) {
    const float size = std::fabs(value);
    const float linear = size <= 0.04045f ? size / 12.92f : std::pow((size + 0.055f) / 1.055f, 2.4f);
    return std::copysign(linear, value);
}

/// For each of the numbers that a half can be.
std::vector<qfloat16> const& decodedHalves() {
    static const std::vector<qfloat16> table = [] {
        std::vector<qfloat16> halves;
        constexpr unsigned count = 1u << 16;
        halves.reserve(count);
        for (unsigned bits = 0; bits < count; ++bits) {
            const auto number = static_cast<std::uint16_t>(bits);
            qfloat16 half;
            std::memcpy(static_cast<void*>(&half), &number, sizeof(half));
            halves.emplace_back(decoded(static_cast<float>(half)));
        }
        return halves;
    }();
    return table;
}

/// Replaces the three colours of each pixel, which are of type `Number`.
template <class Number, class Decode>
void replaceColours(PixelBlock& block, Decode decode) {
    const size_t pixels = static_cast<size_t>(block.width) * static_cast<size_t>(block.height);
    for (size_t pixel = 0; pixel < pixels; ++pixel) {
        for (size_t channel = 0; channel < 3; ++channel) {
            std::uint8_t* const place = block.row(0) + (pixel * 4 + channel) * sizeof(Number);
            Number number;
            std::memcpy(&number, place, sizeof(number));
            const auto linear = decode(number);
            std::memcpy(place, &linear, sizeof(linear));
        }
    }
}

}  // namespace

PixelBlock linearLight(PixelBlock const& block) {
    const bool isHalf = block.format == PixelFormat::rgba16f;
    if (block.empty() || (!isHalf && block.format != PixelFormat::rgba32f)) return block;
    PixelBlock linear(block.width, block.height, block.format);
    std::memcpy(linear.row(0), block.row(0), block.sizeInBytes());
    if (isHalf) {
        std::vector<qfloat16> const& table = decodedHalves();
        replaceColours<std::uint16_t>(linear, [&table](std::uint16_t bits) { return table[bits]; });
    } else {
        replaceColours<float>(linear, decoded);
    }
    return linear;
}

}  // namespace qrtplay
