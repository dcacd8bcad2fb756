#include "playback/qrtSoundOrder.h"

#include <gtest/gtest.h>

#include <vector>

#include "viewer/qrtSoundArithmetic.h"

namespace qrtplay {
namespace {

SharedPtr<PlayParams> orderOf(int64 first, int64 last, int64 current, int step, PlayParams::PlayMode mode) {
    const Rational rate(24, 1);
    auto order = PlayParams::create(Time(0, rate), Time(0, rate), Time(1, rate), rate, step, mode, PlayParams::all);
    order->setStartFrame(first);
    order->setEndFrame(last);
    order->setCurrentFrame(current);
    return order;
}

/// For every sample of the stream the sample of the timeline, or `silent`.
std::vector<int64> samplesOf(SoundOrder& order, int64 count) {
    std::vector<int64> samples;
    constexpr int64 most = 700;  // neither frames nor runs are multiples of it
    while (static_cast<int64>(samples.size()) < count) {
        const auto position = static_cast<int64>(samples.size());
        const SoundOrder::Piece piece = order.pieceFrom(position, std::min(most, count - position));
        EXPECT_GE(piece.count, 1);
        EXPECT_LE(piece.count, std::min(most, count - position));
        for (int64 i = 0; i < piece.count; ++i)
            samples.push_back(piece.first ? *piece.first + i : silent);
    }
    return samples;
}

class SoundOrderAtRate : public ::testing::TestWithParam<Rational> {};

TEST_P(SoundOrderAtRate, goesThroughARunWithoutASeamAndEndsWithIt) {
    const Rational rate = GetParam();
    const auto params = orderOf(10, 60, 13, 1, PlayParams::single);
    SoundOrder order(*params, rate, sampleRate);
    const int64 end = sampleOf(48, rate);  // frames 13 to 60
    const std::vector<int64> samples = samplesOf(order, end + 5000);
    for (int64 i = 0; i < end + 5000; ++i)
        ASSERT_EQ(samples[static_cast<size_t>(i)], i < end ? sampleOf(13, rate) + i : silent) << i;
}

TEST_P(SoundOrderAtRate, jumpsInALoopAtTheFirstSampleOfTheTick) {
    const Rational rate = GetParam();
    const auto params = orderOf(5, 11, 8, 1, PlayParams::loop);
    SoundOrder order(*params, rate, sampleRate);
    const std::vector<int64> samples = samplesOf(order, sampleOf(100, rate));
    int64 runTick = 0;
    int64 runFrame = 8;
    for (int64 tick = 0; tick < 100; ++tick) {
        if (tick >= 4 && (tick - 4) % 7 == 0) {
            runTick = tick;
            runFrame = 5;
        }
        for (int64 i = sampleOf(tick, rate); i < sampleOf(tick + 1, rate); ++i)
            ASSERT_EQ(samples[static_cast<size_t>(i)], sampleOf(runFrame, rate) + i - sampleOf(runTick, rate)) << tick;
    }
}

TEST_P(SoundOrderAtRate, isStillOnTheGridAfterHours) {
    const Rational rate = GetParam();
    const auto params = orderOf(5, 11, 5, 1, PlayParams::loop);
    SoundOrder order(*params, rate, sampleRate);
    constexpr int64 tick = 7 * 35'000;  // more than two hours at 30 frames per second
    const int64 begin = sampleOf(tick, rate);
    const SoundOrder::Piece before = order.pieceFrom(begin - 1, 100);
    EXPECT_EQ(before.count, 1);
    EXPECT_EQ(before.first, sampleOf(5, rate) + begin - 1 - sampleOf(tick - 7, rate));
    const SoundOrder::Piece after = order.pieceFrom(begin, 100);
    EXPECT_EQ(after.count, 100);
    EXPECT_EQ(after.first, sampleOf(5, rate));
}

TEST_P(SoundOrderAtRate, isStillTheSoundOfItsFrameAfterHoursWithoutAJump) {
    const Rational rate = GetParam();
    const auto params = orderOf(0, 10'000'000, 3, 1, PlayParams::single);
    SoundOrder order(*params, rate, sampleRate);
    constexpr int64 tick = 250'001;
    const SoundOrder::Piece piece = order.pieceFrom(sampleOf(tick, rate), 1);
    ASSERT_TRUE(piece.first);
    EXPECT_NEAR(static_cast<double>(*piece.first), static_cast<double>(sampleOf(3 + tick, rate)), 1);
}

TEST_P(SoundOrderAtRate, isSilentWhileAPingPongRunsBack) {
    const Rational rate = GetParam();
    const auto params = orderOf(20, 23, 22, 1, PlayParams::ping_pong);
    SoundOrder order(*params, rate, sampleRate);
    // 22 23 | 22 21 20 | 21 22 23 | 22 21 20 | 21: an end is shown once, on the way to it.
    const std::vector<int64> begins = {22, 22, silent, silent, silent, 21, 21, 21, silent, silent, silent, 21};
    const std::vector<int64> runTicks = {0, 0, 0, 0, 0, 5, 5, 5, 0, 0, 0, 11};
    const std::vector<int64> samples = samplesOf(order, sampleOf(12, rate));
    for (size_t tick = 0; tick < begins.size(); ++tick) {
        const auto number = static_cast<int64>(tick);
        for (int64 i = sampleOf(number, rate); i < sampleOf(number + 1, rate); ++i) {
            const int64 expected =
                begins[tick] == silent ? silent : sampleOf(begins[tick], rate) + i - sampleOf(runTicks[tick], rate);
            ASSERT_EQ(samples[static_cast<size_t>(i)], expected) << tick;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, SoundOrderAtRate,
                         ::testing::Values(Rational(24, 1), Rational(25, 1), Rational(24000, 1001),
                                           Rational(30000, 1001)),
                         [](const auto& caseInfo) {
                             return std::to_string(caseInfo.param.getNumerator()) + "_" +
                                    std::to_string(caseInfo.param.getDenominator());
                         });

struct SilentCase {
    const char* name;
    int step;
    PlayParams::PlayMode mode;
    Rational rate;
};
class SilentOrder : public ::testing::TestWithParam<SilentCase> {};

TEST_P(SilentOrder, hasNoSound) {
    const auto params = orderOf(0, 100, 50, GetParam().step, GetParam().mode);
    SoundOrder order(*params, GetParam().rate, sampleRate);
    for (const int64 sample : samplesOf(order, 20'000))
        ASSERT_EQ(sample, silent);
}
INSTANTIATE_TEST_SUITE_P(Orders, SilentOrder,
                         ::testing::Values(SilentCase{"backwards", -1, PlayParams::single, {24, 1}},
                                           SilentCase{"backwardsInALoop", -1, PlayParams::loop, {24, 1}},
                                           SilentCase{"everySecondFrame", 2, PlayParams::loop, {24, 1}},
                                           SilentCase{"everySecondFrameToAndFro", 2, PlayParams::ping_pong, {24, 1}},
                                           SilentCase{"atAStandstill", 0, PlayParams::loop, {24, 1}},
                                           SilentCase{"withoutARate", 1, PlayParams::loop, {0, 1}}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(SoundOrder, beginsALoopOfOneFrameAgainAtEachTick) {
    const auto params = orderOf(7, 7, 7, 1, PlayParams::loop);
    SoundOrder order(*params, Rational(24, 1), sampleRate);
    const std::vector<int64> samples = samplesOf(order, 10'000);
    for (size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(samples[i], 14'000 + static_cast<int64>(i % 2000));
}

TEST(SoundOrder, leavesTheOrderOfItsCallerAlone) {
    const auto params = orderOf(0, 100, 50, 1, PlayParams::loop);
    SoundOrder order(*params, Rational(24, 1), sampleRate);
    (void)order.pieceFrom(100'000, 1);
    EXPECT_EQ(params->getCurrentFrame(), 50);
}

}  // namespace
}  // namespace qrtplay
