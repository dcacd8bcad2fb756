#include "options/qrtOutputPattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

OutputPattern patternOf(std::string const& text) {
    OutputPattern pattern;
    const Outcome outcome = OutputPattern::parse(text, pattern);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return pattern;
}

TEST(OutputPattern, fillsARunOfSignsWithAtLeastAsManyDigits) {
    EXPECT_EQ(patternOf("out/frame.####.png").pathOf(7), "out/frame.0007.png");
    EXPECT_EQ(patternOf("out/frame.####.png").pathOf(123456), "out/frame.123456.png");
    EXPECT_EQ(patternOf("#.png").pathOf(7), "7.png");
    EXPECT_EQ(patternOf("\u00fc\u65e5/\u00e4\u65e5##\u00f6.png").pathOf(7), "\u00fc\u65e5/\u00e4\u65e507\u00f6.png");
}

TEST(OutputPattern, fillsAPlaceInTheMannerOfPrintf) {
    EXPECT_EQ(patternOf("out/%04d.png").pathOf(7), "out/0007.png");
    EXPECT_EQ(patternOf("%d.png").pathOf(7), "7.png");
}

TEST(OutputPattern, leavesSignsInTheFolderAlone) {
    const OutputPattern pattern = patternOf("take #3 100%d/x##.png");
    EXPECT_EQ(pattern.pathOf(1), "take #3 100%d/x01.png");
    EXPECT_EQ(pattern.folder(), "take #3 100%d");
}

TEST(OutputPattern, knowsWhetherItHasAPlace) {
    EXPECT_TRUE(patternOf("a.#.png").hasNumber());
    EXPECT_FALSE(patternOf("100%.png").hasNumber());
    EXPECT_EQ(patternOf("poster.PNG").pathOf(7), "poster.PNG");
}

TEST(OutputPattern, knowsItsFolder) {
    EXPECT_EQ(patternOf("a.png").folder(), ".");
    EXPECT_EQ(patternOf("/a.png").folder(), "/");
    EXPECT_EQ(patternOf("x/y/a.png").folder(), "x/y");
}

TEST(OutputPattern, refusesOtherEndingsAndTwoPlaces) {
    for (const char* const text :
         {"", "out/", "frame.####", "frame.####.gif", ".png", "out/.png", "#.#.png", "#%04d.png"}) {
        OutputPattern pattern = patternOf("before.png");
        const Outcome outcome = OutputPattern::parse(text, pattern);
        EXPECT_TRUE(outcome.failed()) << text;
        EXPECT_THAT(outcome.message(), ::testing::HasSubstr("output '" + std::string(text) + "'"));
        EXPECT_EQ(pattern.text(), "before.png");
    }
}

}  // namespace
}  // namespace qrtplay
