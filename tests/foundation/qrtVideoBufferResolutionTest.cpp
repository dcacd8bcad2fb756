#include "foundation/core/qrtVideoBufferResolution.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

namespace QRT_0_81 {
namespace {

constexpr int32 largest = std::numeric_limits<int32>::max();
constexpr int32 smallest = std::numeric_limits<int32>::min();

TEST(VideoBufferResolution, isInvalidAndAllZeroByDefault) {
    const VideoBufferResolution resolution;
    EXPECT_FALSE(resolution.isValid());
    EXPECT_EQ(resolution.getWidth(), 0);
    EXPECT_EQ(resolution.getHeight(), 0);
    EXPECT_EQ(resolution.getNumChannels(), 0);
    EXPECT_EQ(resolution.getBitsPerChannel(), 0);
    EXPECT_FALSE(resolution.isFloat());
}

TEST(VideoBufferResolution, keepsItsNumbersInTheOrderGiven) {
    const VideoBufferResolution resolution(1920, 1080, 3, 16, true);
    EXPECT_TRUE(resolution.isValid());
    EXPECT_EQ(resolution.getWidth(), 1920);
    EXPECT_EQ(resolution.getHeight(), 1080);
    EXPECT_EQ(resolution.getNumChannels(), 3);
    EXPECT_EQ(resolution.getBitsPerChannel(), 16);
    EXPECT_TRUE(resolution.isFloat());
}

TEST(VideoBufferResolution, isEqualOnlyWhenAllFiveValuesAre) {
    const VideoBufferResolution resolution(64, 32, 4, 8, false);
    EXPECT_TRUE(resolution == VideoBufferResolution(64, 32, 4, 8, false));
    EXPECT_FALSE(resolution == VideoBufferResolution(65, 32, 4, 8, false));
    EXPECT_FALSE(resolution == VideoBufferResolution(64, 33, 4, 8, false));
    EXPECT_FALSE(resolution == VideoBufferResolution(64, 32, 3, 8, false));
    EXPECT_FALSE(resolution == VideoBufferResolution(64, 32, 4, 16, false));
    EXPECT_FALSE(resolution == VideoBufferResolution(64, 32, 4, 8, true));
}

TEST(VideoBufferResolution, isCopiedAndMovedByAssignment) {
    const VideoBufferResolution source(64, 32, 4, 8, true);
    VideoBufferResolution target;
    target = source;
    EXPECT_EQ(target, source);
    target = VideoBufferResolution(1, 2, 3, 16, false);
    EXPECT_EQ(target, VideoBufferResolution(1, 2, 3, 16, false));
}

TEST(VideoBufferResolution, isValidWithAnyPositiveNumbersWhateverOpenGLSupports) {
    EXPECT_TRUE(VideoBufferResolution(1, 1, 1, 1, false).isValid());
    EXPECT_TRUE(VideoBufferResolution(largest, largest, 77, 13, true).isValid());
}

using Numbers = std::tuple<int32, int32, int32, int32>;  // width, height, channels, bits per channel
class ResolutionWithABadNumber : public ::testing::TestWithParam<Numbers> {};

TEST_P(ResolutionWithABadNumber, isInvalidAndTakesNoMemory) {
    const auto [width, height, channels, bits] = GetParam();
    for (const bool isFloat : {false, true}) {
        const VideoBufferResolution resolution(width, height, channels, bits, isFloat);
        EXPECT_FALSE(resolution.isValid());
        EXPECT_EQ(resolution.getRowSize(), 0u);
        EXPECT_EQ(resolution.getBufferSize(), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Numbers, ResolutionWithABadNumber,
                         ::testing::Values(Numbers{0, 32, 4, 8}, Numbers{64, 0, 4, 8}, Numbers{64, 32, 0, 8},
                                           Numbers{64, 32, 4, 0}, Numbers{-64, 32, 4, 8}, Numbers{64, -32, 4, 8},
                                           Numbers{64, 32, -4, 8}, Numbers{64, 32, 4, -8}, Numbers{-64, -32, 4, 8},
                                           Numbers{largest, smallest, 4, 8}, Numbers{smallest, largest, 4, 8}));

struct SizeCase {
    char const* name;
    VideoBufferResolution resolution;
    uint64 rowSize;
    uint64 bufferSize;
};

class ResolutionInMemory : public ::testing::TestWithParam<SizeCase> {};

TEST_P(ResolutionInMemory, hasRowsOfThisSize) {
    EXPECT_EQ(GetParam().resolution.getRowSize(), GetParam().rowSize);
}

TEST_P(ResolutionInMemory, takesExactlyWhatAReadBackWrites) {
    EXPECT_EQ(GetParam().resolution.getBufferSize(), GetParam().bufferSize);
}

constexpr SizeCase sizeCases[] = {
    {"hd4x8", {1920, 1080, 4, 8, false}, 7680, 8294400},
    {"hd3x8", {1920, 1080, 3, 8, false}, 5760, 6220800},
    {"hd4x16", {1920, 1080, 4, 16, false}, 15360, 16588800},
    {"hd4x32Float", {1920, 1080, 4, 32, true}, 30720, 33177600},
    {"onePixel1x8IsPaddedToFourBytes", {1, 1, 1, 8, false}, 4, 4},
    {"onePixel3x8IsPaddedToFourBytes", {1, 1, 3, 8, false}, 4, 4},
    {"onePixel4x8", {1, 1, 4, 8, false}, 4, 4},
    {"oddWidth1x8", {5, 3, 1, 8, false}, 8, 24},
    {"oddWidth3x8", {5, 3, 3, 8, false}, 16, 48},
    {"oddWidth4x8", {5, 3, 4, 8, false}, 20, 60},
    {"oddWidth1x16", {5, 3, 1, 16, false}, 12, 36},
    {"oddWidth3x16", {5, 3, 3, 16, false}, 32, 96},
    {"oddWidth3x16Float", {5, 3, 3, 16, true}, 32, 96},
    {"oddWidth4x16", {5, 3, 4, 16, false}, 40, 120},
    {"oddWidth1x32", {5, 3, 1, 32, true}, 20, 60},
    {"oddWidth3x32", {5, 3, 3, 32, true}, 60, 180},
    {"oddWidth4x32", {5, 3, 4, 32, true}, 80, 240},
    {"width2Of3x8", {2, 2, 3, 8, false}, 8, 16},
    {"width3Of3x8", {3, 2, 3, 8, false}, 12, 24},
    {"width7Of3x8", {7, 2, 3, 8, false}, 24, 48},
    {"twoChannelsTravelAsFour", {5, 3, 2, 8, false}, 20, 60},
    {"fiveChannelsTravelAsFour", {5, 3, 5, 16, false}, 40, 120},
    {"tenBitsTakeOneByte", {5, 3, 4, 10, false}, 20, 60},
    {"twelveBitsTakeOneByte", {5, 3, 3, 12, false}, 16, 48},
    {"oneBitTakesOneByte", {5, 3, 1, 1, false}, 8, 24},
    {"sixtyFourBitsTakeOneByte", {5, 3, 4, 64, true}, 20, 60},
    {"aboveThirtyTwoBits", {100000, 100000, 4, 8, false}, 400000, 40000000000u},
    {"hugeSaturates", {largest, largest, 4, 32, true}, 34359738352u, std::numeric_limits<uint64>::max()},
    {"hugeThatStillFits", {largest, largest, 1, 8, false}, 2147483648u, 4611686016279904256u},
};

INSTANTIATE_TEST_SUITE_P(Sizes, ResolutionInMemory, ::testing::ValuesIn(sizeCases),
                         [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

}  // namespace
}  // namespace QRT_0_81
