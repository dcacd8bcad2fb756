#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "viewer/playing/qrtPlayback.h"
#include "viewer/qrtHandClock.h"
#include "viewer/qrtTestPlayer.h"

namespace qrtplay {

/// A device whose sound is heard when the test says so.
class FakeSound final : public SoundOutput {
public:
    Outcome start(SoundFeed&) override {
        ++starts;
        if (!isThere) return Outcome::failure("no sound device");
        isPlaying = true;
        time = 0;
        return Outcome();
    }
    void stop() override { isPlaying = false; }
    void setVolume(double value) override { volume = value; }
    [[nodiscard]] std::optional<int64> heard() const override {
        return isThere && isPlaying ? std::optional(time) : std::nullopt;
    }

    bool isThere = true;
    bool isPlaying = false;
    int starts = 0;
    int64 time = 0;
    double volume = 1;
};

/// What fetching may take, from much less than a frame time to three of them, changing now and then.
inline int64 fetchTimeOf(int turn) {
    constexpr int turnsAlike = 20;
    constexpr int64 inMilliseconds[] = {10, 60, 90, 130, 30};
    return inMilliseconds[turn / turnsAlike % 5] * 1'000'000;
}

/// Playback of clips on a clock and a device that the test moves; what it shows and tells is noted.
class PlaybackTest : public ::testing::Test {
protected:
    void open(std::vector<std::string> const& clips, int64 frame = 0) {
        player = openTestPlayer(clips);
        ASSERT_TRUE(player);
        playback = std::make_unique<Playback>(clock, &sound);
        connectTo(*playback);
        playback->setPlayer(player.get(), frame);
        ASSERT_TRUE(processUntil([&] { return shown.size() == 1; }));
        shown.clear();
        shownAt.clear();
        states = 0;
    }
    void connectTo(Playback& watched) {
        QObject::connect(&watched, &Playback::frameShown, [this](FetchedFrame const& frame) {
            if (!shown.empty()) shown.back().buffer.reset();  // as a view does; the player has only so many
            shown.push_back(frame);
            shownAt.push_back(clock.nanoseconds());
        });
        QObject::connect(&watched, &Playback::noticed,
                         [this](QString const& text) { notices.push_back(text.toStdString()); });
        QObject::connect(&watched, &Playback::ended, [this] { ++ends; });
        QObject::connect(&watched, &Playback::stateChanged, [this] { ++states; });
        QObject::connect(&watched, &Playback::rangeChanged, [this] { ++ranges; });
    }
    void TearDown() override {
        playback.reset();  // before its player
    }

    [[nodiscard]] int64 fetched() const {
        const auto statistics = playback->statistics();
        return statistics.cacheHits + statistics.onDemand;
    }
    /// That many frames have come since the timeline was opened, whether they were shown or kept.
    void waitForFetches(int64 count) {
        ASSERT_TRUE(processUntil([&] { return fetched() >= count; }));
    }
    void waitForShown(size_t count) {
        ASSERT_TRUE(processUntil([&] { return shown.size() >= count; })) << shown.size() << " of " << count;
        ASSERT_EQ(shown.size(), count);
    }
    /// All that was under way has come.
    void settle() {
        playback->reconfigure([](TimelinePlayer&) {});
        QCoreApplication::processEvents();
    }
    /// Time goes by while something is fetched.
    void spend(int64 time) {
        clock.moveBy(time);
        sound.time += time;
        settle();
        playback->onTick();
    }
    /// A fetch is under way or done, and its frame on the way to the event loop. The player may have let go of the
    /// frame before it was looked for; it was there all the same by the end of the time.
    void waitUntilBegun(int64 frame) const {
        constexpr int patienceInMs = 3000;
        const QDeadlineTimer deadline(patienceInMs);
        while (!player->player().isVideoBufferReady(frame) && !deadline.hasExpired())
            std::this_thread::yield();
    }
    /// The player can lend only a few frames; while none is left it renders nothing ahead.
    void letGoOfFrames() {
        for (FetchedFrame& frame : shown)
            frame.buffer.reset();
    }
    /// When a tick is due, from the moment at which the first one was shown.
    [[nodiscard]] int64 due(int64 tick) const {
        const auto rate = player->rate();
        const auto frameTime =
            static_cast<long double>(rate.getDenominator()) * nanosecondsPerSecond / rate.getNumerator();
        return beganAt + std::llround(static_cast<long double>(tick) * frameTime);
    }
    void begin(int step = 1) {
        const size_t before = shown.size();
        playback->play(step);
        beganAt = clock.nanoseconds();
        waitForShown(before + 1);
    }
    /// Shows the next `count` ticks in time.
    void playOn(int64 firstTick, int64 count) {
        for (int64 tick = firstTick; tick < firstTick + count; ++tick) {
            const size_t before = shown.size();
            clock.moveTo(due(tick));
            playback->onTick();
            ASSERT_NO_FATAL_FAILURE(waitForShown(before + 1)) << tick;
        }
    }
    [[nodiscard]] std::vector<int64> shownFrames() const {
        std::vector<int64> frames;
        for (FetchedFrame const& frame : shown)
            frames.push_back(frame.frame);
        return frames;
    }
    void expectNoneLate() const {
        EXPECT_EQ(playback->statistics().counts.skipped, 0);
        EXPECT_EQ(playback->statistics().counts.late, 0);
    }

    HandClock clock;
    const WallClock wallClock;
    FakeSound sound;
    std::unique_ptr<TimelinePlayer> player;
    std::unique_ptr<Playback> playback;
    std::vector<FetchedFrame> shown;
    std::vector<int64> shownAt;
    std::vector<std::string> notices;
    int ends = 0;
    int states = 0;
    int ranges = 0;
    int64 beganAt = 0;
};

}  // namespace qrtplay
