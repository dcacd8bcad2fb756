#include "sound/qrtSoundRetimer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/qrtSoundClips.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

float toneAt(double hertz, double seconds) {
    return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * hertz * seconds));
}

ComputedSound tone(double hertz) {
    return ComputedSound(1, [hertz](int64 n, int) { return toneAt(hertz, static_cast<double>(n) / studioRate); });
}

ComputedSound counting() {
    return ComputedSound(1, [](int64 n, int) { return static_cast<float>(n); });
}

SoundSpan spanOf(ExactTime const& time, ExactTime const& speed) {
    SoundSpan span;
    span.firstSample = 1000;
    span.sampleCount = 100000;
    span.time = time;
    span.speed = speed;
    return span;
}

std::vector<float> retimed(SoundSource& source, SoundSpan const& span, int64 first, int64 count) {
    SoundRetimer retimer(studioRate, 1);
    std::vector<float> samples(static_cast<size_t>(count), 99.0f);
    EXPECT_TRUE(retimer.read(source, span, first, count, samples.data()).success());
    return samples;
}

TEST(SoundRetimer, changesNothingAtNormalSpeed) {
    ComputedSound source = counting();
    EXPECT_THAT(retimed(source, spanOf({1, 1}, {1, 1}), 1000, 3), ElementsAre(48000, 48001, 48002));
    EXPECT_THAT(retimed(source, spanOf({1, 1}, {1, 1}), 1500, 2), ElementsAre(48500, 48501));
}

TEST(SoundRetimer, takesTheNearestSampleOfATimeBetweenTwo) {
    ComputedSound source = counting();
    EXPECT_THAT(retimed(source, spanOf({48001 * 10 + 3, studioRate * 10}, {1, 1}), 1000, 2), ElementsAre(48001, 48002));
    EXPECT_THAT(retimed(source, spanOf({48001 * 10 + 7, studioRate * 10}, {1, 1}), 1000, 2), ElementsAre(48002, 48003));
}

TEST(SoundRetimer, playsBackwards) {
    ComputedSound source = counting();
    EXPECT_THAT(retimed(source, spanOf({1, 1}, {-1, 1}), 1000, 3), ElementsAre(48000, 47999, 47998));
    EXPECT_THAT(retimed(source, spanOf({1, 1}, {-1, 1}), 1500, 2), ElementsAre(47500, 47499));
}

struct SpeedCase {
    const char* name;
    ExactTime speed;
};

class SoundRetimerSpeed : public ::testing::TestWithParam<SpeedCase> {};

TEST_P(SoundRetimerSpeed, playsEveryMomentWhenItIsDue) {
    ComputedSound source = tone(440);
    const ExactTime speed = GetParam().speed;
    const std::vector<float> samples = retimed(source, spanOf({10, 1}, speed), 1000, 20000);
    double worst = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double seconds = 10 + static_cast<double>(i) / studioRate * speed.seconds();
        worst = std::max(worst, std::abs(double{samples[i]} - double{toneAt(440, seconds)}));
    }
    EXPECT_LT(worst, 1e-3);
}

TEST_P(SoundRetimerSpeed, answersTheSameHoweverItIsCut) {
    ComputedSound source = tone(440);
    const SoundSpan span = spanOf({10, 3}, GetParam().speed);
    const std::vector<float> whole = retimed(source, span, 1000, 60000);
    for (auto const& [first, count] : portions(1000, 60000)) {
        // What a timeline answers about a part of the span.
        SoundSpan part = span;
        part.firstSample = first;
        part.sampleCount = count;
        part.time = span.time + ExactTime(first - span.firstSample, studioRate) * span.speed;
        const std::vector<float> samples = retimed(source, part, first, count);
        ASSERT_TRUE(std::equal(samples.begin(), samples.end(), whole.begin() + (first - 1000))) << first;
    }
}

INSTANTIATE_TEST_SUITE_P(Speeds, SoundRetimerSpeed,
                         ::testing::Values(SpeedCase{"normal", {1, 1}}, SpeedCase{"twice", {2, 1}},
                                           SpeedCase{"half", {1, 2}}, SpeedCase{"slightlyFaster", {25, 24}},
                                           SpeedCase{"slightlySlower", {24000, 25025}}, SpeedCase{"backwards", {-1, 1}},
                                           SpeedCase{"twiceBackwards", {-2, 1}}, SpeedCase{"aThirdBackwards", {-1, 3}}),
                         [](auto const& caseInfo) { return caseInfo.param.name; });

TEST(SoundRetimer, filtersOutWhatTheOutputCannotHold) {
    ComputedSound source = tone(18000);  // 36 kHz at twice the speed
    for (const float sample : retimed(source, spanOf({10, 1}, {2, 1}), 1000, 5000))
        ASSERT_NEAR(sample, 0, 1e-3);
}

TEST(SoundRetimer, isSilentForAFrozenPicture) {
    ComputedSound source = counting();
    EXPECT_THAT(retimed(source, spanOf({10, 1}, {0, 1}), 1000, 100), Each(0.0f));
}

}  // namespace
}  // namespace qrtplay
