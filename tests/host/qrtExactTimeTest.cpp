#include "base/qrtExactTime.h"

#include <gtest/gtest.h>

#include <limits>

namespace qrtplay {
namespace {

const Rational ntsc(24000, 1001);

TEST(ExactTime, isReducedWithAPositiveDenominator) {
    const ExactTime time(6, -4);
    EXPECT_EQ(time.numerator(), -3);
    EXPECT_EQ(time.denominator(), 2);
    EXPECT_EQ(ExactTime(7, 0), ExactTime());
}

TEST(ExactTime, addsSubtractsAndScalesWithoutRounding) {
    EXPECT_EQ(ExactTime(1, 3) + ExactTime(1, 6), ExactTime(1, 2));
    EXPECT_EQ(ExactTime(1, 3) - ExactTime(1, 2), ExactTime(-1, 6));
    EXPECT_EQ(-ExactTime(1, 3), ExactTime(-1, 3));
    EXPECT_EQ(ExactTime(2, 3) * ExactTime(-9, 4), ExactTime(-3, 2));
}

TEST(ExactTime, comparesByValue) {
    EXPECT_LT(ExactTime(1, 3), ExactTime(1, 2));
    EXPECT_LT(ExactTime(-1, 2), ExactTime(-1, 3));
    EXPECT_GT(ExactTime(1001, 24000), ExactTime(1, 24));
}

TEST(ExactTime, knowsEveryFrameOfTwoHoursByItsBegin) {
    for (int64 frame = 0; frame < 2 * 60 * 60 * 24; ++frame) {
        const ExactTime begin = ExactTime::ofFrame(frame, ntsc);
        ASSERT_EQ(begin.frameAt(ntsc), frame);
        ASSERT_EQ(begin.frameFrom(ntsc), frame);
        ASSERT_EQ((begin - ExactTime(1, 1'000'000)).frameAt(ntsc), frame - 1);
        ASSERT_EQ((begin + ExactTime(1, 1'000'000)).frameFrom(ntsc), frame + 1);
    }
}

TEST(ExactTime, takesTheLaterOfTwoEquallyNearFrames) {
    EXPECT_EQ(ExactTime(1, 2).nearestFrame(Rational(1, 1)), 1);
    EXPECT_EQ(ExactTime(-1, 2).nearestFrame(Rational(1, 1)), 0);
    EXPECT_EQ(ExactTime(49, 100).nearestFrame(Rational(1, 1)), 0);
    EXPECT_EQ(ExactTime(-51, 100).nearestFrame(Rational(1, 1)), -1);
}

TEST(ExactTime, countsFramesBeforeZeroDownwards) {
    EXPECT_EQ(ExactTime(-1, 100).frameAt(Rational(24, 1)), -1);
    EXPECT_EQ(ExactTime(-1, 100).frameFrom(Rational(24, 1)), 0);
}

TEST(ExactTime, answersZeroForRatesThatAreNone) {
    EXPECT_EQ(ExactTime::ofFrame(5, Rational(0, 1)), ExactTime());
    EXPECT_EQ(ExactTime::ofFrame(5, Rational(24, 0)), ExactTime());
    EXPECT_EQ(ExactTime(5, 1).frameAt(Rational(-24, 1)), 0);
}

TEST(ExactTime, roundsWhatDoesNotFitToTheFinestUnit) {
    const ExactTime a(1, 4'000'000'007);
    const ExactTime b(1, 4'000'000'009);
    const ExactTime sum = a + b;
    EXPECT_LE(sum.denominator(), 705'600'000);
    EXPECT_NEAR(sum.seconds(), a.seconds() + b.seconds(), 1.0 / 705'600'000);
}

TEST(ExactTime, staysAtItsLimits) {
    const ExactTime huge(std::numeric_limits<int64>::max(), 1);
    EXPECT_EQ(huge + huge, huge);
    EXPECT_EQ(-huge - huge, -huge);
    EXPECT_EQ(huge * ExactTime(-2, 1), -huge);
}

}  // namespace
}  // namespace qrtplay
