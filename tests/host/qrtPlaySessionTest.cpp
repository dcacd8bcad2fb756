#include "render/qrtPlaySession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "host/qrtReferencePicture.h"
#include "host/qrtTestClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr int colourRounding = 3;  // as in the tests of the graph engine

PlayInput inputOf(std::string const& clip) {
    PlayInput input;
    input.files = {clipPath(clip)};
    return input;
}

std::unique_ptr<PlaySession> openSession(std::string const& clip, PlaySettings const& settings = {}) {
    std::unique_ptr<PlaySession> session;
    OpenFailure why{};
    const Outcome outcome = PlaySession::open(inputOf(clip), settings, session, why);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return session;
}

/// How far a fetched frame is from FFmpeg's decode of the same number.
int differenceOf(PlaySession& session, OpenClip& clip, int64 frame) {
    PixelBlock block;
    const Outcome outcome = session.fetch(frame, block);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    FramePtr picture;
    EXPECT_TRUE(clip.picture(frame, picture).success());
    if (!picture || block.empty()) return 256;
    std::vector<unsigned char> bottomFirst;
    for (int32 row = block.height - 1; row >= 0; --row)
        bottomFirst.insert(bottomFirst.end(), block.row(row), block.row(row) + block.strideInBytes());
    return largestDifference(bottomFirst, referenceColours(*picture, clip.facts()), block.width, block.height);
}

/// Frames that went all the way through the player, for both kinds of delivery.
class PlayedFrames : public ::testing::TestWithParam<bool> {
protected:
    PlaySettings settings() const {
        PlaySettings settings;
        settings.ramOutputs = GetParam();
        return settings;
    }
};

TEST_P(PlayedFrames, areThoseOfTheirNumberForwards) {
    const auto session = openSession("bframes.mp4", settings());
    OpenClip clip("bframes.mp4");
    ASSERT_TRUE(session->start({0, 47, 1}).success());
    for (int64 frame = 0; frame < 48; ++frame)
        EXPECT_LE(differenceOf(*session, clip, frame), colourRounding) << frame;
    EXPECT_EQ(session->counts().delivered, 48);
    EXPECT_EQ(session->counts().cacheHits + session->counts().onDemand, 48);
}

TEST_P(PlayedFrames, areThoseOfTheirNumberBackwards) {
    const auto session = openSession("opengop.mp4", settings());
    OpenClip clip("opengop.mp4");
    ASSERT_TRUE(session->start({47, 0, -1}).success());
    for (int64 frame = 47; frame >= 0; --frame)
        EXPECT_LE(differenceOf(*session, clip, frame), colourRounding) << frame;
}

TEST_P(PlayedFrames, areThoseOfTheirNumberInRandomOrder) {
    const auto session = openSession("offset.mkv", settings());
    OpenClip clip("offset.mkv");
    std::vector<int64> frames(48);
    std::iota(frames.begin(), frames.end(), 0);
    constexpr unsigned seed = 81;
    std::mt19937 random(seed);
    std::shuffle(frames.begin(), frames.end(), random);
    ASSERT_TRUE(session->start({0, 47, 1}).success());
    for (const int64 frame : frames)
        EXPECT_LE(differenceOf(*session, clip, frame), colourRounding) << frame;
}

TEST_P(PlayedFrames, comeInOddSizes) {
    const auto session = openSession("odd.mkv", settings());
    OpenClip clip("odd.mkv");
    EXPECT_EQ(session->resolution(), QSize(33, 17));
    EXPECT_LE(differenceOf(*session, clip, 5), colourRounding);
}

INSTANTIATE_TEST_SUITE_P(Outputs, PlayedFrames, ::testing::Values(false, true),
                         [](const auto& caseInfo) { return caseInfo.param ? "ram" : "vram"; });

TEST(PlaySession, namesTheFrameThatFailsAndPlaysOn) {
    const auto session = openSession("truncated.mp4");
    OpenClip whole("bframes.mp4");
    ASSERT_TRUE(session->start({0, 47, 1}).success());
    PixelBlock image;
    const Outcome outcome = session->fetch(30, image);
    EXPECT_EQ(outcome.message(), clipPath("truncated.mp4") + ": frame 30: missing, the file is cut off");
    EXPECT_TRUE(image.empty());
    EXPECT_LE(differenceOf(*session, whole, 10), colourRounding);
    EXPECT_EQ(session->counts().delivered, 1);
}

TEST(PlaySession, findsFramesRenderedAheadInTheCache) {
    PlaySettings settings;
    settings.headFrames = 4;
    settings.tailFrames = 2;
    const auto session = openSession("bframes.mp4", settings);
    ASSERT_TRUE(session->start({0, 47, 1}).success());
    PixelBlock image;
    ASSERT_TRUE(session->fetch(0, image).success());
    ASSERT_TRUE(session->fetch(0, image).success());
    EXPECT_GE(session->counts().cacheHits, 1);
    EXPECT_EQ(session->counts().delivered, 2);
}

TEST(PlaySession, letsThePlayerRenderAheadOfAHostThatIsQuicker) {
    const auto session = openSession("bframes.mp4");
    ASSERT_TRUE(session->start({0, 47, 1}).success());
    PixelBlock image;
    for (int64 frame = 0; frame < 48; ++frame)
        ASSERT_TRUE(session->fetch(frame, image).success());
    EXPECT_GE(session->counts().cacheHits, 40) << "frames were asked for on demand, each for itself";
}

TEST(PlaySession, widensPixelsThatAreNotSquareUnlessTold) {
    EXPECT_EQ(openSession("anamorphic.mp4")->resolution(), QSize(128, 48));
    PlaySettings settings;
    settings.resolution = QSize(50, 40);
    EXPECT_EQ(openSession("anamorphic.mp4", settings)->resolution(), QSize(50, 40));
}

TEST(PlaySession, refusesMoreMemoryThanThereIs) {
    PlaySettings settings;
    settings.resolution = QSize(8000, 8000);
    settings.headFrames = 10000;
    std::unique_ptr<PlaySession> session;
    OpenFailure why{};
    const Outcome outcome = PlaySession::open(inputOf("bframes.mp4"), settings, session, why);
    EXPECT_EQ(why, OpenFailure::failed);
    EXPECT_THAT(outcome.message(), HasSubstr("resolution 8000x8000: 10004 frames need"));
    EXPECT_EQ(session, nullptr);
}

TEST(PlaySession, refusesARangeOutsideTheClip) {
    const auto session = openSession("bframes.mp4");
    EXPECT_TRUE(session->start({0, 48, 1}).failed());
    EXPECT_TRUE(session->start({0, 47, 1}).success());
}

TEST(PlaySession, canBeOpenedAgainAndAgain) {
    OpenClip clip("bt709.mp4");
    for (int round = 0; round < 5; ++round) {
        const auto session = openSession("bt709.mp4");
        EXPECT_LE(differenceOf(*session, clip, round), colourRounding);
    }
}

TEST(PlaySession, saysWhyNothingCanBePlayed) {
    std::unique_ptr<PlaySession> session;
    OpenFailure why{};
    EXPECT_THAT(PlaySession::open(inputOf("nowhere.mov"), {}, session, why).message(), HasSubstr("nowhere.mov"));
    EXPECT_EQ(why, OpenFailure::input_missing);
    EXPECT_THAT(PlaySession::open(inputOf("bframes.raw"), {}, session, why).message(), HasSubstr("bframes.raw"));
    EXPECT_EQ(why, OpenFailure::refused);
    EXPECT_EQ(session, nullptr);
}

TEST(PlaySession, playsSeveralClipsOneAfterTheOther) {
    PixelBlock alone;
    ASSERT_TRUE(openSession("bframes.mp4")->fetch(7, alone).success());
    PlayInput input;
    input.files = {clipPath("bt709.mp4"), clipPath("bframes.mp4")};
    PlaySettings settings;
    settings.resolution = QSize(160, 96);
    std::unique_ptr<PlaySession> session;
    OpenFailure why{};
    ASSERT_TRUE(PlaySession::open(input, settings, session, why).success());
    OpenClip first("bt709.mp4");
    OpenClip second("bframes.mp4");
    const int64 cut = first.facts().frameCount;
    EXPECT_EQ(session->frameCount(), cut + second.facts().frameCount);
    PixelBlock joined;
    ASSERT_TRUE(session->fetch(cut + 7, joined).success());
    EXPECT_TRUE(std::equal(alone.row(0), alone.row(0) + alone.sizeInBytes(), joined.row(0)));
}

}  // namespace
}  // namespace qrtplay
