#include "sound/qrtHostAudioFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;

template <class Sample>
std::vector<Sample> converted(SampleKind kind, std::vector<float> const& samples) {
    const HostAudioFormat format(48000, 1, kind);
    // One byte off, as nothing promises that a host's buffer is aligned, and one more that must stay as it is.
    std::vector<char> bytes(format.getSizeInBytes(samples.size()) + 2, 'x');
    convertSamples(samples.data(), samples.size(), format, bytes.data() + 1);
    EXPECT_EQ(bytes.front(), 'x');
    EXPECT_EQ(bytes.back(), 'x');
    std::vector<Sample> result((bytes.size() - 2) / sizeof(Sample));
    std::memcpy(result.data(), bytes.data() + 1, result.size() * sizeof(Sample));
    return result;
}

TEST(HostAudioFormat, countsTheBytesOfAllChannels) {
    EXPECT_EQ(HostAudioFormat(48000, 2, SampleKind::float32).getSizeInBytes(10), 80u);
    EXPECT_EQ(HostAudioFormat(48000, 2, SampleKind::int16).getSizeInBytes(10), 40u);
    EXPECT_EQ(HostAudioFormat(48000, 8, SampleKind::int24_in_32).getSizeInBytes(10), 320u);
    EXPECT_EQ(HostAudioFormat(48000, 1, SampleKind::int32).getSizeInBytes(0), 0u);
    EXPECT_EQ(HostAudioFormat(44100, 2, SampleKind::int16).getSampleRate(), 44100);
}

TEST(HostAudioFormat, keepsFloatsAsTheyAre) {
    EXPECT_THAT(converted<float>(SampleKind::float32, {0.0f, -1.5f, 2.5f}), ElementsAre(0.0f, -1.5f, 2.5f));
}

TEST(HostAudioFormat, roundsToTheNearestInteger) {
    EXPECT_THAT(converted<int16_t>(SampleKind::int16, {0.0f, 0.5f, -0.5f, 1.4f / 32768, 1.6f / 32768, -1.6f / 32768}),
                ElementsAre(0, 16384, -16384, 1, 2, -2));
    EXPECT_THAT(converted<int32_t>(SampleKind::int24_in_32, {0.5f, -1.6f / 8388608}), ElementsAre(0x40000000, -512));
    EXPECT_THAT(converted<int32_t>(SampleKind::int32, {0.5f, -0.25f}), ElementsAre(0x40000000, -0x20000000));
}

TEST(HostAudioFormat, clipsWhatLiesBeyondFullScale) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> loud{1.0f, -1.0f, 1.5f, -1.5f, infinity, -infinity};
    EXPECT_THAT(converted<int16_t>(SampleKind::int16, loud), ElementsAre(32767, -32768, 32767, -32768, 32767, -32768));
    EXPECT_THAT(converted<int32_t>(SampleKind::int24_in_32, loud),
                ElementsAre(0x7fffff00, INT32_MIN, 0x7fffff00, INT32_MIN, 0x7fffff00, INT32_MIN));
    EXPECT_THAT(converted<int32_t>(SampleKind::int32, loud),
                ElementsAre(INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN));
}

TEST(HostAudioFormat, isSilentWhereThereIsNoNumber) {
    EXPECT_THAT(converted<int16_t>(SampleKind::int16, {std::nanf("")}), ElementsAre(0));
    EXPECT_THAT(converted<float>(SampleKind::float32, {std::nanf("")}), ElementsAre(0.0f));
}

}  // namespace
}  // namespace qrtplay
