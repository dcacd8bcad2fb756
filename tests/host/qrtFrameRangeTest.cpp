#include "render/qrtFrameRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<FrameRange> parsed(std::string const& text) {
    std::vector<FrameRange> ranges;
    const Outcome outcome = parseFrameRanges(text, ranges);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return ranges;
}

std::vector<int64> framesOf(FrameRange const& range) {
    std::vector<int64> frames;
    for (int64 position = 0; position < range.count(); ++position) frames.push_back(range.frame(position));
    return frames;
}

TEST(FrameRange, readsOneFrame) {
    EXPECT_THAT(parsed("7"), ElementsAre(FrameRange{7, 7, 1}));
    EXPECT_EQ(parsed("7")[0].count(), 1);
}

TEST(FrameRange, readsARangeWithBothEnds) {
    EXPECT_THAT(parsed("0-99"), ElementsAre(FrameRange{0, 99, 1}));
    EXPECT_EQ(parsed("0-99")[0].count(), 100);
}

TEST(FrameRange, readsAStep) {
    EXPECT_THAT(framesOf(parsed("10-30x5")[0]), ElementsAre(10, 15, 20, 25, 30));
}

TEST(FrameRange, leavesOutALastFrameThatTheStepDoesNotHit) {
    EXPECT_THAT(framesOf(parsed("10-29x5")[0]), ElementsAre(10, 15, 20, 25));
    EXPECT_EQ(parsed("10-29x5")[0].last, 25);
    EXPECT_THAT(framesOf(parsed("5-0x-2")[0]), ElementsAre(5, 3, 1));
}

TEST(FrameRange, playsAFallingRangeBackwards) {
    EXPECT_THAT(framesOf(parsed("3-0x-1")[0]), ElementsAre(3, 2, 1, 0));
    EXPECT_THAT(framesOf(parsed("3-0")[0]), ElementsAre(3, 2, 1, 0));
}

TEST(FrameRange, readsAListInItsOrder) {
    const auto ranges = parsed("5-6,1,9-7");
    EXPECT_THAT(ranges, ElementsAre(FrameRange{5, 6, 1}, FrameRange{1, 1, 1}, FrameRange{9, 7, -1}));
    EXPECT_EQ(totalFrames(ranges), 6);
}

TEST(FrameRange, refusesWhatIsNoRangeAndNamesIt) {
    for (const char* const text :
         {"", ",", "1,", "a", "-1", "1-", "-", "1--2", "1-2x", "1-2x0", "1-2xa", "1-2x1x1", "2-1x1", "1-2x-1", "1 - 2", " 1",
          "0x10", "99999999999999999999", "1-2x99999999999", "1.5", "+1", "0-9;11"}) {
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
    EXPECT_TRUE(checkFrameRanges(parsed("0-99"), 100).success());
    EXPECT_TRUE(checkFrameRanges(parsed("99-0"), 100).success());
    EXPECT_EQ(checkFrameRanges(parsed("0-9,90-100"), 100).message(),
              "frames '90-100': outside the clip, whose frames are 0-99");
    EXPECT_TRUE(checkFrameRanges(parsed("100-0"), 100).failed());
    EXPECT_TRUE(checkFrameRanges(parsed("0-9223372036854775807"), 100).failed());
}

}  // namespace
}  // namespace qrtplay
