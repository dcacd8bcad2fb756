// How a host gets frames: by number, from the cache or produced while it waits.
#include <latch>
#include <limits>
#include <thread>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerDelivery : public PlayerFixture {
protected:
    /// The status type of fetching a frame and letting it go.
    [[nodiscard]] int fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        return player->getVideoBuffer(frame, buffer).get();
    }
};

TEST_F(PlayerDelivery, beforeInitializeItFailsWithNotInitializedAndAnEmptyBuffer) {
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 256);
    EXPECT_FALSE(buffer);
}

TEST_F(PlayerDelivery, withoutACompositionItFailsWithNoComposition) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(fetch(0), 265);
}

TEST_F(PlayerDelivery, aFailureReleasesWhatTheCallersPointerHeld) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(3, buffer).get(), Status::ok);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(player->getVideoBuffer(-1, buffer).get(), 258);
    EXPECT_FALSE(buffer);
}

TEST_F(PlayerDelivery, aFrameInVideoMemoryHasItsPixelsInTheHostsOwnContext) {
    start();
    for (const int64 frame : {0, 42, 99, 7}) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
        ASSERT_EQ(buffer->getType(), VideoBuffer::framebufferKind);
        EXPECT_EQ(buffer->getResolution(), smallRgba8);
        EXPECT_EQ(frameIn(buffer), frame);
    }
}

TEST_F(PlayerDelivery, theFirstRowOfTheTextureIsTheBottomOfThePicture) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(3, buffer).get(), Status::ok);
    unsigned int texture = 0;
    ASSERT_EQ(buffer->getTexture(texture).get(), Status::ok);
    const auto pixels = host.readTexture(texture, 16, 8);
    EXPECT_EQ(pixels[0], 1.0f) << "the graph engine's marker at the bottom left";
    EXPECT_EQ(paintedFrame(&pixels[4]), 3);
}

TEST_F(PlayerDelivery, framesFromTheFirstToOnePastTheLastAreInRange) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(10, 5)).get(), Status::ok);
    EXPECT_EQ(fetch(9), 258);
    EXPECT_EQ(fetch(10), Status::ok);
    EXPECT_EQ(fetch(14), Status::ok);
    EXPECT_EQ(fetch(15), Status::ok) << "a time at the very end, rounded upwards, still gets a picture";
    EXPECT_EQ(fetch(16), 258);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (std::vector<int64>{10, 14, 15}));
}

TEST_F(PlayerDelivery, theExtremesOf64BitsAreOutOfRange) {
    start();
    EXPECT_EQ(fetch(std::numeric_limits<int64>::max()), 258);
    EXPECT_EQ(fetch(std::numeric_limits<int64>::min()), 258);
}

TEST_F(PlayerDelivery, aCompositionThatReachesTheEndOf64BitsDoesNotOverflow) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    const int64 most = std::numeric_limits<int64>::max();
    ASSERT_EQ(setComposition(FakeComposition::create(1000, most)).get(), Status::ok);
    EXPECT_EQ(fetch(most), Status::ok);
    EXPECT_EQ(fetch(999), 258);
}

TEST_F(PlayerDelivery, theRangeIsCountedAtTheOutputRate) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    {
        const std::lock_guard lock(FakeGraphEngine::script().mutex);
        FakeGraphEngine::script().frameRateToReport = Rational(48, 1);
    }
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10, Rational(24, 1))).get(), Status::ok);
    EXPECT_EQ(fetch(20), Status::ok);
    EXPECT_EQ(fetch(21), 258);
}

TEST_F(PlayerDelivery, negativeFramesAreFetchedLikeAnyOther) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(-20, 40)).get(), Status::ok);
    EXPECT_EQ(fetch(-7), Status::ok);
    EXPECT_TRUE(player->isVideoBufferReady(-7));
    EXPECT_FALSE(player->isVideoBufferReady(7));
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), std::vector<int64>{-7});
}

TEST_F(PlayerDelivery, theCompositionsOwnFailuresAreReturned) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    const auto composition = FakeComposition::create(0, 10);
    composition->startTimeStatus = static_cast<Status::Type>(700);
    ASSERT_EQ(setComposition(composition).get(), Status::ok);
    EXPECT_EQ(fetch(0), 700);
    const auto another = FakeComposition::create(0, 10);
    another->durationStatus = static_cast<Status::Type>(701);
    ASSERT_EQ(setComposition(another).get(), Status::ok);
    EXPECT_EQ(fetch(0), 701);
}

TEST_F(PlayerDelivery, aCachedFrameIsDeliveredWithoutRenderingAgain) {
    start();
    SharedPtr<VideoBuffer> first;
    SharedPtr<VideoBuffer> second;
    ASSERT_EQ(player->getVideoBuffer(5, first).get(), Status::ok);
    ASSERT_EQ(player->getVideoBuffer(5, second).get(), Status::ok);
    EXPECT_EQ(first, second);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), std::vector<int64>{5});
}

TEST_F(PlayerDelivery, aCachedFrameWhileNotProducingLeavesLookAheadAlone) {
    start();
    ASSERT_EQ(fetch(5), Status::ok);
    ASSERT_EQ(fetch(5), Status::ok);
    drain();
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), std::vector<int64>{5});
}

TEST_F(PlayerDelivery, aCachedFrameWhileProducingBecomesTheCurrentFrame) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);  // current and two head frames: 0, 1, 2
    ASSERT_EQ(fetch(2), Status::ok);
    waitUntilReady(4);  // the head of frame 2
    EXPECT_EQ(FakeGraphEngine::countOf("renderFrame 2"), 1);
}

TEST_F(PlayerDelivery, aMissedFrameWhileProducingBecomesTheCurrentFrame) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);
    ASSERT_EQ(fetch(30), Status::ok);
    waitUntilReady(32);
    EXPECT_EQ(FakeGraphEngine::countOf("renderFrame 3"), 0);
}

TEST_F(PlayerDelivery, aFrameOutsideThePlayRangeIsDeliveredAndLookAheadStays) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);
    ASSERT_EQ(fetch(70), Status::ok);
    drain();
    EXPECT_EQ(FakeGraphEngine::countOf("renderFrame 71"), 0);
}

TEST_F(PlayerDelivery, aFrameIsReadyExactlyWhileItIsCached) {
    start();
    EXPECT_FALSE(player->isVideoBufferReady(5));
    ASSERT_EQ(fetch(5), Status::ok);
    EXPECT_TRUE(player->isVideoBufferReady(5));
    for (int64 frame = 10; frame < 14; ++frame)
        ASSERT_EQ(fetch(frame), Status::ok);  // the pool holds four
    EXPECT_FALSE(player->isVideoBufferReady(5)) << "evicted";
    EXPECT_TRUE(player->isVideoBufferReady(13));
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(13)) << "cleared";
    ASSERT_EQ(fetch(7), Status::ok);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(7)) << "the engine's end clears the cache too";
}

TEST_F(PlayerDelivery, heldTexturesKeepTheirPixelsThroughAllResolutionsAndGoWithTheEnginesContext) {
    std::vector<SharedPtr<VideoBuffer>> held;
    for (int life = 0; life < 2; ++life) {
        start();
        const size_t numOfEarlierLives = held.size();
        for (const int width : {32, 8, 64, 16}) {
            ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(width, 8, 4, 8, false)).get(), Status::ok);
            held.emplace_back();
            ASSERT_EQ(player->getVideoBuffer(width, held.back()).get(), Status::ok);
        }
        for (size_t i = numOfEarlierLives; i < held.size(); ++i)
            EXPECT_EQ(frameIn(held[i]), held[i]->getResolution().getWidth());
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
    }
    player.reset();
    for (auto const& buffer : held) {
        unsigned int texture = 77;
        EXPECT_EQ(buffer->getTexture(texture).get(), Status::ok);
        EXPECT_EQ(texture, 0u);
    }
    held.clear();
    EXPECT_EQ(host.countTextures(), 0);
}

TEST_F(PlayerDelivery, isReadyBeforeInitializeIsFalse) {
    EXPECT_FALSE(player->isVideoBufferReady(0));
}

TEST_F(PlayerDelivery, aHostThatHoldsEveryFrameGetsNoResourceUntilItLetsOneGo) {
    start();
    SharedPtr<VideoBuffer> held[4];
    for (int64 frame = 0; frame < 4; ++frame)
        ASSERT_EQ(player->getVideoBuffer(frame, held[frame]).get(), Status::ok);
    const LogCapture log;
    EXPECT_EQ(fetch(9), 260);
    EXPECT_TRUE(log.contains("getVideoBuffer() failed = 260"));
    held[2].reset();
    EXPECT_EQ(fetch(9), Status::ok);
    EXPECT_EQ(frameIn(held[0]), 0) << "held frames keep their pixels";
}

TEST_F(PlayerDelivery, aRenderFailureIsReturnedAndLogged) {
    start();
    FakeGraphEngine::answer("renderFrame", 777);
    const LogCapture log;
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(3, buffer).get(), 777);
    EXPECT_FALSE(buffer);
    EXPECT_TRUE(log.contains("getVideoBuffer() failed = 777"));
    EXPECT_FALSE(player->isVideoBufferReady(3));
    FakeGraphEngine::answer("renderFrame", 0);
    EXPECT_EQ(fetch(3), Status::ok) << "the framebuffer has gone back to its pool";
}

TEST_F(PlayerDelivery, aFailureToMoveTheCurrentFrameIsReturnedWithTheFrameAllTheSame) {
    start();
    ASSERT_EQ(player->startProducing(playParams(10, 0, 50, 1, PlayParams::ping_pong)).get(), Status::ok);
    waitUntilReady(12);
    FakeGraphEngine::answer("setStep", 778);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(5, buffer).get(), 778);  // backwards: the step turns round
    ASSERT_TRUE(buffer);
    EXPECT_EQ(frameIn(buffer), 5);
    EXPECT_TRUE(player->isVideoBufferReady(5));
}

TEST_F(PlayerDelivery, anUnknownPlayModeFailsToMoveWithOutOfRangeAndTheFrameAllTheSame) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50, 1, static_cast<PlayParams::PlayMode>(9))).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(40, buffer).get(), 258);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(frameIn(buffer), 40);
}

TEST_F(PlayerDelivery, fromAnUpdateOnThePlayerThreadAFetchIsRefusedInsteadOfWaitingForItself) {
    start();
    int inner = -1;
    FakeGraphEngine::callBeforeRender([&](int64 frame) {
        if (frame == 1) inner = fetch(2);
    });
    EXPECT_EQ(fetch(1), Status::ok);
    EXPECT_EQ(inner, Status::general_failure);
}

TEST_F(PlayerDelivery, whatIsRefusedOnThePlayerThreadLeavesTheCachedFramesAlone) {
    start();
    ASSERT_EQ(fetch(1), Status::ok);
    std::vector<int> answers;
    FakeGraphEngine::callBeforeRender([&](int64 frame) {
        if (frame != 2) return;
        const auto composition = FakeComposition::create(0, 10);
        answers.push_back(player->setComposition(composition, {}).get());
        answers.push_back(player->updateComposition(composition, "").get());
        answers.push_back(player->setAudioFormat(nullptr).get());
    });
    ASSERT_EQ(fetch(2), Status::ok);
    EXPECT_EQ(answers, std::vector<int>(3, Status::general_failure));
    EXPECT_TRUE(player->isVideoBufferReady(1));
}

}  // namespace QRT_0_81
