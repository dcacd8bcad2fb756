#include "viewer/playing/qrtQtSoundOutput.h"

#include <gtest/gtest.h>

#include <QTest>

#include "host/qrtTestClips.h"
#include "playback/qrtPreparedInput.h"
#include "playback/qrtSoundFeed.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/qrtMadeDevice.h"
#include "viewer/qrtViewerApplication.h"

namespace qrtplay {
namespace {

constexpr int deviceWaitMs = 60'000;

class QtSoundOutputTest : public ::testing::Test {
protected:
    void SetUp() override {
        PlayInput input;
        input.files = {clipPath("bframes.mp4")};
        PlaySettings settings;
        settings.resolution = QSize(32, 18);
        PreparedInput prepared;
        NativeContext native;
        OpenFailure why{};
        Outcome outcome = prepareInput(input, settings, prepared, why);
        if (outcome.success()) outcome = sharedContext(native);
        if (outcome.success()) outcome = TimelinePlayer::open(prepared, settings, native, m_player, why);
        ASSERT_TRUE(outcome.success()) << outcome.message();
        m_feed = std::make_unique<SoundFeed>(*m_player, *m_player->parameters(0, 47, 0, 1, PlayParams::loop),
                                             Rational(24, 1));
    }
    void endFeed() { m_feed.reset(); }
    [[nodiscard]] SoundFeed& feed() { return *m_feed; }

    MadeDevice m_device;  // what there is to hear with

private:
    std::unique_ptr<TimelinePlayer> m_player;
    std::unique_ptr<SoundFeed> m_feed;
};

TEST_F(QtSoundOutputTest, saysThatThereIsNoDevice) {
    QtSoundOutput output;
    EXPECT_EQ(output.start(feed()).message(), "There is no sound device on this machine.");
    EXPECT_EQ(output.heard(), std::nullopt);
    EXPECT_EQ(feed().position(), 0);
}

TEST_F(QtSoundOutputTest, stopsHarmlesslyWhereNothingPlays) {
    QtSoundOutput output;
    output.stop();
    output.setVolume(0.5);
    (void)output.start(feed());
    output.stop();
    output.stop();
    EXPECT_EQ(output.heard(), std::nullopt);
}

TEST_F(QtSoundOutputTest, saysWhichDeviceCannotBeOpened) {
    if (!m_device.make(MadeDevice::Kind::closed)) GTEST_SKIP() << m_device.whyNot();
    QtSoundOutput output;
    testing::internal::CaptureStderr();
    EXPECT_EQ(output.start(feed()).message(), "The sound device \"default\" cannot be opened for stereo at 48000 Hz.");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(output.heard(), std::nullopt);
}

TEST_F(QtSoundOutputTest, playsTheFeedUntilItIsStopped) {
    if (!m_device.make(MadeDevice::Kind::silent)) GTEST_SKIP() << m_device.whyNot();
    QtSoundOutput output;
    output.setVolume(0.25);
    const Outcome started = output.start(feed());
    ASSERT_TRUE(started.success()) << started.message();
    EXPECT_TRUE(output.heard());
    constexpr int64 halfASecond = 500'000'000;
    ASSERT_TRUE(QTest::qWaitFor([&] { return output.heard().value_or(0) > halfASecond; }, deviceWaitMs));
    output.setVolume(1);
    output.stop();
    EXPECT_EQ(output.heard(), std::nullopt);
    EXPECT_GE(feed().position(), TimelinePlayer::soundRate / 2);
    endFeed();  // which nobody reads any more
    EXPECT_EQ(output.heard(), std::nullopt);
}

TEST_F(QtSoundOutputTest, goesOnWhereTheFeedHasBeenStopped) {
    if (!m_device.make(MadeDevice::Kind::silent)) GTEST_SKIP() << m_device.whyNot();
    QtSoundOutput output;
    ASSERT_TRUE(output.start(feed()).success());
    ASSERT_TRUE(QTest::qWaitFor([&] { return output.heard().value_or(0) > 0; }, deviceWaitMs));
    output.stop();
    const int64 position = feed().position();
    ASSERT_TRUE(output.start(feed()).success());
    EXPECT_GE(output.heard().value_or(0), position * 1'000'000'000 / TimelinePlayer::soundRate);
    ASSERT_TRUE(QTest::qWaitFor([&] { return feed().position() > position; }, deviceWaitMs));
    // Started while it plays, it begins anew.
    EXPECT_TRUE(output.start(feed()).success());
}

}  // namespace
}  // namespace qrtplay
