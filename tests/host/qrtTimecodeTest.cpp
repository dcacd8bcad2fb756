#include "playback/qrtTimecode.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

TEST(Timecode, countsFramesSecondsMinutesAndHours) {
    EXPECT_EQ(timecode(0, Rational(24, 1)), "00:00:00:00");
    EXPECT_EQ(timecode(23, Rational(24, 1)), "00:00:00:23");
    EXPECT_EQ(timecode(24, Rational(24, 1)), "00:00:01:00");
    EXPECT_EQ(timecode(24 * (3600 * 11 + 60 * 2 + 3) + 4, Rational(24, 1)), "11:02:03:04");
}

TEST(Timecode, countsThirtyFramesASecondAtTheNtscRate) {
    EXPECT_EQ(timecode(29, Rational(30000, 1001)), "00:00:00:29");
    EXPECT_EQ(timecode(30, Rational(30000, 1001)), "00:00:01:00");
}

TEST(Timecode, survivesARateOfZero) {
    EXPECT_EQ(timecode(2, Rational(0, 1)), "00:00:02:00");
}

TEST(Timecode, writesLengthsForPeople) {
    EXPECT_EQ(durationText(0.44), "0.4 s");
    EXPECT_EQ(durationText(59.94), "59.9 s");
    EXPECT_EQ(durationText(59.96), "1:00 min");
    EXPECT_EQ(durationText(185), "3:05 min");
    EXPECT_EQ(durationText(7207), "2:00:07 h");
    EXPECT_EQ(durationText(-1), "0.0 s");
}

TEST(Timecode, writesRatesForPeople) {
    EXPECT_EQ(rateText(Rational(24, 1)), "24");
    EXPECT_EQ(rateText(Rational(30000, 1001)), "29.97");
    EXPECT_EQ(rateText(Rational(24000, 1001)), "23.976");
    EXPECT_EQ(rateText(Rational(25, 2)), "12.5");
    EXPECT_EQ(rateText(Rational(10, 1)), "10");
}

TEST(Rates, areReadAsPeopleWriteThem) {
    const auto read = [](std::string const& text) {
        Rational rate(1, 1);
        EXPECT_TRUE(parseRate(text, rate).success()) << text;
        return fractionText(rate);
    };
    EXPECT_EQ(read("25"), "25/1");
    EXPECT_EQ(read("24.0"), "24/1");
    EXPECT_EQ(read("12.5"), "25/2");
    EXPECT_EQ(read("23.976"), "24000/1001");
    EXPECT_EQ(read("23.98"), "24000/1001");
    EXPECT_EQ(read("29.97"), "30000/1001");
    EXPECT_EQ(read("59.94"), "60000/1001");
    EXPECT_EQ(read("60000/2002"), "30000/1001");
    EXPECT_EQ(read("5.0"), "5/1");
    for (const char* const text : {"", "0", "-25", "25/0", "0/1", "1001", "25fps", "1e3", "24/1/1", ".5"}) {
        Rational rate(7, 1);
        EXPECT_EQ(parseRate(text, rate).message().find("rate '" + std::string(text) + "'"), 0u) << text;
        EXPECT_EQ(rate, Rational(7, 1));
    }
}

}  // namespace
}  // namespace qrtplay
