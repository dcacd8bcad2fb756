#include "generators/qrtRamGeneratorSegment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "host/qrtGeneratedPicture.h"

namespace qrtplay {
namespace {

using Kind = Generator::Kind;
using Pixel = GeneratedPicture::Pixel;

/// Which pixels a title covers.
struct Ink {
    int left;
    int right;
    int bottom;
    int top;
    int rowGroups;  ///< lines of writing, apart from each other
};

bool hasInk(GeneratedPicture const& picture, int left, int right, int y) {
    for (int x = left; x < right; ++x) {
        if (picture.at(x, y)[3] != 0) return true;
    }
    return false;
}

/// Of the columns from `left` up to `right`.
std::optional<Ink> inkOf(GeneratedPicture const& picture, int left, int right) {
    std::optional<Ink> ink;
    bool wasInk = false;
    for (int y = 0; y < picture.height; ++y) {
        const bool isInk = hasInk(picture, left, right, y);
        if (isInk && !ink) ink = Ink{right, left, y, y, 0};
        if (isInk) ink->top = y;
        if (isInk && !wasInk) ++ink->rowGroups;
        wasInk = isInk;
        for (int x = left; isInk && x < right; ++x) {
            if (picture.at(x, y)[3] == 0) continue;
            ink->left = std::min(ink->left, x);
            ink->right = std::max(ink->right, x);
        }
    }
    return ink;
}
std::optional<Ink> inkOf(GeneratedPicture const& picture) {
    return inkOf(picture, 0, picture.width);
}

int countOf(GeneratedPicture const& picture, Pixel const& colour) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x)
            count += picture.at(x, y) == colour;
    }
    return count;
}

std::string repeated(std::string const& word, int times) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += word;
    return text;
}

TEST(Title, standsInTheMiddleOnTransparentGround) {
    const GeneratedPicture picture = fill(titleOf("Hello"), 640, 360);
    for (const int x : {0, 639}) {
        for (const int y : {0, 359})
            EXPECT_EQ(picture.at(x, y), (Pixel{0, 0, 0, 0}));
    }
    const std::optional<Ink> ink = inkOf(picture);
    ASSERT_TRUE(ink);
    EXPECT_EQ(ink->rowGroups, 1);
    EXPECT_NEAR(ink->left + ink->right, 640, 20);
    EXPECT_NEAR(ink->bottom + ink->top, 360, 40);
}

TEST(Title, isWrittenInItsColourWithADarkEdge) {
    const GeneratedPicture picture = fill(titleOf("Hello", {1, 0.2, 0, 1}), 640, 360);
    EXPECT_GT(countOf(picture, {255, 51, 0, 255}), 1000);
    EXPECT_GT(countOf(picture, {0, 0, 0, 255}), 500);
}

TEST(Title, letsTheGroundShineThroughAsItsAlphaSays) {
    const GeneratedPicture picture = fill(titleOf("Hello", {1, 1, 1, 0.4}), 640, 360);
    EXPECT_GT(countOf(picture, {102, 102, 102, 102}), 1000);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Pixel pixel = picture.at(x, y);
            ASSERT_LE(*std::max_element(pixel.begin(), pixel.end() - 1), pixel[3]) << "alpha is not multiplied in";
            ASSERT_LE(pixel[3], 102);
        }
    }
}

TEST(Title, beginsWithItsBottomRow) {
    const GeneratedPicture picture = fill(titleOf("T"), 320, 180);
    const std::optional<Ink> ink = inkOf(picture);
    ASSERT_TRUE(ink);
    const auto widthOf = [&](int y) {
        int count = 0;
        for (int x = 0; x < picture.width; ++x)
            count += picture.at(x, y)[3] == 255;
        return count;
    };
    const int height = ink->top - ink->bottom;
    EXPECT_GT(widthOf(ink->top - height / 6), 2 * widthOf(ink->bottom + height / 3));
}

TEST(Title, keepsTheLinesThatItHas) {
    EXPECT_EQ(inkOf(fill(titleOf("HHH\nHHH"), 640, 360))->rowGroups, 2);
    EXPECT_EQ(inkOf(fill(titleOf("HHH\r\nHHH\rHHH"), 640, 360))->rowGroups, 3);
}

TEST(Title, breaksLinesThatAreTooLong) {
    const std::optional<Ink> words = inkOf(fill(titleOf("HHHHH HHHHH HHHHH"), 200, 360));
    ASSERT_TRUE(words);
    EXPECT_GE(words->rowGroups, 2);
    EXPECT_GE(words->left, 15);
    EXPECT_LE(words->right, 185);
    const std::optional<Ink> word = inkOf(fill(titleOf(repeated("H", 60)), 200, 360));
    ASSERT_TRUE(word);
    EXPECT_GE(word->rowGroups, 2) << "a word longer than a line";
    EXPECT_GE(word->left, 15);
    EXPECT_LE(word->right, 185);
}

TEST(Title, growsWithThePicture) {
    const std::optional<Ink> small = inkOf(fill(titleOf("HHH"), 320, 180));
    const std::optional<Ink> large = inkOf(fill(titleOf("HHH"), 1280, 720));
    ASSERT_TRUE(small && large);
    EXPECT_NEAR(large->top - large->bottom, 4 * (small->top - small->bottom), 12);
}

TEST(Title, getsSmallerTheMoreItSays) {
    const auto heightOfLine = [](int lines) {
        const std::optional<Ink> ink = inkOf(fill(titleOf(repeated("HHH\n", lines - 1) + "HHH"), 640, 360));
        EXPECT_EQ(ink->rowGroups, lines);
        return (ink->top - ink->bottom) / lines;
    };
    EXPECT_LT(heightOfLine(12), heightOfLine(2));
}

TEST(Title, cutsOffWhatDoesNotFit) {
    const GeneratedPicture picture = fill(titleOf(repeated("word ", 5000)), 320, 180);
    EXPECT_EQ(picture, fill(titleOf(repeated("word ", 5000) + "more"), 320, 180));
    const std::optional<Ink> ink = inkOf(picture);
    ASSERT_TRUE(ink);
    EXPECT_GE(ink->bottom, 180 / 10 - 4);
    EXPECT_LE(ink->top, 180 - 180 / 10 + 4);
    const std::optional<Ink> lines = inkOf(fill(titleOf(repeated("line\n", 300)), 320, 180));
    ASSERT_TRUE(lines);
    EXPECT_GE(lines->bottom, 180 / 10 - 4);
}

TEST(Title, putsAnEllipsisInThePlaceOfWhatIsCutOff) {
    // Lines of high letters; the dots that take the place of the rest stay low, at the end of the last line.
    const GeneratedPicture picture = fill(titleOf(repeated("HH\n", 300)), 320, 180);
    const std::optional<Ink> ink = inkOf(picture);
    ASSERT_TRUE(ink);
    const auto widthIn = [&](int bottom, int top) {
        int left = picture.width;
        int right = 0;
        for (int y = bottom; y < top; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                if (picture.at(x, y)[3] == 0) continue;
                left = std::min(left, x);
                right = std::max(right, x);
            }
        }
        return right - left;
    };
    EXPECT_GT(widthIn(ink->bottom, ink->bottom + 3), widthIn(ink->top - 3, ink->top) + 3);
}

TEST(Title, runsFromRightToLeftWhereItsScriptDoes) {
    // The dots end the sentence: on the left of Arabic, on the right of Latin letters.
    const auto heightsOf = [](std::string const& text) {
        const GeneratedPicture picture = fill(titleOf(text), 640, 360);
        const std::optional<Ink> ink = inkOf(picture);
        const int part = (ink->right - ink->left) / 5;
        const std::optional<Ink> left = inkOf(picture, ink->left, ink->left + part);
        const std::optional<Ink> right = inkOf(picture, ink->right - part, ink->right);
        return std::pair(left->top - left->bottom, right->top - right->bottom);
    };
    const auto [leftOfArabic, rightOfArabic] = heightsOf("\u0644\u0644\u0644\u0644........");
    EXPECT_LT(leftOfArabic * 2, rightOfArabic);
    const auto [leftOfLatin, rightOfLatin] = heightsOf("llll........");
    EXPECT_LT(rightOfLatin * 2, leftOfLatin);
}

TEST(Title, isEmptyWithoutText) {
    for (const char* text : {"", " ", "\n\n"})
        EXPECT_FALSE(inkOf(fill(titleOf(text), 64, 36))) << text;
}

TEST(Title, survivesTextThatIsNone) {
    EXPECT_TRUE(inkOf(fill(titleOf("\xff\xfe\xc3"), 64, 36)));
    EXPECT_TRUE(inkOf(fill(titleOf(std::string("a\0b\tc\x01", 6)), 64, 36)));
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{1, 1}, {1, 400}, {400, 1}})
        EXPECT_EQ(fill(titleOf("no room for this"), width, height).width, width);
}

TEST(Title, looksTheSameInAllItsFrames) {
    EXPECT_EQ(fill(titleOf("Hello"), 160, 90, 0), fill(titleOf("Hello"), 160, 90, 77));
}

TEST(RamGeneratorSegment, fillsMemoryWithASolidColourToo) {
    const GeneratedPicture picture = fill(generatorOf(Kind::solid_colour, {1, 0.5, 0, 0.4}), 5, 3);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x) {
            const Pixel expected{102, 51, 0, 102};
            for (size_t i = 0; i < 4; ++i)
                EXPECT_NEAR(picture.at(x, y)[i], expected[i], 1);
        }
    }
}

TEST(RamGeneratorSegment, refusesOtherSizesFormatsAndGenerators) {
    const Time time(0, Rational(24, 1));
    std::vector<unsigned char> memory(8 * 8 * 16, 7);
    const std::vector<unsigned char> untouched = memory;
    const auto statusOf = [&](Generator const& generator, unsigned int size, VideoBufferResolution const& format) {
        return RamGeneratorSegment::create(generator)->renderToRam(memory.data(), size, format, time).get();
    };
    const Generator title = titleOf("Hello");
    EXPECT_EQ(statusOf(title, 255, formatOf(8, 8)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 257, formatOf(8, 8)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 512, VideoBufferResolution(8, 8, 4, 16, false)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 1024, VideoBufferResolution(8, 8, 4, 32, true)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 192, VideoBufferResolution(8, 8, 3, 8, false)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 0, formatOf(0, 8)), Status::invalid_argument);
    EXPECT_EQ(statusOf(title, 0, formatOf(-8, -8)), Status::invalid_argument);
    EXPECT_EQ(statusOf(generatorOf(Kind::smpte_bars), 256, formatOf(8, 8)), Status::invalid_query);
    const auto segment = RamGeneratorSegment::create(title);
    EXPECT_EQ(segment->renderToRam(nullptr, 256, formatOf(8, 8), time).get(), Status::invalid_argument);
    EXPECT_EQ(segment->renderToTexture(1, 1, formatOf(8, 8), time).get(), Status::invalid_query);
    EXPECT_EQ(memory, untouched);
}

}  // namespace
}  // namespace qrtplay
