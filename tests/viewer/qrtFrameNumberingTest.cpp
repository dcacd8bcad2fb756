#include "viewer/playing/qrtFrameNumbering.h"

#include <gtest/gtest.h>

#include <limits>

#include "viewer/qrtTestRates.h"

namespace qrtplay {
namespace {

const Rational doubleNtsc(60000, 1001);

struct TimecodeCase {
    const char* name;
    Rational rate;
    ExactTime clockStart;
    int64 frame;
    bool dropFrame;
    const char* expected;
};
class FrameNumberingTimecode : public ::testing::TestWithParam<TimecodeCase> {};

TEST_P(FrameNumberingTimecode, isAsPublished) {
    TimecodeCase const& given = GetParam();
    const FrameNumbering numbering(given.rate, given.clockStart);
    EXPECT_EQ(numbering.timecode(given.frame, given.dropFrame).toStdString(), given.expected);
    EXPECT_EQ(numbering.text(given.frame, Numbering::timecode, given.dropFrame).toStdString(), given.expected);
}
std::string timecodeCaseName(::testing::TestParamInfo<TimecodeCase> const& info) {
    return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(
    DropFrame, FrameNumberingTimecode,
    ::testing::Values(TimecodeCase{"first", ntsc, {}, 0, true, "00:00:00;00"},
                      TimecodeCase{"beforeTheFirstDrop", ntsc, {}, 1799, true, "00:00:59;29"},
                      TimecodeCase{"firstDrop", ntsc, {}, 1800, true, "00:01:00;02"},
                      TimecodeCase{"beforeTheSecondDrop", ntsc, {}, 3597, true, "00:01:59;29"},
                      TimecodeCase{"secondDrop", ntsc, {}, 3598, true, "00:02:00;02"},
                      TimecodeCase{"beforeTheTenthMinute", ntsc, {}, 17981, true, "00:09:59;29"},
                      TimecodeCase{"tenthMinute", ntsc, {}, 17982, true, "00:10:00;00"},
                      TimecodeCase{"eleventhMinute", ntsc, {}, 19782, true, "00:11:00;02"},
                      TimecodeCase{"hour", ntsc, {}, 107892, true, "01:00:00;00"},
                      TimecodeCase{"lastOfTheDay", ntsc, {}, 2589407, true, "23:59:59;29"},
                      TimecodeCase{"nextDay", ntsc, {}, 2589408, true, "00:00:00;00"},
                      TimecodeCase{"dayBefore", ntsc, {}, -1, true, "23:59:59;29"},
                      TimecodeCase{"doubleBeforeTheDrop", doubleNtsc, {}, 3599, true, "00:00:59;59"},
                      TimecodeCase{"doubleDrop", doubleNtsc, {}, 3600, true, "00:01:00;04"},
                      TimecodeCase{"doubleSecondDrop", doubleNtsc, {}, 7196, true, "00:02:00;04"},
                      TimecodeCase{"doubleTenthMinute", doubleNtsc, {}, 35964, true, "00:10:00;00"},
                      TimecodeCase{"doubleHour", doubleNtsc, {}, 215784, true, "01:00:00;00"},
                      TimecodeCase{"unreduced", Rational(60000, 2002), {}, 1800, true, "00:01:00;02"},
                      TimecodeCase{"withClock", ntsc, ExactTime::ofFrame(107892, ntsc), 1800, true, "01:01:00;02"},
                      TimecodeCase{"notWanted", ntsc, {}, 1800, false, "00:01:00:00"},
                      TimecodeCase{"notDefined", Rational(24000, 1001), {}, 1440, true, "00:01:00:00"},
                      TimecodeCase{"notAtThirty", Rational(30, 1), {}, 1800, true, "00:01:00:00"}),
    timecodeCaseName);
INSTANTIATE_TEST_SUITE_P(
    AllNumbers, FrameNumberingTimecode,
    ::testing::Values(TimecodeCase{"lastOfASecond", Rational(24, 1), {}, 23, false, "00:00:00:23"},
                      TimecodeCase{"clockOfAnHour", Rational(24, 1), ExactTime(3600, 1), 12, false, "01:00:00:12"},
                      TimecodeCase{"betweenFrames", Rational(25, 1), ExactTime(3599, 1000), 0, false, "00:00:03:15"},
                      TimecodeCase{"midnight", Rational(25, 1), ExactTime(86399, 1), 25, false, "00:00:00:00"},
                      TimecodeCase{"clockBeyondADay", Rational(25, 1), ExactTime(90000, 1), 0, false, "01:00:00:00"},
                      TimecodeCase{"negative", Rational(25, 1), {}, -1, false, "23:59:59:24"},
                      TimecodeCase{"backIntoTheHour", Rational(25, 1), ExactTime(3600, 1), -1, false, "00:59:59:24"},
                      TimecodeCase{"manyASecond", Rational(120, 1), {}, 119, false, "00:00:00:119"},
                      TimecodeCase{"rateOfZero", Rational(0, 1), {}, 2, false, "00:00:02:00"}),
    timecodeCaseName);

TEST(FrameNumbering, dropFrameLeavesOutTheNumbersOfTheStandardAndNoOther) {
    for (const Rational& rate : {ntsc, doubleNtsc}) {
        const FrameNumbering numbering(rate, ExactTime());
        const int perSecond = rate == ntsc ? 30 : 60;
        int64 frame = 0;
        for (int number = 0; number < 3600 * perSecond; ++number) {
            const int minute = number / (60 * perSecond);
            if (minute % 10 != 0 && number % (60 * perSecond) < perSecond / 15) continue;
            const QString plain = FrameNumbering(Rational(perSecond, 1), ExactTime()).timecode(number, false);
            ASSERT_EQ(numbering.timecode(frame, true), plain.left(8) + ";" + plain.mid(9)) << frame;
            ++frame;
        }
        // An hour of clock is an hour of time, to within a tenth of a second.
        EXPECT_NEAR(ExactTime::ofFrame(frame, rate).seconds(), 3600, 0.1);
    }
}

TEST(FrameNumbering, knowsTheRatesWithDropFrame) {
    EXPECT_TRUE(FrameNumbering(ntsc, ExactTime()).hasDropFrame());
    EXPECT_TRUE(FrameNumbering(doubleNtsc, ExactTime()).hasDropFrame());
    EXPECT_TRUE(FrameNumbering(Rational(60000, 2002), ExactTime()).hasDropFrame());
    for (const Rational& rate : {Rational(24000, 1001), Rational(30, 1), Rational(60, 1), Rational(25, 1),
                                 Rational(120000, 1001), Rational(0, 1), Rational(0, 0), Rational(-30000, 1001)})
        EXPECT_FALSE(FrameNumbering(rate, ExactTime()).hasDropFrame()) << rate.toJson().c_str();
    EXPECT_FALSE(FrameNumbering().hasDropFrame());
}

TEST(FrameNumbering, countsFramesWithoutTheClock) {
    const FrameNumbering numbering(Rational(24, 1), ExactTime(3600, 1));
    EXPECT_EQ(numbering.text(0, Numbering::frames, false), "0");
    EXPECT_EQ(numbering.text(123456, Numbering::frames, true), "123456");
    EXPECT_EQ(numbering.text(-3, Numbering::frames, false), "-3");
}

struct SecondsCase {
    const char* name;
    Rational rate;
    int64 frame;
    const char* expected;
};
class FrameNumberingSeconds : public ::testing::TestWithParam<SecondsCase> {};

TEST_P(FrameNumberingSeconds, areRoundedToMilliseconds) {
    const FrameNumbering numbering(GetParam().rate, ExactTime(3600, 1));
    EXPECT_EQ(numbering.text(GetParam().frame, Numbering::seconds, false).toStdString(), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Rates, FrameNumberingSeconds,
                         ::testing::Values(SecondsCase{"zero", Rational(24, 1), 0, "0.000 s"},
                                           SecondsCase{"one", Rational(24, 1), 1, "0.042 s"},
                                           SecondsCase{"second", Rational(24, 1), 24, "1.000 s"},
                                           SecondsCase{"minutes", Rational(25, 1), 25 * 75 + 1, "75.040 s"},
                                           SecondsCase{"slowed", Rational(24000, 1001), 24, "1.001 s"},
                                           SecondsCase{"negative", Rational(24, 1), -1, "-0.042 s"},
                                           SecondsCase{"farNegative", Rational(25, 1), -30, "-1.200 s"},
                                           SecondsCase{"rateOfZero", Rational(0, 1), 5, "0.000 s"}),
                         [](const auto& given) { return given.param.name; });

TEST(FrameNumbering, survivesTheEndsOfTime) {
    const FrameNumbering numbering(ntsc, ExactTime(std::numeric_limits<int64>::max(), 1));
    for (const int64 frame : {std::numeric_limits<int64>::min(), std::numeric_limits<int64>::max()}) {
        for (const auto manner : {Numbering::timecode, Numbering::frames, Numbering::seconds}) {
            EXPECT_FALSE(numbering.text(frame, manner, true).isEmpty());
            EXPECT_FALSE(numbering.text(frame, manner, false).isEmpty());
        }
    }
}

}  // namespace
}  // namespace qrtplay
