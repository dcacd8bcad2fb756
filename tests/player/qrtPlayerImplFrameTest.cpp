// The production of one frame: what it takes from the pools, when it makes room, and what its failures leave behind.
#include <gmock/gmock.h>

#include "harness/qrtAllocationFault.h"
#include "harness/qrtFinishWatch.h"
#include "harness/qrtForeignRecord.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtPixelBufferFaults.h"
#include "harness/qrtPlayerImplFixture.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

}  // namespace

class PlayerImplFrame : public PlayerImplFixture {
protected:
    /// The type of a production that must fail, post nothing to the log, and cache and hand out nothing.
    int failureOf(int64 frame, bool onDemand = true) {
        const LogCapture log;
        SharedPtr<VideoBuffer> buffer;
        const Status status = Inspector::produceVideoBuffer(*engine, frame, onDemand, buffer);
        EXPECT_FALSE(buffer);
        EXPECT_FALSE(isCached(frame));
        EXPECT_TRUE(log.messages().empty()) << "callers speak of failures";
        return status.get();
    }
    static bool isAllowLast(SharedPtr<VideoBuffer> const& buffer) {
        return dynamicPtrCast<VideoBufferPrivate>(buffer)->isAllowLast();
    }
};

// ---- The picture ----------------------------------------------------------------------------------------------------

TEST_F(PlayerImplFrame, isWaitedForAfterItIsClearedAndAgainAfterItIsRendered) {
    std::vector<size_t> numRendered;
    {
        const FinishWatch watch([&] { numRendered.push_back(FakeGraphEngine::renderedFrames().size()); });
        (void)produce(5);
    }
    EXPECT_THAT(numRendered, ElementsAre(0u, 1u));
}

TEST_F(PlayerImplFrame, isGreenBeforeItIsRendered) {
    std::vector<int> pixel;
    FakeGraphEngine::callBeforeRender([&](int64) {
        unsigned char bytes[4] = {};
        host.gl().glReadPixels(7, 3, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
        pixel.assign(bytes, bytes + 4);
    });
    (void)produce(5);
    EXPECT_THAT(pixel, ElementsAre(0, 255, 0, 255)) << "and its framebuffer is bound";
}

TEST_F(PlayerImplFrame, isRenderedAlsoWhenItsFramebufferCannotBeBound) {
    makeEngine(VideoBufferResolution(16, 8, 4, 12, false));  // the driver completes no framebuffer of this depth
    FakeGraphEngine::script().draws = false;
    const auto buffer = produce(5);
    EXPECT_TRUE(buffer);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{5});
}

TEST_F(PlayerImplFrame, thatIsCachedIsHandedOutAndNothingIsRenderedMovedOrPosted) {
    const auto first = produce(7);
    startRun(params(5, 0, 50));
    for (const bool onDemand : {true, false})
        EXPECT_EQ(produce(7, onDemand), first);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
    EXPECT_EQ(currentFrame(), 5);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplFrame, takesThePlaceOfARecordThatIsNoFrame) {
    ASSERT_EQ(Inspector::cache(*engine).put("5", SharedPtr<CacheData>(new ForeignRecord)).get(), Status::ok);
    const auto buffer = produce(5);
    ASSERT_TRUE(buffer);
    SharedPtr<VideoBuffer> cached;
    ASSERT_EQ(Inspector::cacheGet(*engine, 5, cached).get(), Status::ok);
    EXPECT_EQ(cached, buffer);
}

TEST_F(PlayerImplFrame, inMemoryHoldsABlockAndNoFramebuffer) {
    setBlocks(4);
    const auto buffer = produce(5);
    EXPECT_EQ(buffer->getType(), VideoBuffer::memoryKind);
    EXPECT_EQ(numFreeFramebuffers(), 4u);
}

// ---- The pools ------------------------------------------------------------------------------------------------------

TEST_F(PlayerImplFrame, mayTakeTheLastResourceOfItsPoolOnlyIfAHostWaits) {
    EXPECT_TRUE(isAllowLast(produce(1, true)));
    EXPECT_FALSE(isAllowLast(produce(2, false)));
    setBlocks(4);
    EXPECT_TRUE(isAllowLast(produce(3, true)));
    EXPECT_FALSE(isAllowLast(produce(4, false)));
}

TEST_F(PlayerImplFrame, withOneFramebufferLeftSucceedsOnDemandAndFailsAhead) {
    setFramebuffers(1);
    EXPECT_EQ(failureOf(1, false), 260);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
    EXPECT_TRUE(produce(1, true));
}

TEST_F(PlayerImplFrame, withOneBlockLeftSucceedsOnDemandAndFailsAhead) {
    setBlocks(1);
    EXPECT_EQ(failureOf(1, false), 260);
    EXPECT_EQ(numFreeFramebuffers(), 4u);
    EXPECT_TRUE(produce(1, true));
}

TEST_F(PlayerImplFrame, evictsOneAfterAnotherUntilAFramebufferComesBack) {
    setFramebuffers(3);
    const auto heldByAHost = produce(1);
    (void)produce(2);
    (void)produce(3);
    EXPECT_TRUE(produce(4));
    EXPECT_FALSE(isCached(1)) << "evicted in vain";
    EXPECT_FALSE(isCached(2));
    EXPECT_TRUE(isCached(3));
}

TEST_F(PlayerImplFrame, evictsOneAfterAnotherUntilABlockComesBack) {
    setBlocks(3);
    const auto heldByAHost = produce(1);
    (void)produce(2);
    (void)produce(3);
    EXPECT_TRUE(produce(4));
    EXPECT_FALSE(isCached(2));
    EXPECT_TRUE(isCached(3));
}

TEST_F(PlayerImplFrame, aheadOfTheHostEvictsOnlyWhatTheRunDoesNotNeed) {
    setFramebuffers(3);
    (void)produce(60);
    (void)produce(5);
    startRun(params(5, 0, 50));
    EXPECT_TRUE(produce(6, false));
    EXPECT_FALSE(isCached(60));
    EXPECT_EQ(failureOf(7, false), 260) << "frames 5 and 6 are needed";
    EXPECT_TRUE(isCached(5));
    EXPECT_TRUE(isCached(6));
}

TEST_F(PlayerImplFrame, withoutARunEvictsNothingToLookAhead) {
    setFramebuffers(2);
    (void)produce(60);
    EXPECT_EQ(failureOf(61, false), 260);
    EXPECT_TRUE(isCached(60));
}

TEST_F(PlayerImplFrame, withoutAnythingToEvictFailsAndRendersNothing) {
    setFramebuffers(1);
    const auto heldByAHost = produce(1);
    ASSERT_EQ(Inspector::cacheErase(*engine, 1).get(), Status::ok);
    FakeGraphEngine::clearJournal();
    EXPECT_EQ(failureOf(2), 260);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
}

TEST_F(PlayerImplFrame, withoutABlockFailsAndGivesItsFramebufferBack) {
    setBlocks(1);
    const auto heldByAHost = produce(1);
    EXPECT_EQ(failureOf(2), 260);
    EXPECT_EQ(numFreeFramebuffers(), 4u);
}

TEST_F(PlayerImplFrame, forWhichNoObjectCanBeMadeIsType1) {
    const AllocationFault fault(sizeof(VideoBufferPrivate));
    EXPECT_EQ(failureOf(1, true), 1);
    EXPECT_EQ(failureOf(1, false), 1);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
}

TEST_F(PlayerImplFrame, forWhoseMemoryNoObjectCanBeMadeIsType1) {
    setBlocks(2);
    std::unique_ptr<AllocationFault> fault;
    FakeGraphEngine::callBeforeRender(
        [&](int64) { fault = std::make_unique<AllocationFault>(sizeof(VideoBufferPrivate)); });
    EXPECT_EQ(failureOf(1), 1);
    fault.reset();
    EXPECT_EQ(numFreeFramebuffers(), 4u);
}

// ---- Failures behind the pools --------------------------------------------------------------------------------------

TEST_F(PlayerImplFrame, thatCannotBeRenderedGivesItsFramebufferBack) {
    FakeGraphEngine::answer("renderFrame", 777);
    EXPECT_EQ(failureOf(1), 777);
    EXPECT_EQ(numFreeFramebuffers(), 4u);
}

TEST_F(PlayerImplFrame, thatCannotBeReadBackGivesBothItsResourcesBack) {
    setBlocks(1);
    const LogCapture log;
    {
        const PixelBufferFault fault(PixelBufferFault::Operation::bind);
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(Inspector::produceVideoBuffer(*engine, 1, true, buffer).get(), 274);
        EXPECT_FALSE(buffer);
    }
    EXPECT_THAT(log.lines(), ElementsAre("PlayerImpl::_copyVideoBuffer()-PBO bind failed"));
    EXPECT_FALSE(isCached(1));
    EXPECT_EQ(numFreeFramebuffers(), 4u);
    EXPECT_TRUE(produce(1)) << "the only block has come back";
}

// ---- The current frame ----------------------------------------------------------------------------------------------

TEST_F(PlayerImplFrame, onDemandInsideTheRangeBecomesTheCurrentFrameAndPostsOneStep) {
    startRun(params(5, 0, 50));
    for (const int64 frame : {0, 50, 30}) {
        (void)produce(frame);
        EXPECT_EQ(currentFrame(), frame);
        EXPECT_THAT(posted(), ElementsAre(CmdType::produce_next_video_buffer));
    }
}

TEST_F(PlayerImplFrame, onDemandOutsideTheRangeMovesAndPostsNothing) {
    startRun(params(5, 0, 50));
    for (const int64 frame : {-1, 51}) {
        EXPECT_TRUE(produce(frame));
        EXPECT_EQ(currentFrame(), 5);
        EXPECT_THAT(posted(), IsEmpty());
    }
}

TEST_F(PlayerImplFrame, aheadOfTheHostMovesAndPostsNothing) {
    startRun(params(5, 0, 50));
    EXPECT_TRUE(produce(30, false));
    EXPECT_EQ(currentFrame(), 5);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplFrame, onDemandWithoutARunMovesAndPostsNothing) {
    startRun(params(5, 0, 50));
    ASSERT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
    EXPECT_TRUE(produce(30));
    EXPECT_EQ(currentFrame(), 5);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplFrame, isCachedAndHandedOutThoughTheCurrentFrameCannotMove) {
    startRun(params(10, 0, 50, static_cast<PlayParams::PlayMode>(9)));
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(Inspector::produceVideoBuffer(*engine, 4, true, buffer).get(), 258);
    EXPECT_TRUE(buffer);
    EXPECT_TRUE(isCached(4));
    EXPECT_THAT(posted(), IsEmpty());
}

}  // namespace QRT_0_81
