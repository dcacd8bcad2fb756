#include "sound/qrtSoundFileSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "base/qrtLimits.h"
#include "host/qrtSoundClips.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct DecodeCase {
    const char* name;
    /// 0 where a decoder that begins in the middle comes to the same numbers. Those of AC-3 and MP2 add noise to hide
    /// what was left out or rounded, that of Opus refers to a past that fades away.
    double tolerance;
};

class SoundFileSourceDecode : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(SoundFileSourceDecode, hasTheSamplesOfFFmpegsOwnDecode) {
    const auto file = openSoundFile(GetParam().name);
    const auto source = soundOf(GetParam().name, std::nullopt);
    ASSERT_TRUE(source);
    const std::vector<float> expected = referenceSound(GetParam().name + std::string(".f32"));
    const int channels = file->facts().channels;
    const std::vector<float> samples = readSound(*source, 0, static_cast<int64>(expected.size()) / channels, channels);
    EXPECT_LE(differenceOf(samples, expected), GetParam().tolerance);
}

TEST_P(SoundFileSourceDecode, answersTheSameInAnyOrder) {
    const auto file = openSoundFile(GetParam().name);
    const auto inOrder = soundOf(GetParam().name, std::nullopt);
    const auto inDisorder = soundOf(GetParam().name, std::nullopt);
    ASSERT_TRUE(inOrder && inDisorder);
    const int64 count = file->facts().sampleCount + 1000;
    const int channels = file->facts().channels;
    EXPECT_EQ(differenceOf(readSound(*inOrder, -500, count, channels),
                           readSoundInDisorder(*inDisorder, -500, count, channels)),
              0);
}

TEST_P(SoundFileSourceDecode, isSilentOutside) {
    const auto file = openSoundFile(GetParam().name);
    const auto source = soundOf(GetParam().name, std::nullopt);
    ASSERT_TRUE(source);
    const int channels = file->facts().channels;
    EXPECT_THAT(readSound(*source, -3000, 3000, channels), Each(0.0f));
    EXPECT_THAT(readSound(*source, file->facts().sampleCount, 70000, channels), Each(0.0f));
    EXPECT_THAT(readSound(*source, int64{1} << 61, 10, channels), Each(0.0f));
}

INSTANTIATE_TEST_SUITE_P(
    Files, SoundFileSourceDecode,
    ::testing::Values(DecodeCase{"plain.wav", 0}, DecodeCase{"plain.flac", 0}, DecodeCase{"plain.m4a", 0},
                      DecodeCase{"coarse.mkv", 0}, DecodeCase{"coarse.flv", 0}, DecodeCase{"plain.mp3", 0},
                      DecodeCase{"plain.opus", 1e-6}, DecodeCase{"opus.webm", 1e-6}, DecodeCase{"opus.mp4", 1e-6},
                      DecodeCase{"plain.ogg", 0}, DecodeCase{"vorbis.mkv", 0}, DecodeCase{"plain.ac3", 4e-3},
                      DecodeCase{"plain.aac", 0}, DecodeCase{"transport.ts", 1e-4}, DecodeCase{"plain.mov", 0},
                      DecodeCase{"unstated.mka", 0}, DecodeCase{"movie.mp4", 0}, DecodeCase{"edited.mp4", 0},
                      DecodeCase{"late.mkv", 0}, DecodeCase{"mono.wav", 0}, DecodeCase{"surround.wav", 0},
                      DecodeCase{"surround.ac3", 4e-3}),
    [](auto const& caseInfo) {
        std::string name = caseInfo.param.name;
        name.replace(name.find('.'), 1, "_");
        return name;
    });

class SoundFileSourceClick : public ::testing::TestWithParam<const char*> {};

TEST_P(SoundFileSourceClick, isHeardWhenItWasRecorded) {
    const auto source = soundOf(GetParam(), std::nullopt);
    ASSERT_TRUE(source);
    EXPECT_EQ(peakOf(readSound(*source, 0, 96000, 1)), 48000u);
}

INSTANTIATE_TEST_SUITE_P(Files, SoundFileSourceClick,
                         ::testing::Values("click.wav", "click.m4a", "click.mp3", "click.opus", "click.webm",
                                           "click.ogg"),
                         [](auto const& caseInfo) { return std::string(caseInfo.param).substr(6); });

TEST(SoundFileSource, beginsLateWhenTheSoundDoes) {
    const auto source = soundOf("late.mkv", ExactTime());
    ASSERT_TRUE(source);
    const std::vector<float> expected = referenceSound("late.mkv.f32");
    EXPECT_THAT(readSound(*source, 0, 24000, 2), Each(0.0f));
    EXPECT_EQ(differenceOf(readSound(*source, 24000, 144000, 2), expected), 0);
}

TEST(SoundFileSource, countsFromTheTimeThatItIsGiven) {
    const auto source = soundOf("plain.wav", ExactTime(1, 2));
    ASSERT_TRUE(source);
    const std::vector<float> expected = referenceSound("plain.wav.f32");
    EXPECT_EQ(differenceOf(readSound(*source, -24000, 144000, 2), expected), 0);
}

TEST(SoundFileSource, keepsAGapSilent) {
    const auto source = soundOf("gap.mkv", std::nullopt);
    ASSERT_TRUE(source);
    std::vector<float> expected = referenceSound("plain.wav.f32");
    std::fill(expected.begin() + 48000 * 2, expected.begin() + 72000 * 2, 0.0f);
    EXPECT_EQ(differenceOf(readSound(*source, 0, 144000, 2), expected), 0);
}

TEST(SoundFileSource, mapsChannelsAsFFmpegDoes) {
    for (const char* name : {"mono.wav", "surround.wav", "surround.ac3"}) {
        const auto source = soundOf(name, std::nullopt, 2);
        ASSERT_TRUE(source);
        const std::vector<float> expected = referenceSound(name + std::string(".stereo.f32"));
        const auto count = static_cast<int64>(expected.size() / 2);
        // The decoder of AC-3 adds noise of its own.
        const double tolerance = name == std::string("surround.ac3") ? 4e-3 : 1e-6;
        EXPECT_LE(differenceOf(readSound(*source, 0, count, 2), expected), tolerance) << name;
    }
}

TEST(SoundFileSource, decodesNoPacketLargerThanTheLimit) {
    std::vector<float> samples(size_t{480} * 2);
    for (const int64 length : {maxPacketSamples / 2, maxPacketSamples / 2 + 1}) {
        const std::string name = "packet-" + std::to_string(length) + ".mkv";
        const auto source = soundOf(name, std::nullopt);
        ASSERT_TRUE(source);
        const std::string refused = soundClipPath(name) + ": its sound at 0.000 s cannot be decoded";
        EXPECT_EQ(source->read(0, 480, samples.data()).message(), length * 2 > maxPacketSamples ? refused : "");
    }
}

TEST(SoundFileSource, tellsOnceThatItsFileIsCutOff) {
    const auto file = openSoundFile("truncated.mp4");
    const auto source = soundOf("truncated.mp4", std::nullopt);
    ASSERT_TRUE(source);
    const int64 count = file->facts().sampleCount;
    std::vector<float> samples(size_t{144000} * 2, 99.0f);
    const Outcome outcome = source->read(0, 144000, samples.data());
    EXPECT_THAT(outcome.message(), StartsWith(soundClipPath("truncated.mp4") + ": "));
    EXPECT_THAT(outcome.message(), HasSubstr("cut off"));
    EXPECT_TRUE(source->read(0, 144000, samples.data()).success());

    std::vector<float> expected = referenceSound("movie.mp4.f32");
    expected.resize(samples.size());
    // The last packet itself may be incomplete.
    const auto whole = static_cast<std::ptrdiff_t>((count - 2048) * 2);
    ASSERT_GT(whole, 48000 * 2);
    EXPECT_TRUE(std::equal(samples.begin(), samples.begin() + whole, expected.begin()));
    EXPECT_TRUE(std::all_of(samples.begin() + count * 2, samples.end(), [](float sample) { return sample == 0; }));
}

TEST(SoundFileSource, isSilentWhereItsFileIsDamaged) {
    const auto source = soundOf("damaged.flac", std::nullopt);
    ASSERT_TRUE(source);
    const std::vector<float> expected = referenceSound("plain.flac.f32");
    std::vector<float> samples(expected.size(), 99.0f);
    const Outcome outcome = source->read(0, 144000, samples.data());
    EXPECT_THAT(outcome.message(), StartsWith(soundClipPath("damaged.flac") + ": its sound at 1."));

    const auto damaged = std::mismatch(samples.begin(), samples.end(), expected.begin()).first;
    const auto after = std::mismatch(samples.rbegin(), samples.rend(), expected.rbegin()).first.base();
    ASSERT_LT(damaged, after);
    EXPECT_LE(after - damaged, 2 * 4608 * 2);  // two of the format's packets
    EXPECT_TRUE(std::all_of(damaged, after, [](float sample) { return sample == 0; }));
}

}  // namespace
}  // namespace qrtplay
