#include "foundation/core/qrtTime.h"

#include <gtest/gtest.h>

#include <limits>

namespace QRT_0_81 {
namespace {

TEST(Time, isZeroTicksAtRateOneByDefault) {
    const Time time;
    EXPECT_EQ(time.getNbTicks(), 0);
    EXPECT_EQ(time.getRate(), Rational(1, 1));
}

TEST(Time, keepsTicksAndRateAsGiven) {
    const Time time(-240, Rational(48, 2));
    EXPECT_EQ(time.getNbTicks(), -240);
    EXPECT_EQ(time.getRate(), Rational(48, 2));
}

TEST(Time, countsTicksInSixtyFourBits) {
    constexpr int64 smallest = std::numeric_limits<int64>::min();
    constexpr int64 largest = std::numeric_limits<int64>::max();
    EXPECT_EQ(Time(smallest, Rational(24, 1)).getNbTicks(), smallest);
    EXPECT_EQ(Time(largest, Rational(24, 1)).getNbTicks(), largest);
}

}  // namespace
}  // namespace QRT_0_81
