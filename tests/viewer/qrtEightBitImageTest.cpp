#include "viewer/picture/qrtEightBitImage.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QFloat16>
#include <array>
#include <cmath>
#include <cstring>

namespace qrtplay {
namespace {

template <class Channel>
PixelBlock onePixel(PixelFormat format, std::array<Channel, 4> const& channels) {
    PixelBlock block(1, 1, format);
    std::memcpy(block.row(0), channels.data(), sizeof(channels));
    return block;
}

QColor colourOf(PixelBlock const& block) {
    return eightBitImage(block).pixelColor(0, 0);
}

TEST(EightBitImage, nothingOfAnEmptyBlock) {
    EXPECT_TRUE(eightBitImage(PixelBlock()).isNull());
}

TEST(EightBitImage, keepsEveryOpaqueValueOfEightAndSixteenBits) {
    for (int value = 0; value < 256; ++value) {
        const auto eight = static_cast<std::uint8_t>(value);
        const auto sixteen = static_cast<std::uint16_t>(value * 0x101);
        const auto block8 = onePixel<std::uint8_t>(PixelFormat::rgba8, {eight, eight, eight, 0xff});
        const auto block16 = onePixel<std::uint16_t>(PixelFormat::rgba16, {sixteen, sixteen, sixteen, 0xffff});
        EXPECT_EQ(colourOf(block8), QColor(value, value, value));
        EXPECT_EQ(colourOf(block16), QColor(value, value, value));
    }
}

TEST(EightBitImage, roundsAndClipsFloats) {
    EXPECT_EQ(colourOf(onePixel<float>(PixelFormat::rgba32f, {0.5f, -1, 7, 1})), QColor(128, 0, 255));
    EXPECT_EQ(colourOf(onePixel<float>(PixelFormat::rgba32f, {std::nanf(""), HUGE_VALF, 0, 4})), QColor(0, 255, 0));
    const auto half = [](float value) { return qfloat16(value); };
    EXPECT_EQ(colourOf(onePixel<qfloat16>(PixelFormat::rgba16f, {half(0.25f), half(1), half(0), half(1)})),
              QColor(64, 255, 0));
}

TEST(EightBitImage, takesAlphaOutOfTheColours) {
    EXPECT_EQ(colourOf(onePixel<float>(PixelFormat::rgba32f, {0.25f, 0.5f, 0, 0.5f})), QColor(128, 255, 0, 128));
    EXPECT_EQ(colourOf(onePixel<float>(PixelFormat::rgba32f, {1, 1, 1, 0})), QColor(0, 0, 0, 0));
}

TEST(EightBitImage, keepsPlaces) {
    PixelBlock block(3, 2, PixelFormat::rgba8);
    std::memset(block.row(0), 0, block.sizeInBytes());
    const std::uint8_t red[4] = {255, 0, 0, 255};
    std::memcpy(block.row(1) + 2 * 4, red, sizeof(red));
    const QImage image = eightBitImage(block);
    ASSERT_EQ(image.size(), QSize(3, 2));
    EXPECT_EQ(image.pixelColor(2, 1), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(2, 0).alpha(), 0);
}

}  // namespace
}  // namespace qrtplay
