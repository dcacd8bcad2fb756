// Timelines through the whole of host and player, on media that carry their numbers, against plain arithmetic.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <set>

#include "encode/qrtImageWriter.h"
#include "encode/qrtOutputFolder.h"
#include "host/qrtOtioText.h"
#include "render/qrtPlaySession.h"

namespace qrtplay {
namespace {

const std::string media = QRT_PAINTED_MEDIA;

/// Red tells the frame of a media, green the media: see make-painted-media.sh.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

Colour film(int64 frame) {
    return {static_cast<double>(frame), 20, 0};
}
Colour pal(int64 frame) {
    return {static_cast<double>(frame), 120, 0};
}
Colour ntsc(int64 frame) {
    return {static_cast<double>(frame), 220, 0};
}
Colour blue(int64 frame) {
    return {0, static_cast<double>(frame), 255};
}

Colour mixed(Colour const& from, Colour const& to, double share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

/// A timeline of text in a file of its own, playing.
class PlayedTimeline {
public:
    explicit PlayedTimeline(std::string const& otio, PlaySettings const& settings = {})
        : m_file(media + "/" + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".otio") {
        writeText(m_file, otio);
        OpenFailure why{};
        const Outcome outcome = PlaySession::open({{m_file}, {}, Rational(24, 1)}, settings, m_session, why);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        EXPECT_THAT(m_session->takeWarnings(), ::testing::IsEmpty());
    }

    PlaySession& session() { return *m_session; }

    /// The colour in the middle of a frame; a test failure when the frame has more than one.
    Colour colourOf(int64 frame) {
        PixelBlock block;
        const Outcome outcome = m_session->fetch(frame, block);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        if (block.empty()) return {-1, -1, -1};
        std::uint8_t const* const middle = block.row(block.height / 2) + 4 * (block.width / 2);
        std::uint8_t const* const corner = block.row(0);
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(middle[channel], corner[channel], 1) << frame;
        EXPECT_EQ(middle[3], 255) << frame;
        return {static_cast<double>(middle[0]), static_cast<double>(middle[1]), static_cast<double>(middle[2])};
    }

    void expectColour(int64 frame, Colour const& expected) {
        const Colour seen = colourOf(frame);
        constexpr double rounding = 1.01;
        EXPECT_NEAR(seen.red, expected.red, rounding) << "frame " << frame;
        EXPECT_NEAR(seen.green, expected.green, rounding) << "frame " << frame;
        EXPECT_NEAR(seen.blue, expected.blue, rounding) << "frame " << frame;
    }

private:
    const std::string m_file;
    std::unique_ptr<PlaySession> m_session;
};

/// Cuts, a dissolve, retimes and three rates on one track at 24 frames per second.
///
///   0-47     film from frame 10            48-95   pal from frame 25; both with a dissolve from 36 to 59
///   96-119   film from 100, twice as fast  120-143 film 0-23 backwards
///   144-155  film 7, frozen                156-167 a gap
///   168-191  ntsc from frame 30            192-215 film from 60 at half speed
std::string mixedTrack() {
    return otio::track("Video", {otio::clip(otio::file(media + "/film.mkv"), {10, 48, 24}), otio::dissolve(12, 12, 24),
                                 otio::clip(otio::file(media + "/pal.mkv"), {25, 50, 25}),
                                 otio::clip(otio::file(media + "/film.mkv"), {100, 24, 24}, otio::speed(2)),
                                 otio::clip(otio::file(media + "/film.mkv"), {0, 24, 24}, otio::speed(-1)),
                                 otio::clip(otio::file(media + "/film.mkv"), {7, 12, 24}, otio::freeze()),
                                 otio::gap({0, 12, 24}), otio::clip(otio::file(media + "/ntsc.mkv"), {24, 24, 24}),
                                 otio::clip(otio::file(media + "/film.mkv"), {60, 24, 24}, otio::speed(0.5))});
}
constexpr int64 mixedFrames = 216;

Colour mixedColour(int64 frame) {
    // Of a moment in frames of 24 a second, the frame of 25 that has begun.
    const auto palAt = [](int64 filmFrames) { return 25 + filmFrames * 25 / 24; };
    if (frame < 36) return film(10 + frame);
    if (frame < 60) {
        const int64 sinceCut = frame - 48;
        const int64 palFrame = sinceCut >= 0 ? palAt(sinceCut) : 25 - (-sinceCut * 25 + 23) / 24;
        return mixed(film(10 + frame), pal(palFrame), (static_cast<double>(frame - 36) + 0.5) / 24.0);
    }
    if (frame < 96) return pal(palAt(frame - 48));
    if (frame < 120) return film(100 + 2 * (frame - 96));
    if (frame < 144) return film(143 - frame);
    if (frame < 156) return film(7);
    if (frame < 168) return {};
    // A second of 24 frames from second 1 on: 30000/1001 frames a second, of which 29.97 have gone by.
    if (frame < 192) return ntsc((24 + frame - 168) * 30000 / (24 * 1001));
    return film(60 + (frame - 192) / 2);
}

TEST(TimelinePlayback, showsEachFrameOfCutsDissolvesRetimesAndMixedRates) {
    PlayedTimeline played(otio::timeline({mixedTrack()}));
    ASSERT_EQ(played.session().frameCount(), mixedFrames);
    ASSERT_TRUE(played.session().start({0, mixedFrames - 1, 1}).success());
    for (int64 frame = 0; frame < mixedFrames; ++frame)
        played.expectColour(frame, mixedColour(frame));
}

TEST(TimelinePlayback, showsTheSameBackwards) {
    PlayedTimeline played(otio::timeline({mixedTrack()}));
    ASSERT_TRUE(played.session().start({mixedFrames - 1, 0, -1}).success());
    for (int64 frame = mixedFrames - 1; frame >= 0; --frame)
        played.expectColour(frame, mixedColour(frame));
}

TEST(TimelinePlayback, showsTheSameWhereverOneLooks) {
    PlayedTimeline played(otio::timeline({mixedTrack()}));
    int64 frame = 0;
    for (int i = 0; i < 60; ++i) {
        played.expectColour(frame, mixedColour(frame));
        frame = (frame + 131) % mixedFrames;
    }
}

TEST(TimelinePlayback, showsTheSameAsFramesInMemory) {
    PlaySettings settings;
    settings.ramOutputs = true;
    PlayedTimeline played(otio::timeline({mixedTrack()}), settings);
    ASSERT_TRUE(played.session().start({0, mixedFrames - 1, 1}).success());
    for (int64 frame = 0; frame < mixedFrames; frame += 5)
        played.expectColour(frame, mixedColour(frame));
}

TEST(TimelinePlayback, repeatsAndLeavesOutFramesAtAnotherOutputRate) {
    PlaySettings settings;
    settings.outputRate = Rational(60, 1);
    PlayedTimeline played(
        otio::timeline({otio::track("Video", {otio::clip(otio::file(media + "/film.mkv"), {10, 48, 24})})}), settings);
    ASSERT_EQ(played.session().frameCount(), 120);
    ASSERT_TRUE(played.session().start({0, 119, 1}).success());
    for (int64 frame = 0; frame < 120; ++frame)
        played.expectColour(frame, film(10 + frame * 24 / 60));
}

TEST(TimelinePlayback, laysTracksOverEachOtherByTheirAlpha) {
    // Every second image number at 24 frames per second: each stays for two frames.
    const std::string overlay = otio::track(
        "Video", {otio::gap({0, 24, 24}),
                  otio::clip(otio::images(media + "/overlay/", "blue.", ".png", 1001, 2, 24, 48), {4, 24, 24})});
    PlayedTimeline played(otio::timeline({mixedTrack(), overlay}));
    ASSERT_TRUE(played.session().start({0, 95, 1}).success());
    for (int64 frame = 0; frame < 96; ++frame) {
        const Colour below = mixedColour(frame);
        const bool isCovered = frame >= 24 && frame < 48;
        played.expectColour(frame, isCovered ? mixed(below, blue((frame - 24 + 4) / 2), 128.0 / 255) : below);
    }
}

TEST(TimelinePlayback, playsStacksInsideOfTracksWithTheirOwnRangeAndSpeed) {
    const std::string inner = otio::track("Video", {otio::clip(otio::file(media + "/film.mkv"), {0, 24, 24}),
                                                    otio::clip(otio::file(media + "/pal.mkv"), {0, 50, 25})});
    PlayedTimeline played(otio::timeline(
        {otio::track("Video", {otio::clip(otio::file(media + "/film.mkv"), {200, 6, 24}),
                               otio::stack({inner}, std::make_optional(otio::Range{12, 24, 24}), otio::speed(2))})}));
    ASSERT_EQ(played.session().frameCount(), 30);
    for (int64 frame = 0; frame < 30; ++frame) {
        if (frame < 6) {
            played.expectColour(frame, film(200 + frame));
            continue;
        }
        const int64 within = 12 + 2 * (frame - 6);
        played.expectColour(frame, within < 24 ? film(within) : pal((within - 24) * 25 / 24));
    }
}

TEST(TimelinePlayback, hearsEachImpulseAtItsSample) {
    const std::string sound =
        otio::track("Audio", {otio::clip(otio::file(media + "/impulses.wav"), {10, 24, 24}), otio::gap({0, 12, 24}),
                              otio::clip(otio::file(media + "/impulses.wav"), {100, 12, 24})});
    PlayedTimeline played(otio::timeline({mixedTrack(), sound}));
    ASSERT_TRUE(played.session().hasSound());
    constexpr int64 samplesPerFrame = 2000;
    std::vector<float> samples;
    ASSERT_TRUE(played.session().readSound(0, 60 * samplesPerFrame, samples).success());
    ASSERT_EQ(samples.size(), size_t{60} * samplesPerFrame * 2);
    for (int64 sample = 0; sample < 60 * samplesPerFrame; ++sample) {
        const int64 frame = sample / samplesPerFrame;
        double expected = 0;
        if (sample % samplesPerFrame == 0 && frame < 24) expected = static_cast<double>(10 + frame + 1) / 256;
        if (sample % samplesPerFrame == 0 && frame >= 36 && frame < 48)
            expected = static_cast<double>(100 + frame - 36 + 1) / 256;
        for (size_t channel = 0; channel < 2; ++channel)
            ASSERT_NEAR(samples[static_cast<size_t>(sample) * 2 + channel], expected, 1e-6) << sample;
    }
}

TEST(TimelinePlayback, addsUpTheSoundOfTracks) {
    const std::string first = otio::track("Audio", {otio::clip(otio::file(media + "/impulses.wav"), {0, 24, 24})});
    const std::string second = otio::track("Audio", {otio::clip(otio::file(media + "/impulses.wav"), {50, 24, 24})});
    PlayedTimeline played(otio::timeline({mixedTrack(), first, second}));
    std::vector<float> samples;
    ASSERT_TRUE(played.session().readSound(2000 * 5, 1, samples).success());
    EXPECT_NEAR(samples[0], (6.0 + 56.0) / 256, 1e-6);
}

TEST(TimelinePlayback, showsASlateForMissingMediaAndGoesOn) {
    PlaySettings settings;
    settings.resolution = QSize(640, 360);
    const std::string file = media + "/missing.otio";
    writeText(file, otio::timeline({otio::track("Video", {otio::clip(otio::file(media + "/nowhere.mov"), {0, 12, 24}),
                                                          otio::clip(otio::file(media + "/film.mkv"), {0, 12, 24})})}));
    std::unique_ptr<PlaySession> session;
    OpenFailure why{};
    ASSERT_TRUE(PlaySession::open({{file}, {}, Rational(24, 1)}, settings, session, why).success());
    PixelBlock slate;
    ASSERT_TRUE(session->fetch(3, slate).success());
    PixelBlock picture;
    ASSERT_TRUE(session->fetch(15, picture).success());
    EXPECT_EQ(picture.row(180)[4 * 320], 3);
    EXPECT_THAT(session->takeWarnings(), ::testing::Contains(::testing::HasSubstr("nowhere.mov")));
    // Letters: pixels of more than one colour.
    std::set<int> shades;
    for (int x = 0; x < 640; ++x) {
        for (int y = 0; y < 360; ++y)
            shades.insert(slate.row(y)[4 * x]);
    }
    EXPECT_GT(shades.size(), 8u);
}

TEST(TimelinePlayback, drawsGeneratorsOverAndAmongClips) {
    const std::string colour = otio::clip(otio::generator("SolidColor", R"({"color": [0, 0, 1, 0.5]})"), {0, 24, 24});
    PlayedTimeline played(otio::timeline({mixedTrack(), otio::track("Video", {otio::gap({0, 6, 24}), colour})}));
    for (int64 frame = 0; frame < 36; frame += 3) {
        const Colour below = mixedColour(frame);
        const bool isCovered = frame >= 6 && frame < 30;
        played.expectColour(frame, isCovered ? mixed(below, {0, 0, 255}, 0.5) : below);
    }
}

TEST(TimelinePlayback, showsFramesAgainThatWereWrittenAsExr) {
    PlaySettings deep;
    deep.depth = PixelFormat::rgba16f;
    const std::string folder = media + "/exr";
    ASSERT_TRUE(prepareFolder(folder).success());
    {
        PlayedTimeline played(otio::timeline({mixedTrack()}), deep);
        ImageWriter writer(90);
        for (int64 frame = 0; frame < 6; ++frame) {
            PixelBlock block;
            ASSERT_TRUE(played.session().fetch(100 + frame, block).success());
            writer.write(frame, folder + "/again.000" + std::to_string(frame) + ".exr", block);
        }
        writer.finish();
        for (WriteResult const& result : writer.takeResults())
            EXPECT_EQ(result.failure, "") << result.path;
    }
    PlayedTimeline again(otio::timeline(
        {otio::track("Video", {otio::clip(otio::images(folder + "/", "again.", ".exr", 0, 1, 24, 6), {0, 6, 24})})}));
    for (int64 frame = 0; frame < 6; ++frame)
        again.expectColour(frame, mixedColour(100 + frame));
}

}  // namespace
}  // namespace qrtplay
