// Standing still, and what changes below playback.
#include <algorithm>

#include "playback/qrtFrameReader.h"
#include "viewer/qrtPlaybackFixture.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST_F(PlaybackTest, showsTheFrameThatATimelineIsOpenedAt) {
    player = openTestPlayer({"bframes.mp4"});
    playback = std::make_unique<Playback>(clock, &sound);
    connectTo(*playback);
    playback->setPlayer(player.get(), 21);
    EXPECT_EQ(playback->whole(), (FrameSpan{0, 47}));
    EXPECT_EQ(playback->range(), (FrameSpan{0, 47}));
    EXPECT_EQ(playback->frame(), 21);
    EXPECT_FALSE(playback->isPlaying());
    waitForShown(1);
    EXPECT_EQ(shown[0].frame, 21);
    EXPECT_EQ(bytesOf(shown[0].buffer), bytesOf(*player, 21));
}

TEST_F(PlaybackTest, doesNothingWithoutATimeline) {
    playback = std::make_unique<Playback>(clock, nullptr);
    connectTo(*playback);
    EXPECT_EQ(playback->whole(), (FrameSpan{0, -1}));
    playback->play(1);
    playback->shuttle(1);
    playback->togglePlay();
    playback->seek(5);
    playback->scrub(5);
    playback->endScrub();
    playback->setInPoint(3);
    playback->refresh();
    playback->reconfigure([](TimelinePlayer&) { FAIL(); });
    playback->onTick();
    QCoreApplication::processEvents();
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(playback->frame(), 0);
    EXPECT_EQ(playback->inPoint(), std::nullopt);
    EXPECT_TRUE(shown.empty());
}

TEST_F(PlaybackTest, endsASeekOnTheExactFrameAndShowsNoneBefore) {
    open({"bframes.mp4"});
    playback->seek(11);
    waitUntilBegun(11);
    for (int64 frame : {5, 40, 9, 33, 12, 30})
        playback->seek(frame);
    EXPECT_EQ(playback->frame(), 30);
    waitForShown(1);
    settle();
    EXPECT_THAT(shownFrames(), Each(30));
    EXPECT_EQ(bytesOf(shown.back().buffer), bytesOf(*player, 30));
}

TEST_F(PlaybackTest, keepsASeekWithinTheTimeline) {
    open({"bframes.mp4"});
    playback->seek(1000);
    EXPECT_EQ(playback->frame(), 47);
    playback->seek(-3);
    EXPECT_EQ(playback->frame(), 0);
}

TEST_F(PlaybackTest, endsAScrubOnTheExactFrameAndNeverGoesBack) {
    open({"longgroup.mp4"});
    for (int64 frame = 1; frame <= 200; ++frame) {
        playback->scrub(frame);
        if (frame % 10 == 0) QCoreApplication::processEvents();
    }
    EXPECT_EQ(playback->frame(), 200);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 200; }));
    playback->endScrub();
    EXPECT_FALSE(playback->isPlaying());
    settle();
    const auto frames = shownFrames();
    EXPECT_TRUE(std::is_sorted(frames.begin(), frames.end()));
    EXPECT_EQ(frames.back(), 200);
}

TEST_F(PlaybackTest, helpsTheEyeWithFramesOnTheWayOfAScrub) {
    open({"bframes.mp4"});
    playback->scrub(11);
    waitUntilBegun(11);
    playback->scrub(25);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 25; }));
    EXPECT_THAT(shownFrames(), ElementsAre(11, 25));
}

TEST_F(PlaybackTest, playsOnAfterAScrubAsItPlayedBefore) {
    open({"bframes.mp4"});
    begin(2);
    playback->scrub(30);
    EXPECT_FALSE(playback->isPlaying());
    playback->scrub(33);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 33; }));
    shown.clear();
    playback->endScrub();
    EXPECT_TRUE(playback->isPlaying());
    EXPECT_EQ(playback->step(), 2);
    beganAt = clock.nanoseconds();
    waitForShown(1);
    playOn(1, 2);
    EXPECT_THAT(shownFrames(), ElementsAre(33, 35, 37));
}

TEST_F(PlaybackTest, doesNotPlayOnAfterAScrubThatAPauseOrASeekHasEnded) {
    open({"bframes.mp4"});
    begin();
    playback->scrub(30);
    playback->pause();
    playback->endScrub();
    EXPECT_FALSE(playback->isPlaying());
    begin();
    playback->scrub(20);
    playback->seek(21);
    playback->endScrub();
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(playback->frame(), 21);
}

TEST_F(PlaybackTest, rendersAheadTheWayTheUserSteps) {
    open({"longgroup.mp4"}, 100);
    EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(101); }));
    playback->seek(50);
    playback->seek(49);
    EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(48); }));
    // 50 may have been seen in passing.
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 49; }));
    const auto before = playback->statistics();
    playback->seek(48);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 48; }));
    EXPECT_EQ(playback->statistics().cacheHits, before.cacheHits + 1);
    EXPECT_TRUE(shown.back().wasReady);
}

TEST_F(PlaybackTest, showsFramesInPassingWhileTheUserSteps) {
    open({"longgroup.mp4"}, 100);
    for (int step = 1; step <= 20; ++step)
        playback->seek(100 + step);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 120; }));
    for (size_t i = 1; i < shown.size(); ++i)
        EXPECT_GT(shown[i].frame, shown[i - 1].frame) << "never back";
}

TEST_F(PlaybackTest, doesNotShowWhereAJumpHasOvertakenAnother) {
    open({"longgroup.mp4"}, 100);
    for (const int64 frame : {10, 200, 30, 150, 70})
        playback->seek(frame);
    waitForShown(1);
    EXPECT_EQ(shown[0].frame, 70);
}

TEST_F(PlaybackTest, countsWhatWasReadyAndWhatWasNot) {
    open({"longgroup.mp4"}, 10);
    EXPECT_EQ(fetched(), 1);
    const auto opened = playback->statistics();
    playback->seek(200);
    waitForShown(1);
    EXPECT_EQ(playback->statistics().onDemand, opened.onDemand + 1);
    EXPECT_EQ(playback->statistics().fetchTime, shown[0].nanoseconds);
    letGoOfFrames();
    ASSERT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(201); }));
    playback->seek(201);
    waitForShown(2);
    EXPECT_EQ(playback->statistics().cacheHits, opened.cacheHits + 1);
    playback->refresh();
    waitForShown(3);
    EXPECT_EQ(shown[2].frame, 201);
}

TEST_F(PlaybackTest, saysWhyAFrameCannotBeShown) {
    open({"truncated.mp4"});
    playback->seek(30);
    waitForShown(1);
    EXPECT_FALSE(shown[0].buffer);
    EXPECT_EQ(shown[0].frame, 30);
    EXPECT_THAT(shown[0].failure, HasSubstr("frame 30"));
}

// ---- Changes below

TEST_F(PlaybackTest, takesAnotherTimelineInTheMiddleOfPlaying) {
    open({"bframes.mp4"});
    playback->setInPoint(3);
    playback->setMode(PlayParams::loop);
    begin();
    EXPECT_TRUE(sound.isPlaying);
    const auto other = openTestPlayer({"longgroup.mp4"});
    ASSERT_TRUE(other);
    shown.clear();
    playback->setPlayer(other.get(), 7);
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_FALSE(sound.isPlaying);
    EXPECT_EQ(playback->frame(), 7);
    EXPECT_EQ(playback->inPoint(), std::nullopt);
    EXPECT_EQ(playback->whole(), (FrameSpan{0, 259}));
    EXPECT_EQ(playback->mode(), PlayParams::loop);
    EXPECT_EQ(player->player().stopProducing(), Status::not_producing);
    player.reset();  // is of no use any more
    waitForShown(1);
    EXPECT_EQ(fetched(), 1);
    settle();
    EXPECT_THAT(shownFrames(), Each(7));
    EXPECT_EQ(bytesOf(shown.back().buffer), bytesOf(*other, 7));
    playback->setPlayer(nullptr);
    EXPECT_EQ(playback->whole(), (FrameSpan{0, -1}));
    EXPECT_EQ(playback->frame(), 0);
    EXPECT_EQ(other->player().stopProducing(), Status::not_producing);
}

TEST_F(PlaybackTest, canBeDestroyedInTheMiddleOfAFetch) {
    open({"longgroup.mp4"});
    playback.reset();
    shown.clear();
    for (int64 round = 0; round < 30; ++round) {
        Playback brief(clock, &sound);
        connectTo(brief);
        brief.setPlayer(player.get(), round);
        if (round % 3 == 1) brief.play(1);
        if (round % 3 == 2) brief.scrub(200 - round);
        if (round % 2 == 1) continue;
        brief.setPlayer(nullptr);
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(shown.empty());
    EXPECT_EQ(player->player().stopProducing(), Status::not_producing);
}

TEST_F(PlaybackTest, canBeStoppedByWhoIsTold) {
    open({"bframes.mp4"});
    QObject::connect(playback.get(), &Playback::frameShown, [this](FetchedFrame const& frame) {
        if (frame.frame == 2) playback->pause();
    });
    begin();
    sound.time = due(1) - beganAt;
    waitForShown(2);
    sound.time = due(2) - beganAt;
    waitForShown(3);
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(playback->frame(), 2);
}

TEST_F(PlaybackTest, isReconfiguredWhileNothingIsRenderedAhead) {
    open({"bframes.mp4"}, 12);
    Status status;
    const auto halve = [&](TimelinePlayer& changed) {
        status = changed.player().setVideoResolution(outputFormat(32, 18, PixelFormat::rgba8));
    };
    playback->reconfigure(halve);
    EXPECT_TRUE(status.success());
    waitForShown(1);
    EXPECT_EQ(shown[0].frame, 12);
    ASSERT_TRUE(shown[0].buffer);
    EXPECT_EQ(shown[0].buffer->getResolution().getWidth(), 32);
    EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(13); }));
}

TEST_F(PlaybackTest, leavesTheRefusalToTheEngineWhilePlaying) {
    open({"longgroup.mp4"});
    for (int round = 0; round < 20; ++round) {
        playback->play(round % 2 == 0 ? 1 : -1);
        Status status;
        playback->reconfigure([&](TimelinePlayer& changed) {
            status = changed.player().setVideoResolution(outputFormat(32, 18, PixelFormat::rgba8));
        });
        ASSERT_EQ(status, Status::not_while_producing) << round;
        ASSERT_TRUE(playback->isPlaying());
    }
    shown.clear();
    const size_t before = shown.size();
    clock.moveBy(nanosecondsPerSecond);
    EXPECT_TRUE(processUntil([&] { return shown.size() > before; }));
}

TEST_F(PlaybackTest, tellsOfEveryChangeOfItsState) {
    open({"bframes.mp4"});
    const auto changes = [&](auto const& action) {
        const int before = states;
        action();
        return states - before;
    };
    EXPECT_EQ(changes([&] { playback->setMode(PlayParams::loop); }), 1);
    EXPECT_EQ(changes([&] { playback->setMode(PlayParams::loop); }), 0);
    EXPECT_EQ(changes([&] { playback->setPolicy(PacePolicy::every_frame); }), 1);
    EXPECT_EQ(changes([&] { playback->setPolicy(PacePolicy::every_frame); }), 0);
    EXPECT_EQ(changes([&] { playback->setMuted(true); }), 1);
    EXPECT_EQ(changes([&] { playback->setStride(2); }), 1);
    EXPECT_EQ(changes([&] { playback->play(2); }), 1);
    EXPECT_EQ(changes([&] { playback->shuttle(1); }), 1);
    EXPECT_EQ(changes([&] { playback->pause(); }), 1);
    EXPECT_EQ(changes([&] { playback->pause(); }), 0);
    EXPECT_EQ(changes([&] { playback->seek(3); }), 0);
}

}  // namespace
}  // namespace qrtplay
