#include "timeline/qrtRetiming.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

const Rational film(24, 1);
const Rational ntscFilm(24000, 1001);
const Rational ntsc(30000, 1001);
const Rational pal(25, 1);

TEST(Retiming, keepsFramesAtTheSameRate) {
    for (const int64 frame : {int64{0}, int64{1}, int64{1000000007}}) {
        EXPECT_EQ(sourceFrameOf(frame, ntsc, ntsc), frame);
        EXPECT_EQ(sourceFrameOf(frame, film, Rational(48, 2)), frame);
    }
}

TEST(Retiming, showsTheFrameThatIsOnWhenTheOutputFrameBegins) {
    const int64 expected[] = {0, 0, 1, 2, 3, 4};  // 24 in 30: one in five is shown twice
    for (int64 frame = 0; frame < 6; ++frame) EXPECT_EQ(sourceFrameOf(frame, Rational(30, 1), film), expected[frame]);
    EXPECT_EQ(sourceFrameOf(5, Rational(8, 1), film), 15);
}

TEST(Retiming, isExactAfterYears) {
    // 1001 frames at 24000/1001 last as long as 1251.25 at 30000/1001: multiples of 4004 hit a whole number.
    const int64 many = int64{4004} * 1000000000;
    EXPECT_EQ(sourceFrameOf(many / 4 * 5, ntsc, ntscFilm), many);
    EXPECT_EQ(sourceFrameOf(many / 4 * 5 - 1, ntsc, ntscFilm), many - 1);
}

TEST(Retiming, findsTheFirstOutputFrameThatShowsAFrame) {
    for (const auto& [output, source] : {std::pair{pal, ntscFilm}, std::pair{ntsc, film}, std::pair{Rational(8, 1), film}}) {
        for (int64 frame = 0; frame < 500; ++frame) {
            const int64 first = firstOutputFrameOf(frame, output, source);
            EXPECT_GE(sourceFrameOf(first, output, source), frame);
            EXPECT_TRUE(first == 0 || sourceFrameOf(first - 1, output, source) < frame);
        }
    }
}

TEST(Retiming, saturatesInsteadOfOverflowing) {
    EXPECT_EQ(sourceFrameOf(INT64_MAX, Rational(1, 1), Rational(INT32_MAX, 1)), INT64_MAX);
}

TEST(Retiming, answersMinusOneForWhatHasNoFrame) {
    EXPECT_EQ(sourceFrameOf(-1, film, film), -1);
    EXPECT_EQ(sourceFrameOf(1, Rational(0, 1), film), -1);
    EXPECT_EQ(sourceFrameOf(1, film, Rational(24, 0)), -1);
    EXPECT_EQ(sourceFrameOf(1, film, Rational(-24, 1)), -1);
    EXPECT_EQ(firstOutputFrameOf(1, Rational(0, 1), film), -1);
}

}  // namespace
}  // namespace qrtplay
