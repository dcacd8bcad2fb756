#include "sound/qrtResampledSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "host/qrtSoundClips.h"
#include "sound/qrtOpenSound.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::FloatEq;
using ::testing::HasSubstr;

std::unique_ptr<ResampledSource> resampled(int inputRate, int outputRate, int channels, ComputedSound::Value value) {
    return std::make_unique<ResampledSource>(std::make_unique<ComputedSound>(channels, std::move(value)), inputRate,
                                             outputRate, channels);
}

struct RateCase {
    int inputRate;
    int outputRate;
};

class ResampledSourceRates : public ::testing::TestWithParam<RateCase> {};

TEST_P(ResampledSourceRates, keepsAnImpulseAtItsTime) {
    const auto [inputRate, outputRate] = GetParam();
    const double ratio = static_cast<double>(outputRate) / inputRate;
    for (const int64 impulse : {0, 1, 7, 100, 5000, 33333, 100001}) {
        const auto source =
            resampled(inputRate, outputRate, 1, [impulse](int64 n, int) { return n == impulse ? 1.0f : 0.0f; });
        const auto expected = static_cast<int64>(std::lround(static_cast<double>(impulse) * ratio));
        const std::vector<float> samples = readSound(*source, expected - 200, 400, 1);
        // An impulse halfway between two output samples is as strong in both.
        EXPECT_NEAR(static_cast<double>(peakOf(samples)) + static_cast<double>(expected) - 200,
                    static_cast<double>(impulse) * ratio, 0.5001)
            << impulse;
    }
}

TEST_P(ResampledSourceRates, keepsATone) {
    const auto [inputRate, outputRate] = GetParam();
    const auto tone = [](int64 n, int rate) {
        return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * 997 * static_cast<double>(n) / rate));
    };
    const auto source =
        resampled(inputRate, outputRate, 1, [&, rate = inputRate](int64 n, int) { return tone(n, rate); });
    const std::vector<float> samples = readSound(*source, -20000, 60000, 1);
    double worst = 0;
    for (int64 n = -20000; n < 40000; ++n)
        worst =
            std::max(worst, std::abs(double{samples[static_cast<size_t>(n + 20000)]} - double{tone(n, outputRate)}));
    EXPECT_LT(worst, 2e-4);
}

TEST_P(ResampledSourceRates, answersTheSameInAnyOrder) {
    const auto [inputRate, outputRate] = GetParam();
    const auto noise = [](int64 n, int c) { return static_cast<float>((n * 7919 + c * 104729) % 1009) / 1009.0f; };
    const auto inOrder = resampled(inputRate, outputRate, 2, noise);
    const auto inDisorder = resampled(inputRate, outputRate, 2, noise);
    EXPECT_EQ(differenceOf(readSound(*inOrder, -30000, 150000, 2), readSoundInDisorder(*inDisorder, -30000, 150000, 2)),
              0);
}

INSTANTIATE_TEST_SUITE_P(Rates, ResampledSourceRates,
                         ::testing::Values(RateCase{44100, 48000}, RateCase{48000, 44100}, RateCase{8000, 48000},
                                           RateCase{96000, 48000}, RateCase{22050, 48000}, RateCase{44101, 48000}),
                         [](auto const& caseInfo) {
                             return std::to_string(caseInfo.param.inputRate) + "To" +
                                    std::to_string(caseInfo.param.outputRate);
                         });

TEST(ResampledSource, keepsChannelsApart) {
    const auto source = resampled(44100, 48000, 2, [](int64, int c) { return c == 0 ? 0.25f : -0.5f; });
    const std::vector<float> samples = readSound(*source, 1000, 1000, 2);
    for (size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(samples[i], i % 2 == 0 ? 0.25f : -0.5f, 1e-4) << i;
}

TEST(OpenSound, resamplesAFileToTheOutputsRate) {
    std::unique_ptr<SoundSource> source;
    ASSERT_TRUE(openSound(soundClipPath("click44.wav"), ExactTime(), 48000, 1, source).success());
    ASSERT_TRUE(source);
    EXPECT_EQ(peakOf(readSound(*source, 0, 96000, 1)), 48000u);
    ASSERT_TRUE(openSound(soundClipPath("click.wav"), ExactTime(1, 4), 44100, 1, source).success());
    ASSERT_TRUE(source);
    EXPECT_EQ(peakOf(readSound(*source, 0, 88200, 1)), 44100u * 3 / 4);
}

TEST(OpenSound, leavesAFileOfTheSameRateAsItIs) {
    std::unique_ptr<SoundSource> source;
    ASSERT_TRUE(openSound(soundClipPath("plain.wav"), std::nullopt, 48000, 2, source).success());
    ASSERT_TRUE(source);
    EXPECT_EQ(differenceOf(readSound(*source, 0, 144000, 2), referenceSound("plain.wav.f32")), 0);
}

TEST(OpenSound, givesNoSourceForAFileWithoutSound) {
    std::unique_ptr<SoundSource> source;
    EXPECT_TRUE(openSound(soundClipPath("silent.mp4"), std::nullopt, 48000, 2, source).success());
    EXPECT_FALSE(source);
    EXPECT_THAT(openSound(soundClipPath("nowhere.wav"), std::nullopt, 48000, 2, source).message(),
                HasSubstr("nowhere.wav: no such file"));
}

}  // namespace
}  // namespace qrtplay
