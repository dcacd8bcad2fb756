#include "viewer/playing/qrtPlayback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <vector>

#include "playback/qrtFrameReader.h"
#include "viewer/qrtTestPlayer.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int64 second = 1'000'000'000;

/// A clock that is moved by hand.
class HandClock final : public MediaClock {
public:
    [[nodiscard]] int64 nanoseconds() const override { return m_now; }
    void set(int64 time) { m_now = time; }
    void advance(int64 time) { m_now += time; }

private:
    std::atomic<int64> m_now = 1000 * second;
};

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
        clock.advance(time);
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
        const auto frameTime = static_cast<long double>(rate.getDenominator()) * second / rate.getNumerator();
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
            clock.set(due(tick));
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

// ---- Standing still

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

// ---- Playing: which frame when

struct RunCase {
    const char* name;
    PlayParams::PlayMode mode;
    PacePolicy policy;
    int step;
    int64 ticks;
};

class PlaybackRun : public PlaybackTest, public ::testing::WithParamInterface<RunCase> {};

/// Single runs have 2080 frames, the others 29 from the in to the out point.
TEST_P(PlaybackRun, showsExactlyTheFramesThatAreDue) {
    RunCase const& row = GetParam();
    const bool isSingle = row.mode == PlayParams::single;
    const int64 start = isSingle ? (row.step > 0 ? 0 : 2079) : 123;
    if (isSingle)
        open(std::vector<std::string>(8, "longgroup.mp4"), start);
    else
        open({"longgroup.mp4"}, start);
    if (!isSingle) {
        playback->setInPoint(117);
        playback->setOutPoint(145);
    }
    std::map<int64, std::string> pictures;
    for (int64 frame = 117; !isSingle && frame <= 145; ++frame)
        pictures[frame] = bytesOf(*player, frame);
    playback->setMode(row.mode);
    playback->setPolicy(row.policy);
    const FrameSpan span = playback->range();
    const auto order = player->parameters(span.first, span.last, start, row.step, row.mode);
    begin(row.step);
    bool goesOn = true;
    int64 tick = 0;
    for (; goesOn && tick < row.ticks; ++tick) {
        ASSERT_EQ(shown.back().frame, order->getCurrentFrame()) << tick;
        ASSERT_EQ(playback->frame(), order->getCurrentFrame());
        ASSERT_EQ(shown.back().failure, "");
        if (!isSingle) {
            ASSERT_EQ(bytesOf(shown.back().buffer), pictures[order->getCurrentFrame()]) << tick;
        }
        goesOn = order->next();
        if (!goesOn) break;
        ASSERT_NO_FATAL_FAILURE(waitForFetches(tick + 3));  // the still one and those of the run
        clock.set(due(tick + 1) - 1);
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick + 1)) << "too early";
        clock.set(due(tick + 1));
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick + 2)) << "too late";
    }
    expectNoneLate();
    EXPECT_EQ(playback->statistics().counts.shown, static_cast<int64>(shown.size()));
    EXPECT_EQ(goesOn, !isSingle);
    if (goesOn) return;
    clock.set(due(tick + 1) - 1);
    playback->onTick();
    EXPECT_TRUE(playback->isPlaying());
    EXPECT_EQ(ends, 0);
    clock.set(due(tick + 1));
    playback->onTick();
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(ends, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, PlaybackRun,
    ::testing::Values(RunCase{"single", PlayParams::single, PacePolicy::real_time, 1, 9999},
                      RunCase{"singleBackwardsByThree", PlayParams::single, PacePolicy::every_frame, -3, 9999},
                      RunCase{"loop", PlayParams::loop, PacePolicy::real_time, 1, 2001},
                      RunCase{"loopBackwards", PlayParams::loop, PacePolicy::real_time, -1, 300},
                      RunCase{"loopByFourForEveryFrame", PlayParams::loop, PacePolicy::every_frame, 4, 300},
                      RunCase{"pingPong", PlayParams::ping_pong, PacePolicy::real_time, 1, 2001},
                      RunCase{"pingPongForEveryFrame", PlayParams::ping_pong, PacePolicy::every_frame, 1, 300},
                      RunCase{"pingPongByThree", PlayParams::ping_pong, PacePolicy::real_time, 3, 300}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST_F(PlaybackTest, playsByItselfToTheEnd) {
    player = openTestPlayer({"longgroup.mp4"});
    playback = std::make_unique<Playback>(wallClock, nullptr);
    connectTo(*playback);
    playback->setPlayer(player.get(), 240);
    playback->setPolicy(PacePolicy::every_frame);
    playback->play(1);
    ASSERT_TRUE(processUntil([&] { return ends == 1; }));
    EXPECT_EQ(playback->statistics().counts.shown, 20);
    EXPECT_EQ(playback->frame(), 259);
    EXPECT_FALSE(playback->isPlaying());
}

TEST_F(PlaybackTest, beginsWhenTheFirstFrameHasCome) {
    open({"longgroup.mp4"});
    playback->setMode(PlayParams::loop);
    const int64 before = fetched();
    playback->play(1);
    EXPECT_TRUE(playback->isPlaying());
    clock.advance(10 * second);  // that is how long the first one takes
    waitForShown(1);
    beganAt = clock.nanoseconds();
    playOn(1, 5);
    EXPECT_THAT(shownFrames(), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_GT(fetched(), before);
    expectNoneLate();
}

TEST_F(PlaybackTest, beginsAgainFromWhereARunWouldEnd) {
    open({"longgroup.mp4"}, 259);
    begin();
    EXPECT_EQ(shown.back().frame, 0);
    playback->seek(0);
    begin(-1);
    EXPECT_EQ(shown.back().frame, 259);
    playback->pause();
    playback->setInPoint(50);
    playback->setOutPoint(60);
    begin(1);
    EXPECT_EQ(shown.back().frame, 50);
    playback->seek(10);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 10; }));
    begin(-1);
    EXPECT_EQ(shown.back().frame, 60);
    playback->setMode(PlayParams::loop);
    playback->seek(60);
    ASSERT_TRUE(processUntil([&] { return !shown.empty() && shown.back().frame == 60; }));
    begin(1);
    EXPECT_EQ(shown.back().frame, 60);
}

TEST_F(PlaybackTest, stopsOnTheFrameOnShow) {
    open({"longgroup.mp4"}, 20);
    begin();
    playOn(1, 3);
    playback->pause();
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(playback->frame(), 23);
    const auto counts = playback->statistics().counts;
    EXPECT_EQ(counts.shown, 4);
    clock.advance(second);
    playback->onTick();
    settle();
    EXPECT_EQ(playback->frame(), 23);
    EXPECT_EQ(shown.back().frame, 23);
    playback->togglePlay();
    EXPECT_TRUE(playback->isPlaying());
    playback->togglePlay();
    EXPECT_FALSE(playback->isPlaying());
}

TEST_F(PlaybackTest, shuttlesFasterEachTimeInOneDirection) {
    open({"longgroup.mp4"}, 100);
    std::vector<int> steps;
    for (int direction : {1, 1, 1, 1, 1, -1, -1, 1}) {
        playback->shuttle(direction);
        steps.push_back(playback->step());
    }
    EXPECT_THAT(steps, ElementsAre(1, 2, 4, 8, 8, -1, -2, 1));
    playback->shuttle(-1);
    playback->shuttle(-1);
    playback->pause();
    EXPECT_EQ(playback->step(), -1);  // at normal speed, the way it went
    playback->setStride(3);
    EXPECT_EQ(playback->step(), -3);
    playback->shuttle(1);
    playback->shuttle(1);
    EXPECT_EQ(playback->step(), 6);
    playback->setStride(2);
    EXPECT_EQ(playback->step(), 4);
    EXPECT_TRUE(playback->isPlaying());
}

TEST_F(PlaybackTest, changesItsSpeedWithTheNextFrameOnItsTick) {
    open({"longgroup.mp4"}, 100);
    playback->shuttle(1);
    beganAt = clock.nanoseconds();
    waitForShown(1);
    playOn(1, 2);
    clock.set(due(2) + 5);
    playback->shuttle(1);
    playOn(3, 2);
    playback->shuttle(-1);
    playOn(5, 2);
    EXPECT_THAT(shownFrames(), ElementsAre(100, 101, 102, 104, 106, 105, 104));
    EXPECT_EQ(shownAt.back(), due(6));
    expectNoneLate();
}

TEST_F(PlaybackTest, playingWithTheSameStepChangesNothing) {
    open({"longgroup.mp4"}, 100);
    begin();
    states = 0;
    playback->play(1);
    EXPECT_EQ(states, 0);
    playOn(1, 2);
    EXPECT_THAT(shownFrames(), ElementsAre(100, 101, 102));
}

TEST_F(PlaybackTest, takesInAndOutPointsWhilePlaying) {
    open({"longgroup.mp4"}, 20);
    playback->setMode(PlayParams::loop);
    begin();
    playOn(1, 2);
    playback->setOutPoint(24);
    playOn(3, 2);
    playback->setInPoint(playback->frame() - 1);
    playOn(5, 3);
    EXPECT_THAT(shownFrames(), ElementsAre(20, 21, 22, 23, 24, 23, 24, 23));
    shown.clear();
    playback->setOutPoint(10);  // passes the in point, which goes
    EXPECT_EQ(playback->range(), (FrameSpan{0, 10}));
    playOn(8, 2);
    EXPECT_THAT(shownFrames(), ElementsAre(0, 1));
    playback->clearPoints();
    playOn(10, 1);
    EXPECT_EQ(shown.back().frame, 2);
    expectNoneLate();
    EXPECT_EQ(ranges, 5);  // with that of the timeline itself
}

TEST_F(PlaybackTest, keepsInAndOutPointsInOrder) {
    open({"bframes.mp4"});
    playback->setInPoint(10);
    playback->setOutPoint(20);
    EXPECT_EQ(playback->range(), (FrameSpan{10, 20}));
    playback->setInPoint(30);
    EXPECT_EQ(playback->outPoint(), std::nullopt);
    EXPECT_EQ(playback->range(), (FrameSpan{30, 47}));
    playback->setOutPoint(5);
    EXPECT_EQ(playback->inPoint(), std::nullopt);
    EXPECT_EQ(playback->range(), (FrameSpan{0, 5}));
    playback->setOutPoint(std::nullopt);
    EXPECT_EQ(playback->range(), playback->whole());
    playback->setOutPoint(900);
    EXPECT_EQ(playback->outPoint(), 47);
}

TEST_F(PlaybackTest, endsWhereANewRangeOrModeLeavesNothingToPlay) {
    open({"longgroup.mp4"}, 20);
    begin();
    playOn(1, 2);
    playback->setOutPoint(playback->frame());
    EXPECT_FALSE(playback->isPlaying());
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(playback->frame(), 22);
}

TEST_F(PlaybackTest, turnsWhenPingPongIsChosenWhilePlaying) {
    open({"longgroup.mp4"}, 256);
    begin();
    playback->setMode(PlayParams::ping_pong);
    playOn(1, 5);
    playback->setPolicy(PacePolicy::every_frame);  // goes on backwards
    playOn(6, 1);
    EXPECT_THAT(shownFrames(), ElementsAre(256, 257, 258, 259, 258, 257, 256));
    playback->setMode(PlayParams::loop);
    playOn(7, 1);
    EXPECT_EQ(shown.back().frame, 257);
    expectNoneLate();
}

TEST_F(PlaybackTest, tellsTheRateAtWhichFramesAreShown) {
    open({"longgroup.mp4"});
    begin();
    playOn(1, 40);
    EXPECT_NEAR(playback->statistics().rate, 25, 0.01);
    clock.advance(3 * second);
    EXPECT_EQ(playback->statistics().rate, 0);
}

TEST_F(PlaybackTest, playsOnAfterAFrameThatCannotBeHad) {
    sound.isThere = false;
    open({"truncated.mp4"}, 20);
    begin();
    playOn(1, 27);
    ASSERT_EQ(shown.size(), 28u);
    int failed = 0;
    for (size_t tick = 0; tick < shown.size(); ++tick) {
        EXPECT_EQ(shown[tick].frame, 20 + static_cast<int64>(tick));
        failed += shown[tick].failure.empty() ? 0 : 1;
    }
    EXPECT_GT(failed, 0);
    EXPECT_EQ(playback->statistics().counts.skipped, failed);
    EXPECT_EQ(playback->statistics().counts.shown, 28 - failed);
    clock.set(due(28));
    playback->onTick();
    EXPECT_EQ(ends, 1);
}

// ---- Playing: when pictures come late

/// What fetching may take, from much less than a frame time to three of them, changing now and then.
int64 fetchTimeOf(int turn) {
    constexpr int turnsAlike = 20;
    constexpr int64 inMilliseconds[] = {10, 60, 90, 130, 30};
    return inMilliseconds[turn / turnsAlike % 5] * 1'000'000;
}

TEST_F(PlaybackTest, staysInStepWithTheClockInRealTime) {
    open({"longgroup.mp4"});
    playback->setMode(PlayParams::loop);
    playback->setOutPoint(99);
    begin();
    for (int turn = 0; turn < 300; ++turn)
        spend(fetchTimeOf(turn));
    const auto counts = playback->statistics().counts;
    EXPECT_GT(counts.skipped, 100);
    EXPECT_GT(counts.shown, 100);
    EXPECT_EQ(counts.shown, static_cast<int64>(shown.size()));
    int64 outOfStep = 0;
    for (size_t turn = 0; turn < shown.size(); ++turn) {
        const int64 tick = (shownAt[turn] - beganAt) / (second / 25);
        outOfStep += shown[turn].frame == tick % 100 ? 0 : 1;
    }
    EXPECT_EQ(outOfStep, counts.late);
    EXPECT_LT(counts.late, counts.shown / 10);
}

TEST_F(PlaybackTest, showsEveryFrameHoweverLate) {
    open({"longgroup.mp4"});
    playback->setMode(PlayParams::loop);
    playback->setOutPoint(49);
    playback->setPolicy(PacePolicy::every_frame);
    begin();
    for (int turn = 1; turn <= 200; ++turn) {
        const size_t before = shown.size();
        spend(fetchTimeOf(turn));
        while (shown.size() == before)
            spend(5'000'000);
        ASSERT_EQ(shown.size(), before + 1);
        ASSERT_EQ(shown.back().frame, turn % 50);
    }
    EXPECT_EQ(playback->statistics().counts.skipped, 0);
    EXPECT_GT(playback->statistics().counts.late, 50);
    EXPECT_EQ(playback->statistics().counts.shown, 201);
}

// ---- Sound

TEST_F(PlaybackTest, followsTheSoundWhereThereIsSome) {
    open({"bframes.mp4"});
    playback->setMode(PlayParams::loop);
    begin();
    EXPECT_TRUE(playback->followsSound());
    EXPECT_TRUE(sound.isPlaying);
    for (int64 tick = 1; tick < 100; ++tick) {
        ASSERT_NO_FATAL_FAILURE(waitForFetches(tick + 2));
        // The machine's clock runs much faster, and is of no meaning.
        clock.advance(second / 5);
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
        clock.advance(second / 500);  // a machine's clock that is not quite the device's
        spend(fetchTimeOf(turn));
        const bool isInTime = playback->statistics().counts.late == late;
        if (shown.size() > before && isInTime) {
            ASSERT_EQ(shown.back().frame, sound.time * 24 / second % 48) << turn;
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
    clock.advance(100 * second);                 // which is of no meaning so far
    sound.time = due(3) - beganAt - 10'000'000;  // ten milliseconds before the next frame
    playback->onTick();
    sound.isThere = false;
    playback->onTick();
    EXPECT_FALSE(playback->followsSound());
    EXPECT_TRUE(playback->isPlaying());
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_THAT(notices[0], HasSubstr("sound device was lost"));
    clock.advance(9'999'999);
    playback->onTick();
    EXPECT_EQ(shown.back().frame, 2);
    clock.advance(1);
    playback->onTick();
    EXPECT_EQ(shown.back().frame, 3);
    EXPECT_EQ(notices.size(), 1u);
    expectNoneLate();
}

TEST_F(PlaybackTest, takesADeviceThatStandsStillForLost) {
    open({"bframes.mp4"});
    begin();
    waitForFetches(3);
    clock.advance(second);
    playback->onTick();
    EXPECT_TRUE(playback->followsSound());
    clock.advance(second);
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
    const int64 frameTime = second / 24;
    const auto showLate = [&] {
        const size_t before = shown.size();
        sound.time += 3 * frameTime + 5;
        clock.advance(3 * frameTime + 5);
        ASSERT_TRUE(processUntil([&] { return shown.size() > before; }));
    };
    showLate();
    EXPECT_EQ(shown.back().frame, 1);
    EXPECT_FALSE(sound.isPlaying);
    clock.advance(frameTime);
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
        clock.advance(4 * frameTime);
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
    clock.advance(second / 24 + 1);
    waitForShown(3);
    EXPECT_EQ(shown.back().frame, 22);
    EXPECT_TRUE(sound.isPlaying);
    EXPECT_EQ(sound.starts, 2);
    expectNoneLate();
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
    clock.advance(second);
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
