#include "encode/qrtLinearLight.h"

#include <gtest/gtest.h>

#include <QFloat16>
#include <cmath>
#include <cstring>
#include <vector>

namespace qrtplay {
namespace {

PixelBlock floatsOf(std::vector<float> const& values) {
    PixelBlock block(static_cast<int32>(values.size() / 4), 1, PixelFormat::rgba32f);
    std::memcpy(block.row(0), values.data(), values.size() * sizeof(float));
    return block;
}

std::vector<float> valuesOf(PixelBlock const& block) {
    std::vector<float> values(static_cast<size_t>(block.width) * 4);
    std::memcpy(values.data(), block.row(0), values.size() * sizeof(float));
    return values;
}

TEST(LinearLight, decodesTheColoursAndLeavesAlpha) {
    const PixelBlock block = floatsOf({0.0f, 0.04f, 0.5f, 0.5f, 1.0f, 2.0f, -0.5f, 1.0f});
    const std::vector<float> linear = valuesOf(linearLight(block));
    const std::vector<float> expected = {0.0f, 0.00309598f, 0.21404114f, 0.5f, 1.0f, 4.9538464f, -0.21404114f, 1.0f};
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(linear[i], expected[i], 1e-5f) << i;
    EXPECT_EQ(valuesOf(block)[2], 0.5f) << "the block that is given stays";
}

TEST(LinearLight, decodesHalvesAsFloats) {
    const std::vector<float> values = {0.0f, 0.25f, 0.75f, 0.5f, 1.0f, 1.5f, -0.25f, 1.0f};
    PixelBlock halves(2, 1, PixelFormat::rgba16f);
    for (size_t i = 0; i < values.size(); ++i) {
        const qfloat16 half(values[i]);
        std::memcpy(halves.row(0) + i * sizeof(half), &half, sizeof(half));
    }
    const std::vector<float> expected = valuesOf(linearLight(floatsOf(values)));
    const PixelBlock linear = linearLight(halves);
    for (size_t i = 0; i < values.size(); ++i) {
        qfloat16 half;
        std::memcpy(static_cast<void*>(&half), linear.row(0) + i * sizeof(half), sizeof(half));
        EXPECT_NEAR(static_cast<float>(half), expected[i], std::fabs(expected[i]) / 1024) << i;
    }
}

TEST(LinearLight, leavesIntegersAsTheyAre) {
    PixelBlock block(1, 1, PixelFormat::rgba8);
    std::memcpy(block.row(0), "\x10\x80\xff\x40", 4);
    EXPECT_EQ(std::memcmp(linearLight(block).row(0), block.row(0), 4), 0);
    EXPECT_TRUE(linearLight(PixelBlock()).empty());
}

}  // namespace
}  // namespace qrtplay
