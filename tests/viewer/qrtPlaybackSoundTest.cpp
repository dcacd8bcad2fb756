// Pictures that follow the sound.

#include "viewer/qrtPlaybackFixture.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(PlaybackTest, followsTheSoundWhereThereIsSome) {
    open({"bframes.mp4"});
    playback->setMode(PlayParams::loop);
    begin();
    EXPECT_TRUE(playback->followsSound());
    EXPECT_TRUE(sound.isPlaying);
    for (int64 tick = 1; tick < 100; ++tick) {
        ASSERT_NO_FATAL_FAILURE(waitForFetches(tick + 2));
        // The machine's clock runs much faster, and is of no meaning.
        clock.moveBy(nanosecondsPerSecond / 5);
        sound.time = due(tick) - beganAt - 1;
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick));
        sound.time = due(tick) - beganAt;
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick) + 1);
        ASSERT_EQ(shown.back().frame, tick % 48);
    }
    expectNoneLate();
    playback->pause();
    EXPECT_FALSE(sound.isPlaying);
    EXPECT_FALSE(playback->followsSound());
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(PlaybackTest, staysInStepWithTheSoundWhenPicturesComeLate) {
    open({"bframes.mp4"});
    playback->setMode(PlayParams::loop);
    begin();
    for (int turn = 0; turn < 100; ++turn) {
        const size_t before = shown.size();
        const int64 late = playback->statistics().counts.late;
        clock.moveBy(nanosecondsPerSecond / 500);  // a machine's clock that is not quite the device's
        spend(fetchTimeOf(turn));
        const bool isInTime = playback->statistics().counts.late == late;
        if (shown.size() > before && isInTime) {
            ASSERT_EQ(shown.back().frame, sound.time * 24 / nanosecondsPerSecond % 48) << turn;
        }
    }
    EXPECT_TRUE(playback->followsSound());
    EXPECT_EQ(sound.starts, 1);
    EXPECT_GT(playback->statistics().counts.skipped, 30);
    EXPECT_GT(playback->statistics().counts.shown, 30);
}

TEST_F(PlaybackTest, isSilentAtOtherSpeedsAndBackwards) {
    open({"bframes.mp4"}, 20);
    for (int step : {2, -1, -2}) {
        playback->play(step);
        const size_t before = shown.size();
        ASSERT_TRUE(processUntil([&] { return shown.size() > before; }));
        EXPECT_FALSE(playback->followsSound());
        playback->pause();
    }
    EXPECT_EQ(sound.starts, 0);
    begin(1);
    EXPECT_TRUE(playback->followsSound());
    playback->shuttle(1);
    EXPECT_FALSE(sound.isPlaying);
    EXPECT_FALSE(playback->followsSound());
    EXPECT_TRUE(playback->isPlaying());
}

TEST_F(PlaybackTest, goesOnWithoutAJumpWhenTheDeviceIsLost) {
    open({"bframes.mp4"});
    begin();
    for (int64 tick = 1; tick <= 2; ++tick) {
        waitForFetches(tick + 2);
        sound.time = due(tick) - beganAt;
        playback->onTick();
    }
    waitForFetches(5);
    ASSERT_EQ(shown.back().frame, 2);
    clock.moveBy(100 * nanosecondsPerSecond);    // which is of no meaning so far
    sound.time = due(3) - beganAt - 10'000'000;  // ten milliseconds before the next frame
    playback->onTick();
    sound.isThere = false;
    playback->onTick();
    EXPECT_FALSE(playback->followsSound());
    EXPECT_TRUE(playback->isPlaying());
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_THAT(notices[0], HasSubstr("sound device was lost"));
    clock.moveBy(9'999'999);
    playback->onTick();
    EXPECT_EQ(shown.back().frame, 2);
    clock.moveBy(1);
    playback->onTick();
    EXPECT_EQ(shown.back().frame, 3);
    EXPECT_EQ(notices.size(), 1u);
    expectNoneLate();
}

TEST_F(PlaybackTest, takesADeviceThatStandsStillForLost) {
    open({"bframes.mp4"});
    begin();
    waitForFetches(3);
    clock.moveBy(nanosecondsPerSecond);
    playback->onTick();
    EXPECT_TRUE(playback->followsSound());
    clock.moveBy(nanosecondsPerSecond);
    playback->onTick();
    EXPECT_FALSE(playback->followsSound());
    EXPECT_EQ(notices.size(), 1u);
    beganAt = clock.nanoseconds();
    playOn(1, 2);
    EXPECT_THAT(shownFrames(), ElementsAre(0, 1, 2));
}

TEST_F(PlaybackTest, playsWithoutADeviceAndSaysSoOnce) {
    open({"bframes.mp4"});
    sound.isThere = false;
    for (int run = 0; run < 3; ++run) {
        playback->seek(10);
        ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 10; }));
        shown.clear();
        begin();
        playOn(1, 3);
        EXPECT_THAT(shownFrames(), ElementsAre(10, 11, 12, 13));
        EXPECT_FALSE(playback->followsSound());
    }
    EXPECT_THAT(notices, ElementsAre("no sound device"));
    sound.isThere = true;  // plugged in
    playback->seek(10);
    begin();
    EXPECT_TRUE(playback->followsSound());
}

TEST_F(PlaybackTest, isMutedWithoutLosingTheSound) {
    open({"bframes.mp4"});
    playback->setVolume(0.5);
    EXPECT_EQ(sound.volume, 0.5);
    playback->setMuted(true);
    EXPECT_EQ(sound.volume, 0);
    playback->setVolume(0.7);
    EXPECT_EQ(sound.volume, 0);
    begin();
    EXPECT_EQ(sound.volume, 0);
    EXPECT_TRUE(playback->followsSound());
    playback->setMuted(false);
    EXPECT_EQ(sound.volume, 0.7);
    EXPECT_TRUE(playback->followsSound());
    playback->setVolume(3);
    EXPECT_EQ(sound.volume, 1);
}

TEST_F(PlaybackTest, beginsTheSoundAgainAtThePictureWhenEveryFrameIsShown) {
    open({"bframes.mp4"});
    playback->setPolicy(PacePolicy::every_frame);
    playback->setMode(PlayParams::loop);
    begin();
    const int64 frameTime = nanosecondsPerSecond / 24;
    const auto showLate = [&] {
        const size_t before = shown.size();
        sound.time += 3 * frameTime + 5;
        clock.moveBy(3 * frameTime + 5);
        ASSERT_TRUE(processUntil([&] { return shown.size() > before; }));
    };
    showLate();
    EXPECT_EQ(shown.back().frame, 1);
    EXPECT_FALSE(sound.isPlaying);
    clock.moveBy(frameTime);
    waitForShown(3);
    EXPECT_EQ(shown.back().frame, 2);
    EXPECT_EQ(sound.starts, 2);
    EXPECT_TRUE(playback->followsSound());
    sound.time = frameTime + 1;
    waitForShown(4);
    EXPECT_EQ(shown.back().frame, 3);
    EXPECT_THAT(notices, IsEmpty());
    // So soon again: the pictures are too slow for sound.
    showLate();
    EXPECT_FALSE(sound.isPlaying);
    EXPECT_FALSE(playback->followsSound());
    EXPECT_EQ(notices.size(), 1u);
    EXPECT_THAT(notices.back(), HasSubstr("without sound"));
    for (int64 frame = 5; frame < 12; ++frame) {
        const size_t before = shown.size();
        clock.moveBy(4 * frameTime);
        waitForShown(before + 1);
        EXPECT_EQ(shown.back().frame, frame);
    }
    EXPECT_EQ(notices.size(), 1u);
    EXPECT_EQ(sound.starts, 2);
    EXPECT_EQ(playback->statistics().counts.skipped, 0);
}

TEST_F(PlaybackTest, hearsANewRangeFromItsFrameOn) {
    open({"bframes.mp4"}, 20);
    playback->setMode(PlayParams::loop);
    begin();
    sound.time = due(1) - beganAt;
    waitForShown(2);
    playback->setOutPoint(30);
    EXPECT_FALSE(sound.isPlaying);
    clock.moveBy(nanosecondsPerSecond / 24 + 1);
    waitForShown(3);
    EXPECT_EQ(shown.back().frame, 22);
    EXPECT_TRUE(sound.isPlaying);
    EXPECT_EQ(sound.starts, 2);
    expectNoneLate();
}

}  // namespace
}  // namespace qrtplay
