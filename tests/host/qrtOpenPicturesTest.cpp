#include "media/qrtOpenPictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/qrtTestClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

MediaReference file(std::string const& name) {
    MediaReference reference;
    reference.kind = MediaReference::Kind::file;
    reference.path = clipPath(name);
    return reference;
}

TEST(OpenPictures, opensAClip) {
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = openPictures(file("bframes.mp4"), source);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(source->facts().frameCount, 48);
    EXPECT_EQ(source->facts().codecName, "h264");
}

TEST(OpenPictures, opensASinglePicture) {
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = openPictures(file("stills/plate.0101.png"), source);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(source->facts().frameCount, 1);
    EXPECT_EQ(source->facts().colour.transfer, AVCOL_TRC_IEC61966_2_1);
}

TEST(OpenPictures, opensASequenceOfPictures) {
    MediaReference reference;
    reference.kind = MediaReference::Kind::image_sequence;
    reference.images = {clipPath("stills"), "plate.", ".png", 4, 101, 105, 1, Rational(25, 1)};
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = openPictures(reference, source);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(source->facts().frameCount, 5);
}

TEST(OpenPictures, namesWhatItCannotOpen) {
    std::unique_ptr<PictureSource> source;
    MediaReference missing;
    missing.name = "shot 12";
    EXPECT_EQ(openPictures(missing, source).message(), "shot 12: is missing");
    for (const char* const name : {"no-such.mp4", "no-such.png", "folder.mp4", "audio.m4a", "text.mp4"})
        EXPECT_THAT(openPictures(file(name), source).message(), HasSubstr(clipPath(name))) << name;
    EXPECT_THAT(openPictures(file("audio.m4a"), source).message(), HasSubstr("has no video"));
    EXPECT_EQ(source, nullptr);
}

}  // namespace
}  // namespace qrtplay
