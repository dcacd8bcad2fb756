#include "media/qrtOpenPictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/qrtTestClips.h"
#include "media/qrtPictureStore.h"

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

class PicturesDecodedAhead : public ::testing::TestWithParam<const char*> {};

TEST_P(PicturesDecodedAhead, areThoseOfTheirNumbersInBothDirections) {
    const auto open = [](size_t, std::unique_ptr<PictureSource>& source) {
        return openPictures(file(GetParam()), source);
    };
    constexpr size_t roomForAFewPictures = 600'000;
    PictureStore store(1, open, roomForAFewPictures);
    const ReferenceFrames reference(GetParam(), AV_PIX_FMT_YUV420P, 160, 96);
    PictureStore::Answer answer;
    ASSERT_TRUE(store.picture({}, answer).success());
    const Rational rate = answer.facts.frameRate;
    for (const int64 direction : {1, -1}) {
        for (int64 step = 0; step < 48; ++step) {
            const int64 frame = direction > 0 ? step : 47 - step;
            std::vector<PictureStore::Wish> ahead;
            for (int64 next = 0; next < 8; ++next)
                ahead.push_back({0, ExactTime::ofFrame(frame + direction * next, rate)});
            store.prepare(ahead);
            const Outcome outcome = store.picture(ahead.front(), answer);
            ASSERT_TRUE(outcome.success()) << outcome.message();
            EXPECT_EQ(answer.key.frame, frame);
            ASSERT_TRUE(bytesOf(*answer.picture) == reference.frame(frame)) << frame;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Clips, PicturesDecodedAhead,
                         ::testing::Values("bframes.mp4", "opengop.mp4", "longgroup.mp4", "hevc.mp4", "vp9.webm",
                                           "transport.ts", "elementary.h264"),
                         [](const auto& caseInfo) {
                             const std::string name = caseInfo.param;
                             return name.substr(0, name.find('.'));
                         });

}  // namespace
}  // namespace qrtplay
