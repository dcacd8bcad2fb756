#include "render/qrtSoundCutter.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

using Part = SoundCutter::Part;

TEST(SoundCutter, givesEveryFrameItsSamples) {
    SoundCutter cutter(Rational(24, 1));
    cutter.begin(10);
    EXPECT_EQ(cutter.next(), (Part{20000, 2000}));
    EXPECT_EQ(cutter.next(), (Part{22000, 2000}));
}

TEST(SoundCutter, leavesNoGapAndNoOverlapAtRatesThatDoNotDivideSamples) {
    SoundCutter cutter(Rational(30000, 1001));
    cutter.begin(0);
    int64 at = 0;
    for (int frame = 0; frame < 30000; ++frame) {
        const Part part = cutter.next();
        ASSERT_EQ(part.firstSample, at) << frame;
        at += part.count;
    }
    EXPECT_EQ(at, int64{1001} * 48000);
}

TEST(SoundCutter, keepsTheExactLengthOfAMovieOfManyRanges) {
    SoundCutter cutter(Rational(30000, 1001));
    int64 samples = 0;
    for (int range = 0; range < 30000; ++range) {
        cutter.begin(range % 7);
        samples += cutter.next().count;
    }
    EXPECT_EQ(samples, int64{1001} * 48000);
}

TEST(SoundCutter, followsFramesThatRunForwardOnly) {
    EXPECT_TRUE(SoundCutter::canFollow({{0, 9, 1}, {5, 5, -1}, {7, 7, 3}}));
    EXPECT_FALSE(SoundCutter::canFollow({{0, 9, 1}, {0, 8, 2}}));
    EXPECT_FALSE(SoundCutter::canFollow({{9, 0, -1}}));
}

}  // namespace
}  // namespace qrtplay
