#include "options/qrtFrameRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<FrameRange> rangesOf(std::string const& text) {
    std::vector<FrameRange> ranges;
    const Outcome outcome = parseFrameRanges(text, ranges);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return ranges;
}

std::vector<int64> framesOf(FrameRange const& range) {
    std::vector<int64> frames;
    for (int64 position = 0; position < range.count(); ++position)
        frames.push_back(range.frame(position));
    return frames;
}

TEST(FrameRange, readsOneFrame) {
    EXPECT_THAT(rangesOf("7"), ElementsAre(FrameRange{7, 7, 1}));
    EXPECT_EQ(rangesOf("7")[0].count(), 1);
}

TEST(FrameRange, readsARangeWithBothEnds) {
    EXPECT_THAT(rangesOf("0-99"), ElementsAre(FrameRange{0, 99, 1}));
    EXPECT_EQ(rangesOf("0-99")[0].count(), 100);
}

TEST(FrameRange, readsAStep) {
    EXPECT_THAT(framesOf(rangesOf("10-30x5")[0]), ElementsAre(10, 15, 20, 25, 30));
}

TEST(FrameRange, leavesOutALastFrameThatTheStepDoesNotHit) {
    EXPECT_THAT(framesOf(rangesOf("10-29x5")[0]), ElementsAre(10, 15, 20, 25));
    EXPECT_EQ(rangesOf("10-29x5")[0].last, 25);
    EXPECT_THAT(framesOf(rangesOf("5-0x-2")[0]), ElementsAre(5, 3, 1));
}

TEST(FrameRange, playsAFallingRangeBackwards) {
    EXPECT_THAT(framesOf(rangesOf("3-0x-1")[0]), ElementsAre(3, 2, 1, 0));
    EXPECT_THAT(framesOf(rangesOf("3-0")[0]), ElementsAre(3, 2, 1, 0));
}

TEST(FrameRange, takesAStepOfAFallingRangeWithOrWithoutItsSign) {
    EXPECT_THAT(framesOf(rangesOf("9-0x3")[0]), ElementsAre(9, 6, 3, 0));
    EXPECT_EQ(rangesOf("9-0x3"), rangesOf("9-0x-3"));
}

TEST(FrameRange, goesToTheEndWithoutALastFrame) {
    std::vector<FrameRange> ranges = rangesOf("95-,90-x4,3");
    ASSERT_TRUE(fitFrameRanges(ranges, 100).success());
    EXPECT_THAT(ranges, ElementsAre(FrameRange{95, 99, 1}, FrameRange{90, 98, 4}, FrameRange{3, 3, 1}));
    EXPECT_EQ(fitFrameRanges(ranges = rangesOf("100-"), 100).message(),
              "frames '100-': outside the clip, whose frames are 0-99");
}

TEST(FrameRange, meansAllFramesWhenThereIsNone) {
    std::vector<FrameRange> ranges;
    ASSERT_TRUE(fitFrameRanges(ranges, 100).success());
    EXPECT_THAT(ranges, ElementsAre(FrameRange{0, 99, 1}));
}

TEST(FrameRange, isWrittenAsItIsRead) {
    for (const char* const text : {"7", "0-99", "10-90x5", "100-", "100-x2", "9-0"})
        EXPECT_EQ(textOf(rangesOf(text)[0]), text);
    EXPECT_EQ(textOf(rangesOf("9-0x3")[0]), "9-0x-3");
}

TEST(FrameRange, readsAListInItsOrder) {
    const auto ranges = rangesOf("5-6,1,9-7");
    EXPECT_THAT(ranges, ElementsAre(FrameRange{5, 6, 1}, FrameRange{1, 1, 1}, FrameRange{9, 7, -1}));
    EXPECT_EQ(totalFrames(ranges), 6);
}

TEST(FrameRange, refusesWhatIsNoRangeAndNamesIt) {
    for (const char* const text : {"",
                                   ",",
                                   "1,",
                                   "a",
                                   "-1",
                                   "-5--1",
                                   "-",
                                   "1--2",
                                   "1-x-1",
                                   "1-x0",
                                   "1-2x",
                                   "1-2x0",
                                   "1-2xa",
                                   "1-2x1x1",
                                   "1-2x-1",
                                   "1-2x-2147483648",
                                   "1 - 2",
                                   " 1",
                                   "0x10",
                                   "99999999999999999999",
                                   "1-2x99999999999",
                                   "1.5",
                                   "+1",
                                   "0-9;11"}) {
        std::vector<FrameRange> ranges{{1, 2, 1}};
        const Outcome outcome = parseFrameRanges(text, ranges);
        EXPECT_TRUE(outcome.failed()) << text;
        EXPECT_THAT(outcome.message(), HasSubstr("frames '"));
        EXPECT_THAT(ranges, ElementsAre(FrameRange{1, 2, 1})) << text;
    }
    std::vector<FrameRange> ranges;
    EXPECT_THAT(parseFrameRanges("0-9,bad,11", ranges).message(), HasSubstr("'bad'"));
}

TEST(FrameRange, refusesFramesOutsideTheClip) {
    const auto failure = [](std::string const& text) {
        std::vector<FrameRange> ranges = rangesOf(text);
        return fitFrameRanges(ranges, 100).message();
    };
    EXPECT_EQ(failure("0-99"), "");
    EXPECT_EQ(failure("99-0"), "");
    EXPECT_EQ(failure("0-9,90-100"), "frames '90-100': outside the clip, whose frames are 0-99");
    EXPECT_NE(failure("100-0"), "");
    EXPECT_NE(failure("0-9223372036854775807"), "");
    EXPECT_NE(failure("9223372036854775807-0"), "");
}

}  // namespace
}  // namespace qrtplay
