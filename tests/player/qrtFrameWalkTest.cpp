// Which frames playback reaches, against walking there step by step.
#include "qrtFrameWalk.h"

#include <gtest/gtest.h>

#include "harness/qrtPlayParamsValues.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

/// Every answer for up to `mostSteps` steps and the frames in and around the range, compared with the walk itself.
void expectAsWalked(PlayParamsPrivate const& from, int32 mostSteps) {
    for (int64 target = from.startFrame - 3; target <= from.endFrame + 3; ++target) {
        PlayParamsPrivate walk = from;
        bool isReached = false;
        ASSERT_FALSE(walkReaches(from, 0, target));
        for (int32 numSteps = 1; numSteps <= mostSteps; ++numSteps) {
            isReached = (walk.next() && walk.currentFrame == target) || isReached;
            ASSERT_EQ(walkReaches(from, numSteps, target), isReached)
                << "from " << from.currentFrame << " in [" << from.startFrame << ", " << from.endFrame << "] by "
                << from.step << " to " << target << " in " << numSteps << ", mode " << from.playMode;
        }
    }
}

PlayParamsPrivate walkFrom(int64 current, int64 start, int64 end, int32 step, PlayParams::PlayMode mode) {
    PlayParamsPrivate from;
    from.currentFrame = current;
    from.startFrame = start;
    from.endFrame = end;
    from.step = step;
    from.playMode = mode;
    return from;
}

class FrameWalk : public ::testing::TestWithParam<PlayParams::PlayMode> {};

}  // namespace

TEST_P(FrameWalk, reachesWhatStepsReachInEveryShortRange) {
    constexpr int64 start = -3;
    for (int64 end = start; end < start + 9; ++end) {
        for (int64 current = start; current <= end; ++current) {
            for (int32 step = -10; step <= 10; ++step) {
                expectAsWalked(walkFrom(current, start, end, step, GetParam()), 40);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_P(FrameWalk, reachesWhatStepsReachFromOutsideOfTheRange) {
    for (const int64 current : {-2, -1, 6, 9}) {
        for (int32 step = -3; step <= 3; ++step) {
            expectAsWalked(walkFrom(current, 0, 5, step, GetParam()), 20);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(FrameWalk, reachesWhatStepsReachWhereNumbersWrapAround) {
    for (const int32 step : {1, 2, -1, -3, most32, least32}) {
        expectAsWalked(walkFrom(most64 - 7, most64 - 9, most64 - 4, step, GetParam()), 40);
        expectAsWalked(walkFrom(least64 + 7, least64 + 4, least64 + 10, step, GetParam()), 40);
        expectAsWalked(walkFrom(4, 0, 6, step, GetParam()), 20);
        if (HasFatalFailure()) return;
    }
}

TEST_P(FrameWalk, knowsTheFramesOfALongWalk) {
    const PlayParamsPrivate from = walkFrom(10, 0, 999'999'999'999, 1, GetParam());
    EXPECT_TRUE(walkReaches(from, 1'000'000, 1'000'010));
    EXPECT_FALSE(walkReaches(from, 1'000'000, 1'000'011));
    EXPECT_FALSE(walkReaches(from, 1'000'000, 9));
}

INSTANTIATE_TEST_SUITE_P(Modes, FrameWalk,
                         ::testing::Values(PlayParams::single, PlayParams::loop, PlayParams::ping_pong,
                                           static_cast<PlayParams::PlayMode>(7)));

}  // namespace QRT_0_81
