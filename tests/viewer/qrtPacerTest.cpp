#include "playback/qrtPacer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace qrtplay {
namespace {

constexpr int64 aSecond = 1'000'000'000;
constexpr int64 startAt = 5 * aSecond;
const Rational tenASecond(10, 1);
constexpr int64 frameTime = aSecond / 10;  // at `tenASecond`

SharedPtr<PlayParams> orderOf(int64 first, int64 last, int64 current, int step, PlayParams::PlayMode mode) {
    const Rational rate(24, 1);
    SharedPtr<PlayParams> order =
        PlayParams::create(Time(0, rate), Time(0, rate), Time(1, rate), rate, step, mode, PlayParams::all);
    order->setStartFrame(first);
    order->setEndFrame(last);
    order->setCurrentFrame(current);
    return order;
}

Pacer pacerOf(PlayParams::PlayMode mode, PacePolicy policy, int64 last = 99, int step = 1) {
    return Pacer(*orderOf(0, last, step > 0 ? 0 : last, step, mode), tenASecond, policy, startAt);
}

/// A time of the run, in frame times.
int64 at(double frames) {
    return startAt + std::llround(frames * static_cast<double>(frameTime));
}

/// Shows `count` frames on their ticks and tells which they were.
std::vector<int64> playInTime(Pacer& pacer, int count) {
    std::vector<int64> shown;
    for (int tick = 0; tick < count && pacer.next(); ++tick) {
        shown.push_back(pacer.next()->frame);
        EXPECT_EQ(pacer.hasCome(pacer.next()->dueAt, 0), Pacer::Verdict::show);
    }
    return shown;
}

class PacerGrid : public ::testing::TestWithParam<Rational> {};

TEST_P(PacerGrid, isExactForTwoHours) {
    const Rational rate = GetParam();
    const auto numerator = static_cast<long double>(rate.getNumerator());
    const auto denominator = static_cast<long double>(rate.getDenominator());
    const int64 ticks = 2 * 3600 * (int64{rate.getNumerator()} / rate.getDenominator() + 1);
    Pacer pacer(*orderOf(0, 47, 0, 1, PlayParams::loop), rate, PacePolicy::real_time, startAt);
    for (int64 tick = 0; tick < ticks; ++tick) {
        const auto next = pacer.next();
        ASSERT_TRUE(next.has_value());
        const int64 exact = std::llround(static_cast<long double>(tick) * denominator * aSecond / numerator);
        ASSERT_EQ(next->dueAt, startAt + exact) << tick;
        ASSERT_EQ(next->number, tick);
        ASSERT_EQ(next->frame, tick % 48);
        ASSERT_EQ(pacer.hasCome(next->dueAt, 0), Pacer::Verdict::show);
    }
    EXPECT_EQ(pacer.counts().shown, ticks);
    EXPECT_EQ(pacer.counts().skipped, 0);
    EXPECT_EQ(pacer.counts().late, 0);
}

TEST_P(PacerGrid, hasOneFrameTime) {
    const Pacer pacer(*orderOf(0, 47, 0, 1, PlayParams::loop), GetParam(), PacePolicy::real_time, startAt);
    EXPECT_EQ(pacer.frameTime(), std::llround(static_cast<double>(aSecond) / GetParam().getValue()));
}

INSTANTIATE_TEST_SUITE_P(Rates, PacerGrid,
                         ::testing::Values(Rational(24000, 1001), Rational(30000, 1001), Rational(25, 1),
                                           Rational(120000, 1001), Rational(12, 5)),
                         [](const auto& caseInfo) {
                             return std::to_string(caseInfo.param.getNumerator()) + "_" +
                                    std::to_string(caseInfo.param.getDenominator());
                         });

struct OrderCase {
    const char* name;
    PlayParams::PlayMode mode;
    int64 first, last, current;
    int step;
    std::vector<int64> frames;  // the first ten
};

class PacerOrder : public ::testing::TestWithParam<OrderCase> {};

TEST_P(PacerOrder, isThatOfThePlayParameters) {
    OrderCase const& row = GetParam();
    for (const PacePolicy policy : {PacePolicy::every_frame, PacePolicy::real_time}) {
        Pacer pacer(*orderOf(row.first, row.last, row.current, row.step, row.mode), tenASecond, policy, startAt);
        EXPECT_EQ(playInTime(pacer, 10), row.frames);
        EXPECT_EQ(pacer.next().has_value(), row.mode != PlayParams::single);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, PacerOrder,
    ::testing::Values(
        OrderCase{"singleEnds", PlayParams::single, 3, 6, 4, 1, {4, 5, 6}},
        OrderCase{"singleBackwards", PlayParams::single, 3, 6, 5, -1, {5, 4, 3}},
        OrderCase{"singleLeavesOutWhatTheStepPasses", PlayParams::single, 0, 6, 0, 4, {0, 4}},
        OrderCase{"loopBeginsAgain", PlayParams::loop, 3, 6, 5, 1, {5, 6, 3, 4, 5, 6, 3, 4, 5, 6}},
        OrderCase{"loopBackwards", PlayParams::loop, 3, 6, 4, -1, {4, 3, 6, 5, 4, 3, 6, 5, 4, 3}},
        OrderCase{"loopByTwo", PlayParams::loop, 0, 5, 1, 2, {1, 3, 5, 0, 2, 4, 0, 2, 4, 0}},
        OrderCase{"pingPongShowsAnEndOnce", PlayParams::ping_pong, 0, 3, 2, 1, {2, 3, 2, 1, 0, 1, 2, 3, 2, 1}},
        OrderCase{"pingPongBackwards", PlayParams::ping_pong, 0, 3, 1, -1, {1, 0, 1, 2, 3, 2, 1, 0, 1, 2}},
        OrderCase{"pingPongOnOneFrame", PlayParams::ping_pong, 7, 7, 7, 1, {7, 7, 7, 7, 7, 7, 7, 7, 7, 7}}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(Pacer, leavesTheParametersOfTheCallerAlone) {
    const auto order = orderOf(0, 9, 4, 1, PlayParams::loop);
    Pacer pacer(*order, tenASecond, PacePolicy::real_time, startAt);
    playInTime(pacer, 3);
    EXPECT_EQ(order->getCurrentFrame(), 4);
    EXPECT_EQ(pacer.order().getCurrentFrame(), 7);
}

TEST(Pacer, keepsAPictureUntilItsTick) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    EXPECT_EQ(pacer.hasCome(at(0) - 1, 0), Pacer::Verdict::early);
    EXPECT_EQ(pacer.counts().shown, 0);
    EXPECT_EQ(pacer.next()->frame, 0);
    EXPECT_EQ(pacer.hasCome(at(0), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->frame, 1);
    EXPECT_EQ(pacer.hasCome(at(1) - 1, 0), Pacer::Verdict::early);
}

TEST(Pacer, showsAPictureInTimeUntilTheNextOneIsDue) {
    for (const PacePolicy policy : {PacePolicy::every_frame, PacePolicy::real_time}) {
        Pacer pacer = pacerOf(PlayParams::loop, policy);
        EXPECT_EQ(pacer.hasCome(at(1) - 1, 0), Pacer::Verdict::show);
        EXPECT_EQ(pacer.counts().late, 0);
        EXPECT_EQ(pacer.next()->dueAt, at(1));
    }
}

TEST(Pacer, answersEarlyAfterTheEnd) {
    Pacer pacer = pacerOf(PlayParams::single, PacePolicy::real_time, 0);
    playInTime(pacer, 1);
    ASSERT_FALSE(pacer.next().has_value());
    EXPECT_EQ(pacer.hasCome(at(9), 0), Pacer::Verdict::early);
    pacer.giveUp(at(9), 0);
    EXPECT_EQ(pacer.counts().shown, 1);
    EXPECT_EQ(pacer.counts().skipped, 0);
}

TEST(PacerInRealTime, skipsAPictureThatComesTooLate) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    EXPECT_EQ(pacer.hasCome(at(1), 0), Pacer::Verdict::skip);
    EXPECT_EQ(pacer.counts().skipped, 1);
    EXPECT_EQ(pacer.counts().shown, 0);
    EXPECT_EQ(pacer.next()->frame, 1);
    EXPECT_EQ(pacer.hasCome(at(1), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.counts().late, 0);
}

TEST(PacerInRealTime, asksForTheFrameThatCanBeHadInTime) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    // Ready at 3.4, which is nearer to the due time of frame 3 than to that of the next one.
    EXPECT_EQ(pacer.hasCome(at(0), frameTime * 34 / 10), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->frame, 3);
    EXPECT_EQ(pacer.next()->dueAt, at(3));
    EXPECT_EQ(pacer.counts().skipped, 2);
    EXPECT_EQ(pacer.hasCome(at(3.4), frameTime * 34 / 10), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->frame, 7);
    EXPECT_EQ(pacer.counts().skipped, 5);
    EXPECT_EQ(pacer.counts().late, 0);
}

TEST(PacerInRealTime, countsEveryTickOnce) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time, 9);
    int64 now = at(0);
    constexpr int64 fetchTimes[] = {10, 35, 5, 260, 120, 0, 90, 410, 30, 77};  // ms
    for (int turn = 0; turn < 500; ++turn) {
        const int64 fetchTime = fetchTimes[turn % 10] * 1'000'000;
        now = std::max(now + fetchTime, pacer.next()->dueAt);
        const int64 before = pacer.next()->number;
        ASSERT_EQ(pacer.next()->frame, before % 10);
        ASSERT_NE(pacer.hasCome(now, fetchTime), Pacer::Verdict::early);
        ASSERT_GT(pacer.next()->number, before);
        ASSERT_EQ(pacer.counts().shown + pacer.counts().skipped, pacer.next()->number);
        // Never further from the clock than the next fetch and the frame under way.
        ASSERT_LE(pacer.next()->dueAt, now + fetchTime + frameTime);
    }
    EXPECT_GT(pacer.counts().skipped, 0);
}

TEST(PacerInRealTime, showsSomethingWhenAllIsLate) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    // Every fetch takes a frame time longer than the one before it: no picture is ever in time.
    int64 now = at(0);
    int64 mostSkipped = 0;
    int64 skipped = 0;
    for (int64 turn = 0; turn < 80; ++turn) {
        now = pacer.next()->dueAt + frameTime;
        if (pacer.hasCome(now, 0) == Pacer::Verdict::show)
            skipped = 0;
        else
            mostSkipped = std::max(mostSkipped, ++skipped);
    }
    EXPECT_EQ(mostSkipped, 7);
    EXPECT_EQ(pacer.counts().shown, 10);
    EXPECT_EQ(pacer.counts().late, 10);
    EXPECT_EQ(pacer.counts().skipped, 70);
}

TEST(PacerInRealTime, catchesUpAtOnceAfterALongPause) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    EXPECT_EQ(pacer.hasCome(at(0), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.hasCome(at(1000.2), 0), Pacer::Verdict::skip);
    EXPECT_EQ(pacer.next()->number, 1000);
    EXPECT_EQ(pacer.counts().skipped, 999);
}

TEST(PacerInRealTime, endsOnTheLastFrameHoweverLate) {
    Pacer pacer = pacerOf(PlayParams::single, PacePolicy::real_time, 5);
    EXPECT_EQ(pacer.hasCome(at(0), 100 * frameTime), Pacer::Verdict::show);
    ASSERT_TRUE(pacer.next().has_value());
    EXPECT_EQ(pacer.next()->frame, 5);
    EXPECT_EQ(pacer.order().getCurrentFrame(), 5);
    EXPECT_EQ(pacer.hasCome(at(100), 0), Pacer::Verdict::show);
    EXPECT_FALSE(pacer.next().has_value());
    EXPECT_EQ(pacer.counts().skipped, 4);
    EXPECT_EQ(pacer.counts().late, 1);
}

TEST(PacerInRealTime, turnsWhereItSkips) {
    Pacer pacer = pacerOf(PlayParams::ping_pong, PacePolicy::real_time, 4);
    EXPECT_EQ(pacer.hasCome(at(0), 6 * frameTime), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->number, 6);
    EXPECT_EQ(pacer.next()->frame, 2);
    EXPECT_EQ(pacer.order().getStep(), -1);
}

TEST(PacerInRealTime, goesOnWithoutAFrameThatCannotBeHad) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::real_time);
    pacer.giveUp(at(0), 0);
    EXPECT_EQ(pacer.counts().skipped, 1);
    EXPECT_EQ(pacer.next()->frame, 1);
}

TEST(PacerForEveryFrame, showsAllWhateverTheyTake) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::every_frame, 9);
    int64 now = at(0);
    for (int64 turn = 0; turn < 100; ++turn) {
        ASSERT_EQ(pacer.next()->frame, turn % 10);
        now += (turn % 7) * frameTime * 3 / 5;
        now = std::max(now, pacer.next()->dueAt);
        ASSERT_EQ(pacer.hasCome(now, 50 * frameTime), Pacer::Verdict::show);
        // The clock waits by whole frames: the next one is due on the grid, within a frame time.
        ASSERT_GT(pacer.next()->dueAt, now);
        ASSERT_LE(pacer.next()->dueAt, now + frameTime);
        ASSERT_EQ((pacer.next()->dueAt - startAt) % frameTime, 0);
    }
    EXPECT_EQ(pacer.counts().shown, 100);
    EXPECT_EQ(pacer.counts().skipped, 0);
    EXPECT_GT(pacer.counts().late, 0);
}

TEST(PacerForEveryFrame, movesTheGridByWholeFrames) {
    Pacer pacer = pacerOf(PlayParams::loop, PacePolicy::every_frame);
    EXPECT_EQ(pacer.hasCome(at(2.7), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->dueAt, at(3));
    EXPECT_EQ(pacer.counts().late, 1);
    EXPECT_EQ(pacer.hasCome(at(3.9), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->dueAt, at(4));
    EXPECT_EQ(pacer.hasCome(at(5), 0), Pacer::Verdict::show);
    EXPECT_EQ(pacer.next()->dueAt, at(6));
    EXPECT_EQ(pacer.counts().late, 2);
}

TEST(PacerForEveryFrame, movesTheGridByWholeFramesOfFractionalRatesForHours) {
    const Rational rate(24000, 1001);
    Pacer pacer(*orderOf(0, 9, 0, 1, PlayParams::loop), rate, PacePolicy::every_frame, startAt);
    // Three hours late, at once: on the grid all the same.
    const int64 lateTicks = int64{3} * 3600 * 24;
    const int64 now = startAt + lateTicks * 1001 / 24000 * aSecond + 1;
    ASSERT_EQ(pacer.hasCome(now, 0), Pacer::Verdict::show);
    const int64 due = pacer.next()->dueAt;
    EXPECT_GT(due, now);
    EXPECT_LE(due, now + pacer.frameTime() + 1);
    const int64 tick = std::llround(static_cast<double>(due - startAt) * 24000.0 / 1001.0 / 1e9);
    EXPECT_EQ(due, startAt + std::llround(static_cast<long double>(tick) * 1001 * aSecond / 24000));
}

}  // namespace
}  // namespace qrtplay
