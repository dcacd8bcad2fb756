// Which frame is shown when.
#include <map>

#include "viewer/qrtPlaybackFixture.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;

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
        clock.moveTo(due(tick + 1) - 1);
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick + 1)) << "too early";
        clock.moveTo(due(tick + 1));
        playback->onTick();
        ASSERT_EQ(shown.size(), static_cast<size_t>(tick + 2)) << "too late";
    }
    expectNoneLate();
    EXPECT_EQ(playback->statistics().counts.shown, static_cast<int64>(shown.size()));
    EXPECT_EQ(goesOn, !isSingle);
    if (goesOn) return;
    clock.moveTo(due(tick + 1) - 1);
    playback->onTick();
    EXPECT_TRUE(playback->isPlaying());
    EXPECT_EQ(ends, 0);
    clock.moveTo(due(tick + 1));
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
    clock.moveBy(10 * nanosecondsPerSecond);  // that is how long the first one takes
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
    clock.moveBy(nanosecondsPerSecond);
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
    clock.moveTo(due(2) + 5);
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
    clock.moveBy(3 * nanosecondsPerSecond);
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
    clock.moveTo(due(28));
    playback->onTick();
    EXPECT_EQ(ends, 1);
}

// ---- Playing: when pictures come late

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
        const int64 tick = (shownAt[turn] - beganAt) / (nanosecondsPerSecond / 25);
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

}  // namespace
}  // namespace qrtplay
