// What a host's request for a frame posts, and where.
#include <gmock/gmock.h>

#include <thread>

#include "harness/qrtForeignRecord.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtOtherCommand.h"
#include "harness/qrtPlayerImplFixture.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

}  // namespace

class PlayerImplDelivery : public PlayerImplFixture {
protected:
    PlayerImplDelivery() { Inspector::setInitialized(*engine, true); }
    ~PlayerImplDelivery() override { Inspector::setInitialized(*engine, false); }

    /// Another thread asks for the frame, and this one serves the request as the player thread would. Nothing else may
    /// be queued.
    int serve(int64 frame, SharedPtr<VideoBuffer>& buffer) {
        Status status;
        std::thread waitingHost([&] { status = engine->getVideoBuffer(frame, buffer); });
        auto command = queue().take();
        EXPECT_EQ(command->type(), CmdType::produce_video_buffer);
        command->execute(*engine);
        command.reset();
        waitingHost.join();
        return status.get();
    }
};

TEST_F(PlayerImplDelivery, aRequestGoesToTheFrontIfAHostWaitsForItsFrameAndElseToTheBack) {
    for (const bool onDemand : {true, false}) {
        queue().pushBack(std::make_unique<OtherCommand>());
        SharedPtr<VideoBuffer> buffer;
        Status status;
        std::thread waiting(
            [&] { status = Inspector::cmdProduceVideoBuffer(*engine, onDemand ? 5 : 6, buffer, onDemand); });
        while (queue().size() != 2)
            std::this_thread::yield();
        auto first = queue().take();
        auto second = queue().take();
        EXPECT_EQ(first->type(), onDemand ? CmdType::produce_video_buffer : CmdType::get_pref);
        EXPECT_EQ(second->type(), onDemand ? CmdType::get_pref : CmdType::produce_video_buffer);
        first->execute(*engine);
        second->execute(*engine);
        first.reset();
        second.reset();
        waiting.join();
        EXPECT_EQ(status.get(), Status::ok);
        ASSERT_TRUE(buffer);
        EXPECT_EQ(dynamicPtrCast<VideoBufferPrivate>(buffer)->isAllowLast(), onDemand);
    }
}

TEST_F(PlayerImplDelivery, aCachedFramePostsItsNumberToTheFrontAndNeedsNobodyToAnswer) {
    const auto cached = produce(7);
    startRun(params(5, 0, 50));
    queue().pushBack(std::make_unique<OtherCommand>());
    EXPECT_TRUE(engine->isVideoBufferReady(7));
    EXPECT_FALSE(engine->isVideoBufferReady(8));
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(7, buffer).get(), Status::ok);
    EXPECT_EQ(buffer, cached);
    ASSERT_EQ(queue().size(), 2u);
    const auto update = queue().take();
    ASSERT_EQ(update->type(), CmdType::update_current_frame_number);
    update->execute(*engine);
    EXPECT_EQ(currentFrame(), 7);
}

TEST_F(PlayerImplDelivery, aCachedFrameOutsideOfWhatIsPlayedPostsNothing) {
    for (const int64 frame : {4, 5, 50, 51})
        (void)produce(frame);
    startRun(params(10, 5, 50));
    SharedPtr<VideoBuffer> buffer;
    for (const int64 outside : {4, 51}) {
        ASSERT_EQ(engine->getVideoBuffer(outside, buffer).get(), Status::ok);
        EXPECT_EQ(queue().size(), 0u) << outside;
    }
    for (const int64 inside : {5, 50}) {
        ASSERT_EQ(engine->getVideoBuffer(inside, buffer).get(), Status::ok);
        EXPECT_THAT(posted(), ElementsAre(CmdType::update_current_frame_number)) << inside;
    }
}

TEST_F(PlayerImplDelivery, aMissedFramePostsItsNumberBeforeTheStepThatItsProductionPosted) {
    startRun(params(5, 0, 50));
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(serve(30, buffer), Status::ok);
    EXPECT_TRUE(buffer);
    EXPECT_THAT(posted(), ElementsAre(CmdType::update_current_frame_number, CmdType::produce_next_video_buffer));
}

TEST_F(PlayerImplDelivery, withoutARunPostsNothingBehindARequest) {
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(serve(30, buffer), Status::ok);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplDelivery, aFailurePostsNothingThoughTheFrameMayBeThere) {
    startRun(params(10, 0, 50, PlayParams::ping_pong));
    FakeGraphEngine::answer("setStep", 778);
    const LogCapture log;
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(serve(4, buffer), 778);
    EXPECT_TRUE(buffer);
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("getVideoBuffer() failed = 778"));
}

TEST_F(PlayerImplDelivery, aRecordThatIsNoFrameIsAMiss) {
    ASSERT_EQ(Inspector::cache(*engine).put("5", SharedPtr<CacheData>(new ForeignRecord)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(serve(5, buffer), Status::ok);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{5});
}

}  // namespace QRT_0_81
