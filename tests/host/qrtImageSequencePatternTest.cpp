#include "timeline/qrtImageSequencePattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/qrtOtioTools.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

ImageSequenceName parsed(std::string const& pattern) {
    ImageSequenceName images;
    const Outcome outcome = parseImageSequencePattern(pattern, images);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return images;
}

TEST(ImageSequencePattern, takesSignsAndTheMannerOfPrintfForTheSame) {
    for (const char* const pattern : {"shots/plate.####.exr", "shots/plate.@@@@.exr", "shots/plate.%04d.exr"}) {
        EXPECT_TRUE(isImageSequencePattern(pattern)) << pattern;
        ImageSequenceName images = parsed(pattern);
        EXPECT_EQ(images.folder, "shots");
        EXPECT_EQ(images.text(), "shots/plate.####.exr");
        images.firstNumber = 998;
        EXPECT_EQ(images.pathOf(0), "shots/plate.0998.exr");
        EXPECT_EQ(images.pathOf(9002), "shots/plate.10000.exr");
    }
    EXPECT_EQ(parsed("/plate%d.png").pathOf(7), "/plate7.png");
}

TEST(ImageSequencePattern, looksForThePlaceInTheFileNameOnly) {
    EXPECT_FALSE(isImageSequencePattern("take #3/plate.exr"));
    EXPECT_EQ(parsed("take #3/plate.#.exr").folder, "take #3");
    EXPECT_EQ(parsed("plate.#.exr").folder, ".");
    EXPECT_EQ(parsed("/plate.#.exr").folder, "/");
    EXPECT_EQ(parsed("//shots//a///plate.#.exr").folder, "//shots//a") << "however many slashes there are";
}

TEST(ImageSequencePattern, refusesNamesWithoutAPlaceOrWithTwo) {
    ImageSequenceName images;
    EXPECT_EQ(parseImageSequencePattern("plate.exr", images).message(),
              "images 'plate.exr': has no place for the number, such as #### or %04d");
    EXPECT_EQ(parseImageSequencePattern("#.%04d.exr", images).message(),
              "images '#.%04d.exr': has more than one place for the number");
}

TEST(ImageSequencePattern, takesNamesAsLongAsACommandLine) {
    const std::string signs(200'000, '#');
    EXPECT_TRUE(isImageSequencePattern(signs));
    EXPECT_EQ(parsed(signs + ".exr").digits, signs.size());
    ImageSequenceName images;
    EXPECT_TRUE(parseImageSequencePattern(signs + "." + signs, images).failed());
    EXPECT_FALSE(isImageSequencePattern(std::string(200'000, '%')));
}

TEST(ImageSequencePattern, tellsPercentSignsOfOtherKindsApart) {
    EXPECT_EQ(parsed("100%%04d.exr").prefix, "100%");
    for (const char* const pattern : {"50%.exr", "%00d.exr", "%4d.exr", "%04x.exr", "%", "%0", "%04", "a%0d"})
        EXPECT_FALSE(isImageSequencePattern(pattern)) << pattern;
}

TEST(ImageSequencePattern, saysWhatIsWrongInOneLineWhateverTheNameHolds) {
    ImageSequenceName images;
    EXPECT_EQ(parseImageSequencePattern("pla\nte.exr", images).message(),
              "images 'pla?te.exr': has no place for the number, such as #### or %04d");
    EXPECT_THAT(findImages("/none/pla\nte.#.exr", Rational(24, 1), images).message(), ::testing::Not(HasSubstr("\n")));
}

TEST(ImageSequencePattern, findsTheNumbersOfTheFilesThatAreThere) {
    const TestFolder folder;
    for (const char* const name : {"a.0003.png", "a.0007.png", "a.10000.png", "a.12.png", "a.00001.png", "b.0001.png",
                                   "a.0001.jpg", "a.000x.png", "a..png"})
        folder.write(name, "");
    ImageSequenceName images;
    const Outcome outcome = findImages(folder.path() + "/a.####.png", Rational(25, 1), images);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(images.firstNumber, 3);
    EXPECT_EQ(images.lastNumber, 10000);
    EXPECT_EQ(images.frameCount(), 9998);
    EXPECT_EQ(images.rate, Rational(25, 1));
    EXPECT_EQ(images.pathOf(4), folder.path() + "/a.0007.png");
}

TEST(ImageSequencePattern, takesZeroWithASignForNoNumber) {
    const TestFolder folder;
    for (const char* const name : {"a.-00.png", "a.05.png"})
        folder.write(name, "");
    ImageSequenceName images;
    ASSERT_TRUE(findImages(folder.path() + "/a.##.png", Rational(25, 1), images).success());
    EXPECT_EQ(images.firstNumber, 5) << "frame 0 would be a.00.png, which is not there";
}

TEST(ImageSequencePattern, saysWhenNothingIsThere) {
    const TestFolder folder;
    ImageSequenceName images;
    const std::string pattern = folder.path() + "/a.##.png";
    EXPECT_EQ(findImages(pattern, Rational(24, 1), images).message(),
              "images '" + pattern + "': there is no such file");
    EXPECT_THAT(findImages(folder.path() + "/none/a.##.png", Rational(24, 1), images).message(),
                HasSubstr("/none/a.##.png': cannot read the folder: "));
}

TEST(ImageSequenceName, writesNumbersBeforeZeroWithTheirSignFirst) {
    ImageSequenceName images = parsed("a.####.png");
    images.firstNumber = -2;
    images.step = 5;
    EXPECT_EQ(images.pathOf(0), "./a.-0002.png");
    EXPECT_EQ(images.pathOf(1), "./a.0003.png");
}

TEST(MediaReference, isCalledAsPeopleLookForIt) {
    MediaReference media;
    media.name = "shot_040";
    EXPECT_EQ(media.text(), "shot_040");
    media.path = "/media/040.mov";
    EXPECT_EQ(media.text(), "/media/040.mov");
    media.kind = MediaReference::Kind::image_sequence;
    media.images = parsed("x/a.##.png");
    EXPECT_EQ(media.text(), "x/a.##.png");
}

}  // namespace
}  // namespace qrtplay
