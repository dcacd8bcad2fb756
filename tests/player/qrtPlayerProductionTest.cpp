// What is rendered ahead of the host, in which order, and when it stops.
#include <numeric>
#include <thread>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

namespace {

using Frames = std::vector<int64>;

struct RunCase {
    char const* name;
    int head;
    int tail;
    int64 current;
    int64 start;
    int64 end;
    int step;
    PlayParams::PlayMode mode;
    Frames expected;
};

}  // namespace

class PlayerProduction : public PlayerFixture {
protected:
    void setCounts(int head, int tail) {
        ASSERT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, head).get(), Status::ok);
        ASSERT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, tail).get(), Status::ok);
    }

    /// Waits until look-ahead has rendered so many frames and what it posted behind them has run too.
    Frames settle(size_t numFrames) {
        while (FakeGraphEngine::renderedFrames().size() < numFrames)
            drain();
        for (size_t i = 0; i < numFrames + 2; ++i)
            drain();  // every step posts at most one successor
        return FakeGraphEngine::renderedFrames();
    }
};

class PlayerProductionOrder : public PlayerProduction, public ::testing::WithParamInterface<RunCase> {};

TEST_P(PlayerProductionOrder, theCurrentFrameThenTheHeadThenTheTail) {
    RunCase const& run = GetParam();
    start();
    setCounts(run.head, run.tail);
    ASSERT_EQ(player->startProducing(playParams(run.current, run.start, run.end, run.step, run.mode)).get(),
              Status::ok);
    EXPECT_EQ(settle(run.expected.size()), run.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Runs, PlayerProductionOrder,
    ::testing::Values(
        RunCase{"headAndTailOfNothingLeaveTheCurrentFrame", 0, 0, 5, 0, 50, 1, PlayParams::single, {5}},
        RunCase{"headRunsAhead", 3, 0, 5, 0, 50, 1, PlayParams::single, {5, 6, 7, 8}},
        RunCase{"tailFollowsTheHead", 2, 2, 5, 0, 50, 1, PlayParams::single, {5, 6, 7, 4, 3}},
        RunCase{"aStepOfTwoIsHonoured", 2, 1, 10, 0, 50, 2, PlayParams::single, {10, 12, 14, 8}},
        RunCase{"aNegativeStepTurnsHeadAndTail", 2, 2, 20, 0, 50, -1, PlayParams::single, {20, 19, 18, 21, 22}},
        RunCase{"singleAtTheEndLooksAtNoTail", 2, 2, 50, 0, 50, 1, PlayParams::single, {50}},
        RunCase{"singleNearTheEndStopsThere", 3, 2, 49, 0, 50, 1, PlayParams::single, {49, 50}},
        RunCase{"loopWrapsToTheStart", 3, 0, 49, 40, 50, 1, PlayParams::loop, {49, 50, 40, 41}},
        RunCase{"loopBackwardsWrapsToTheEnd", 2, 0, 40, 40, 50, -1, PlayParams::loop, {40, 50, 49}},
        RunCase{"loopTailWrapsToo", 0, 2, 40, 40, 50, 1, PlayParams::loop, {40, 50, 49}},
        RunCase{"pingPongTurnsAround", 3, 0, 49, 40, 50, 1, PlayParams::ping_pong, {49, 50, 48}},
        RunCase{"aStepOfZeroLeavesTheCurrentFrame", 2, 2, 5, 0, 50, 0, PlayParams::loop, {5}},
        RunCase{"aRangeOfOneFrameIsRenderedOnce", 3, 3, 5, 5, 5, 1, PlayParams::ping_pong, {5}}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST_F(PlayerProduction, framesAlreadyCachedAreNotRenderedAgain) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(6, buffer).get(), Status::ok);
    buffer.reset();
    ASSERT_EQ(player->startProducing(playParams(5, 0, 50)).get(), Status::ok);
    EXPECT_EQ(settle(3), (Frames{6, 5, 7}));
}

TEST_F(PlayerProduction, aHostThatReadsInOrderFindsEveryFrameRenderedOnce) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    for (int64 frame = 0; frame < 100; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
        ASSERT_EQ(frameIn(buffer), frame);
        drain();  // updates of the current frame go to the front of the queue: of two that wait the older one runs last
    }
    Frames all(100);
    std::iota(all.begin(), all.end(), 0);
    EXPECT_EQ(settle(100), all);
}

TEST_F(PlayerProduction, stoppingKeepsTheCachedFramesAndEndsLookAhead) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    EXPECT_TRUE(player->isVideoBufferReady(0));
    EXPECT_TRUE(player->isVideoBufferReady(2));
    const auto before = FakeGraphEngine::renderedFrames();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(2, buffer).get(), Status::ok);
    buffer.reset();
    EXPECT_EQ(settle(before.size()), before);
}

TEST_F(PlayerProduction, aFailedStepIsLoggedAndPausesTheRunUntilAFrameComesBack) {
    start();
    SharedPtr<VideoBuffer> held[3];  // of four framebuffers: look-ahead may not take the last one
    for (int64 frame = 60; frame < 63; ++frame) {
        ASSERT_EQ(player->getVideoBuffer(frame, held[frame - 60]).get(), Status::ok);
    }
    LogCapture log;
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    log.waitFor("Stop producing because status failure = 260");
    EXPECT_FALSE(player->isVideoBufferReady(0));
    EXPECT_EQ(player->startProducing(playParams(0, 0, 50)).get(), 257) << "the run goes on, it only pauses";

    // Two frames go back to the pool, on a thread without a context: the pool's notification restarts the run.
    std::thread([&] {
        held[0].reset();
        held[1].reset();
    }).join();
    waitUntilReady(0);
}

TEST_F(PlayerProduction, aRenderFailureAheadIsLoggedAndNotReportedToTheHost) {
    start();
    FakeGraphEngine::answer("renderFrame", 779);
    LogCapture log;
    EXPECT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    log.waitFor("Stop producing because status failure = 779");
    FakeGraphEngine::answer("renderFrame", 0);
}

TEST_F(PlayerProduction, aFrameThatComesBackWhileNotProducingRendersNothing) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    buffer.reset();
    drain();
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{1});
}

TEST_F(PlayerProduction, aFrameThatIsLeftUndrawnShowsAsSolidGreen) {
    start();
    FakeGraphEngine::script().draws = false;
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    unsigned int texture = 0;
    ASSERT_EQ(buffer->getTexture(texture).get(), Status::ok);
    const auto pixels = host.readTexture(texture, 16, 8);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        ASSERT_EQ(std::vector<float>(pixels.begin() + static_cast<long>(i), pixels.begin() + static_cast<long>(i) + 4),
                  (std::vector<float>{0.0f, 1.0f, 0.0f, 1.0f}));
    }
}

TEST_F(PlayerProduction, lookAheadNeverEvictsAFrameThatPlaybackStillNeeds) {
    start();
    setCounts(4, 0);  // six framebuffers: five wanted, one kept for a host that waits
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(4);
    for (int64 frame = 0; frame < 5; ++frame)
        EXPECT_TRUE(player->isVideoBufferReady(frame)) << frame;
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    waitUntilReady(5);  // frame 0 made room
    EXPECT_FALSE(player->isVideoBufferReady(0));
    for (int64 frame = 1; frame < 6; ++frame)
        EXPECT_TRUE(player->isVideoBufferReady(frame)) << frame;
}

TEST_F(PlayerProduction, aFrameOnDemandTakesTheLastFramebufferThatLookAheadLeaves) {
    start();
    setCounts(0, 0);  // two framebuffers
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(player->getVideoBuffer(60, held).get(), Status::ok);
    SharedPtr<VideoBuffer> last;
    EXPECT_EQ(player->getVideoBuffer(61, last).get(), Status::ok);
    EXPECT_EQ(frameIn(last), 61);
}

TEST_F(PlayerProduction, theStepGoesToTheGraphEngineAtTheStartAndWhenPlaybackTurns) {
    start();
    ASSERT_EQ(player->startProducing(playParams(10, 0, 50, 2, PlayParams::ping_pong)).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("setStep 2"), 1);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(4, buffer).get(), Status::ok);  // before the current frame: play backwards
    EXPECT_EQ(FakeGraphEngine::countOf("setStep -2"), 1);
    waitUntilReady(2);
}

}  // namespace QRT_0_81
