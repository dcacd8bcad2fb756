#include "render/qrtOutputPattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

OutputPattern parsed(std::string const& text) {
    OutputPattern pattern;
    const Outcome outcome = OutputPattern::parse(text, pattern);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return pattern;
}

TEST(OutputPattern, fillsARunOfSignsWithAtLeastAsManyDigits) {
    EXPECT_EQ(parsed("out/frame.####.png").pathOf(7), "out/frame.0007.png");
    EXPECT_EQ(parsed("out/frame.####.png").pathOf(123456), "out/frame.123456.png");
    EXPECT_EQ(parsed("#.png").pathOf(7), "7.png");
    EXPECT_EQ(parsed("\u00fc\u65e5/\u00e4\u65e5##\u00f6.png").pathOf(7), "\u00fc\u65e5/\u00e4\u65e507\u00f6.png");
}

TEST(OutputPattern, fillsAPlaceInTheMannerOfPrintf) {
    EXPECT_EQ(parsed("out/%04d.png").pathOf(7), "out/0007.png");
    EXPECT_EQ(parsed("%d.png").pathOf(7), "7.png");
}

TEST(OutputPattern, leavesSignsInTheFolderAlone) {
    const OutputPattern pattern = parsed("take #3 100%d/x##.png");
    EXPECT_EQ(pattern.pathOf(1), "take #3 100%d/x01.png");
    EXPECT_EQ(pattern.folder(), "take #3 100%d");
}

TEST(OutputPattern, knowsWhetherItHasAPlace) {
    EXPECT_TRUE(parsed("a.#.png").hasNumber());
    EXPECT_FALSE(parsed("100%.png").hasNumber());
    EXPECT_EQ(parsed("poster.PNG").pathOf(7), "poster.PNG");
}

TEST(OutputPattern, knowsItsFolder) {
    EXPECT_EQ(parsed("a.png").folder(), ".");
    EXPECT_EQ(parsed("/a.png").folder(), "/");
    EXPECT_EQ(parsed("x/y/a.png").folder(), "x/y");
}

TEST(OutputPattern, refusesOtherEndingsAndTwoPlaces) {
    for (const char* const text :
         {"", "out/", "frame.####", "frame.####.gif", ".png", "out/.png", "#.#.png", "#%04d.png"}) {
        OutputPattern pattern = parsed("before.png");
        const Outcome outcome = OutputPattern::parse(text, pattern);
        EXPECT_TRUE(outcome.failed()) << text;
        EXPECT_THAT(outcome.message(), ::testing::HasSubstr("output '" + std::string(text) + "'"));
        EXPECT_EQ(pattern.text(), "before.png");
    }
}

}  // namespace
}  // namespace qrtplay
