#include "viewer/picture/qrtEightBitImage.h"

#include <QFloat16>
#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

namespace qrtplay {

namespace {

constexpr size_t blockChannels = 4;

template <class Channel>
float unitOf(Channel value) {
    if constexpr (std::is_integral_v<Channel>)
        return static_cast<float>(value) / static_cast<float>(std::numeric_limits<Channel>::max());
    else
        return static_cast<float>(value);
}

std::uint8_t byteOf(float value) {
    return static_cast<std::uint8_t>(value > 0 ? std::min(value, 1.0f) * 255 + 0.5f : 0);  // NaN is 0 as well
}

template <class Channel>
void convertRow(std::uint8_t const* from, int width, std::uint8_t* to) {
    for (int x = 0; x < width; ++x, to += blockChannels) {
        Channel pixel[blockChannels];
        std::memcpy(pixel, from + static_cast<size_t>(x) * sizeof(pixel), sizeof(pixel));
        const float alpha = std::min(unitOf(pixel[3]), 1.0f);
        for (size_t i = 0; i < 3; ++i)
            to[i] = byteOf(alpha > 0 ? unitOf(pixel[i]) / alpha : 0);
        to[3] = byteOf(alpha);
    }
}

}  // namespace

QImage eightBitImage(PixelBlock const& block) {
    if (block.empty()) return QImage();
    QImage image(block.width, block.height, QImage::Format_RGBA8888);
    for (int y = 0; y < image.height(); ++y) {
        switch (block.format) {
            case PixelFormat::rgba8: convertRow<std::uint8_t>(block.row(y), block.width, image.scanLine(y)); break;
            case PixelFormat::rgba16: convertRow<std::uint16_t>(block.row(y), block.width, image.scanLine(y)); break;
            case PixelFormat::rgba16f: convertRow<qfloat16>(block.row(y), block.width, image.scanLine(y)); break;
            case PixelFormat::rgba32f: convertRow<float>(block.row(y), block.width, image.scanLine(y)); break;
        }
    }
    return image;
}

}  // namespace qrtplay
