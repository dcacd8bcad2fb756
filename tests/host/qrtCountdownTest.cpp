#include "generators/qrtCountdown.h"

#include <gtest/gtest.h>

#include <climits>

namespace qrtplay {
namespace {

constexpr int64 tenSeconds = 240;
const Rational film(24, 1);

TEST(Countdown, countsTheSecondsThatHaveBegunUntilTheEnd) {
    EXPECT_EQ(Countdown(0, tenSeconds, film).number, 10);
    EXPECT_EQ(Countdown(23, tenSeconds, film).number, 10);
    EXPECT_EQ(Countdown(24, tenSeconds, film).number, 9);
    EXPECT_EQ(Countdown(215, tenSeconds, film).number, 2);
    EXPECT_EQ(Countdown(216, tenSeconds, film).number, 1);
    EXPECT_EQ(Countdown(239, tenSeconds, film).number, 1);
}

TEST(Countdown, turnsOnceInASecond) {
    EXPECT_EQ(Countdown(24, tenSeconds, film).turn, 0);
    EXPECT_EQ(Countdown(30, tenSeconds, film).turn, 0.25);
    EXPECT_EQ(Countdown(47, tenSeconds, film).turn, 23.0 / 24);
    EXPECT_EQ(Countdown(48, tenSeconds, film).turn, 0);
}

TEST(Countdown, beginsWithinASecondWhenItsLengthIsNoneInWholeSeconds) {
    EXPECT_EQ(Countdown(0, 30, film).number, 2);
    EXPECT_EQ(Countdown(0, 30, film).turn, 0.75);
    EXPECT_EQ(Countdown(6, 30, film).number, 1);
    EXPECT_EQ(Countdown(6, 30, film).turn, 0);
}

TEST(Countdown, isExactAtRatesThatAreNoWholeNumber) {
    // The last second of 30000/1001 begins 29.97 frames before the end.
    const Rational ntsc(30000, 1001);
    EXPECT_EQ(Countdown(269, 300, ntsc).number, 2);
    EXPECT_EQ(Countdown(270, 300, ntsc).number, 2);
    EXPECT_EQ(Countdown(271, 300, ntsc).number, 1);
    EXPECT_DOUBLE_EQ(Countdown(271, 300, ntsc).turn, (30000.0 - 29 * 1001) / 30000);
}

TEST(Countdown, popsInTheFirstTwoFramesOfTheLastSecondButOne) {
    for (int64 frame = 0; frame < tenSeconds; ++frame)
        EXPECT_EQ(Countdown(frame, tenSeconds, film).isPop, frame == 192 || frame == 193) << frame;
}

TEST(Countdown, staysAtItsEndsOutside) {
    EXPECT_EQ(Countdown(-1, tenSeconds, film).number, 10);
    EXPECT_EQ(Countdown(INT64_MIN, tenSeconds, film).turn, 0);
    EXPECT_EQ(Countdown(INT64_MAX, tenSeconds, film).number, 1);
    EXPECT_EQ(Countdown(240, tenSeconds, film).turn, 23.0 / 24);
}

TEST(Countdown, knowsWhatToDoWithOddLengthsAndRates) {
    EXPECT_EQ(Countdown(0, 0, film).number, 1);
    EXPECT_EQ(Countdown(7, -3, film).number, 1);
    EXPECT_EQ(Countdown(0, 48, Rational(0, 1)).number, 2);
    EXPECT_EQ(Countdown(0, 48, Rational(24, 0)).number, 2);
    EXPECT_EQ(Countdown(0, 48, Rational(-24, 1)).number, 2);
    EXPECT_GT(Countdown(0, INT64_MAX, Rational(1, UINT_MAX)).number, 0);
}

}  // namespace
}  // namespace qrtplay
