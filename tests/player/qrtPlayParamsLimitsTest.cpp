// The play parameters at the ends of what their numbers can hold.
#include <gtest/gtest.h>

#include <limits>

#include "harness/qrtPlayParamsDocument.h"
#include "harness/qrtPlayParamsValues.h"

namespace QRT_0_81 {

// ---- Times ----------------------------------------------------------------------------------------------------------

TEST(PlayParamsLimits, aRangeBeyond64BitsEndsAtTheLastNumber) {
    const auto params =
        PlayParams::create(Time(), Time(most64, rate1), Time(10, rate1), rate1, 1, PlayParams::single, PlayParams::all);
    EXPECT_EQ(params->getStartFrame(), most64);
    EXPECT_EQ(params->getEndFrame(), most64);
}

TEST(PlayParamsLimits, timesBeyond64BitsGiveTheFramesAtTheEnds) {
    constexpr Rational fastest(most32, 1);
    const auto params = PlayParams::create(Time(most64, rate1), Time(least64, rate1), Time(most64, rate1), fastest, 1,
                                           PlayParams::single, PlayParams::all);
    EXPECT_EQ(params->getCurrentFrame(), most64);
    EXPECT_EQ(params->getStartFrame(), least64);
    EXPECT_EQ(params->getEndFrame(), -2) << "the sum of both ends, less one";
}

TEST(PlayParamsLimits, getFrameAcceptsTheSmallestRateThatARationalCanHold) {
    constexpr Rational slowest(1, std::numeric_limits<uint32>::max());
    EXPECT_EQ(PlayParams::getFrame(Time(3, slowest), slowest), 3);
}

TEST(PlayParamsLimits, getFrameAtTheTimesOwnRateIsTheNumberThatTheConversionGives) {
    const auto converted = [](int64 ticks, Rational const& rate) {
        return static_cast<int64>(static_cast<double>(ticks) / rate.getValue() * rate.getValue() + 0.5);
    };
    for (Rational const& rate : {Rational(24, 1), Rational(24000, 1001), Rational(30000, 1001), Rational(-25, 1),
                                 Rational(1, std::numeric_limits<uint32>::max()), Rational(most32, 3)}) {
        for (int power = 0; power < 60; ++power) {
            for (const int64 offset : {-2, -1, 0, 1, 2}) {
                const int64 ticks = (int64{1} << power) + offset;
                ASSERT_EQ(PlayParams::getFrame(Time(ticks, rate), rate), converted(ticks, rate))
                    << ticks << " at " << rate.getNumerator() << '/' << rate.getDenominator();
            }
        }
    }
}

TEST(PlayParamsLimits, getFrameSaturatesAtTheEndsOf64Bits) {
    constexpr Rational fastest(most32, 1);
    EXPECT_EQ(PlayParams::getFrame(Time(most64, rate1), fastest), most64);
    EXPECT_EQ(PlayParams::getFrame(Time(least64, rate1), fastest), least64);
    EXPECT_EQ(PlayParams::getFrame(Time(most64, rate1), rate1), most64);
    EXPECT_EQ(PlayParams::getFrame(Time(least64, rate1), rate1), least64);
    EXPECT_EQ(PlayParams::getFrame(Time(most64, Rational(-1, 1)), fastest), least64);
    EXPECT_EQ(PlayParams::getFrame(Time(int64{1} << 62, rate1), rate1), int64{1} << 62);
}

TEST(PlayParamsLimits, aTimeWhoseRateIsZeroOrHasADenominatorOfZeroIsAtFrame0) {
    for (Rational const& rate : {Rational(0, 1), Rational(0, 0), Rational(24, 0), Rational(-24, 0), Rational(0, 24),
                                 Rational(least32, 0), Rational(most32, 0)}) {
        for (const int64 ticks : {int64{0}, int64{1000}, int64{-1000}, least64, most64}) {
            EXPECT_EQ(PlayParams::getFrame(Time(ticks, rate), rate24), 0);
            EXPECT_EQ(PlayParams::getFrame(Time(ticks, rate24), rate), 0)
                << "nor are there frames at such a frame rate";
            EXPECT_EQ(PlayParams::getFrame(Time(ticks, rate), rate), 0);
        }
    }
}

TEST(PlayParamsLimits, parametersWithoutARateHoldFrame0Only) {
    for (Rational const& rate : {Rational(0, 0), Rational(24, 0), Rational(0, 24)}) {
        const Time someTime(1000, rate24);
        const auto params =
            PlayParams::create(someTime, someTime, someTime, rate, 1, PlayParams::single, PlayParams::all);
        EXPECT_EQ(params->getFrameRate(), rate);
        EXPECT_TRUE(*params == *makeParams(0, 0, 0, rate, 1, PlayParams::single, PlayParams::all));
    }
}

// ---- Steps ----------------------------------------------------------------------------------------------------------

TEST(PlayParamsLimits, nextWrapsAroundAtTheEndsOf64Bits) {
    const auto upwards = make(most64, 0, 10, 1, PlayParams::single);
    EXPECT_TRUE(upwards->next());  // the wrapped frame lies before the end
    EXPECT_EQ(upwards->getCurrentFrame(), least64);
    const auto downwards = make(least64, 0, 10, -1, PlayParams::single);
    EXPECT_TRUE(downwards->next());
    EXPECT_EQ(downwards->getCurrentFrame(), most64);
    const auto longest = make(most64 - most32 + 1, 0, most64, most32, PlayParams::single);
    EXPECT_TRUE(longest->next());
    EXPECT_EQ(longest->getCurrentFrame(), least64);
}

TEST(PlayParamsLimits, aFrameThatWrappedIsJudgedByWhereItIs) {
    for (const auto mode : {PlayParams::loop, PlayParams::ping_pong}) {
        const auto upwards = make(most64, 0, most64, 1, mode);
        EXPECT_TRUE(upwards->next());
        EXPECT_EQ(upwards->getCurrentFrame(), least64) << "not behind the end";
        EXPECT_EQ(upwards->getStep(), 1);
        const auto downwards = make(least64, least64, 0, -1, mode);
        EXPECT_TRUE(downwards->next());
        EXPECT_EQ(downwards->getCurrentFrame(), most64);
        EXPECT_EQ(downwards->getStep(), -1);
    }
}

TEST(PlayParamsLimits, nextReachesBothEndsOf64Bits) {
    const auto upwards = make(most64 - 1, 0, most64, 1, PlayParams::loop);
    EXPECT_TRUE(upwards->next());
    EXPECT_EQ(upwards->getCurrentFrame(), most64);
    const auto downwards = make(least64 + 1, least64, 0, -1, PlayParams::loop);
    EXPECT_TRUE(downwards->next());
    EXPECT_EQ(downwards->getCurrentFrame(), least64);
}

TEST(PlayParamsLimits, pingPongTurnsOneFrameBeforeTheEndsOf64Bits) {
    const auto upwards = make(most64 - 1, 0, most64 - 1, 1, PlayParams::ping_pong);
    EXPECT_TRUE(upwards->next());
    EXPECT_EQ(upwards->getCurrentFrame(), most64 - 2);
    const auto downwards = make(least64 + 1, least64 + 1, 0, -1, PlayParams::ping_pong);
    EXPECT_TRUE(downwards->next());
    EXPECT_EQ(downwards->getCurrentFrame(), least64 + 2);
}

TEST(PlayParamsLimits, theLowestStepIsAStepLikeAnyOther) {
    for (const auto mode : {PlayParams::single, PlayParams::loop, PlayParams::ping_pong}) {
        const auto inside = make(0, least64, most64, least32, mode);
        EXPECT_TRUE(inside->next());
        EXPECT_EQ(inside->getCurrentFrame(), int64{least32});
        EXPECT_EQ(inside->getStep(), least32);
    }
    const auto single = make(0, 0, 10, least32, PlayParams::single);
    EXPECT_FALSE(single->next());
    EXPECT_EQ(single->getCurrentFrame(), int64{least32});
    const auto loop = make(0, 0, 10, least32, PlayParams::loop);
    EXPECT_TRUE(loop->next());
    EXPECT_EQ(loop->getCurrentFrame(), 10);
}

TEST(PlayParamsLimits, theStepIsDoubledIn32BitsWhenPingPongTurns) {
    constexpr int64 half = int64{1} << 30;
    const auto params = make(0, 0, 10, 1 << 30, PlayParams::ping_pong);
    EXPECT_TRUE(params->next());
    EXPECT_EQ(params->getCurrentFrame(), half + 2 * half);  // twice the step wraps to -2^31
    EXPECT_EQ(params->getStep(), -(1 << 30));
    const auto lowest = make(0, 0, 10, least32, PlayParams::ping_pong);
    EXPECT_TRUE(lowest->next());
    EXPECT_EQ(lowest->getCurrentFrame(), int64{least32});  // twice the step wraps to 0
    EXPECT_EQ(lowest->getStep(), least32);                 // and has no positive counterpart
}

// ---- Seeking --------------------------------------------------------------------------------------------------------

TEST(PlayParamsLimits, seekReachesBothEndsOf64Bits) {
    for (const auto mode : {PlayParams::single, PlayParams::loop, PlayParams::ping_pong}) {
        const auto params = make(0, least64, most64, 1, mode);
        for (const int64 frame : {most64, least64, most64}) {
            EXPECT_EQ(params->seek(frame).get(), Status::ok);
            EXPECT_EQ(params->getCurrentFrame(), frame);
            const bool isBackwards = mode == PlayParams::ping_pong && frame == least64;
            EXPECT_EQ(params->getStep(), isBackwards ? -1 : 1);
        }
    }
}

TEST(PlayParamsLimits, seekingInPingPongCannotTurnTheLowestStep) {
    const auto params = make(5, 0, 10, least32, PlayParams::ping_pong);
    EXPECT_EQ(params->seek(8).get(), Status::ok);
    EXPECT_EQ(params->getCurrentFrame(), 8);
    EXPECT_EQ(params->getStep(), least32);
}

}  // namespace QRT_0_81
