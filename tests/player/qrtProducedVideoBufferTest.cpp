// The producer cache's record.
#include "qrtProducedVideoBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "harness/qrtLogCapture.h"
#include "harness/qrtPoolObserver.h"
#include "harness/qrtVirtualTable.h"
#include "qrtVideoBufferPrivate.h"

namespace QRT_0_81 {

namespace {

SharedPtr<ProducedVideoBuffer> record(int64 frame, SharedPtr<VideoBuffer> const& buffer) {
    return SharedPtr<ProducedVideoBuffer>(new ProducedVideoBuffer(frame, buffer));
}

}  // namespace

class ProducedVideoBufferTest : public ::testing::Test {
protected:
    ProducedVideoBufferTest() {
        EXPECT_TRUE(
            pool->setup(2, ResourcePool::SizeUnit::buffers, VideoBufferResolution(16, 8, 4, 8, false)).success());
    }

    const SharedPtr<ResourcePoolRAM> pool = ResourcePoolRAM::create();
};

TEST_F(ProducedVideoBufferTest, holdsOneFrameUnderItsNumber) {
    const SharedPtr<VideoBuffer> buffer = VideoBufferPrivate::create(pool, true);
    const auto produced = record(-7, buffer);
    EXPECT_EQ(produced->getFrameNumber(), -7);
    EXPECT_TRUE(produced->getVideoBuffer() == buffer);
    EXPECT_EQ(buffer->refcount(), 2u);
}

TEST_F(ProducedVideoBufferTest, givesTheResourceBackWhenItEnds) {
    PoolObserver observer(*pool);
    auto produced = record(1, VideoBufferPrivate::create(pool, true));
    EXPECT_EQ(observer.numReleaseHints, 0);
    produced.reset();
    EXPECT_EQ(observer.numReleaseHints, 1);
}

TEST_F(ProducedVideoBufferTest, aFrameThatTheHostStillHoldsSurvivesIt) {
    PoolObserver observer(*pool);
    SharedPtr<VideoBuffer> held = VideoBufferPrivate::create(pool, true);
    auto produced = record(1, held);
    produced.reset();
    EXPECT_EQ(observer.numReleaseHints, 0);
    EXPECT_EQ(held->refcount(), 1u);
    held.reset();
    EXPECT_EQ(observer.numReleaseHints, 1);
}

TEST_F(ProducedVideoBufferTest, neverExpiresAndHasNeitherCopyNorText) {
    const auto produced = record(1, VideoBufferPrivate::create(pool, true));
    EXPECT_FALSE(produced->expire(CacheData::Reason::lookup));
    EXPECT_FALSE(produced->clone());
    EXPECT_FALSE(static_cast<ProducedVideoBuffer const&>(*produced).clone());
    String text;
    int version = 0;
    EXPECT_TRUE(produced->serialize(text, version).failure());
    EXPECT_TRUE(produced->deserialize(text).failure());
}

TEST_F(ProducedVideoBufferTest, hasOnlyItsEndOfItsOwnAmongTheSlotsOfARecord) {
    PoolObserver observer(*pool);
    CacheData* const data = new ProducedVideoBuffer(1, VideoBufferPrivate::create(pool, true));
    callSlot<void>(1, data);
    EXPECT_EQ(callSlot<uint32>(3, data), 1u);
    EXPECT_FALSE((callSlot<ConstSharedPtr<CacheData>>(4, data)));
    EXPECT_FALSE((callSlot<SharedPtr<CacheData>>(5, data)));
    EXPECT_FALSE((callSlot<bool>(6, data, CacheData::Reason::lookup)));
    String text;
    int version = 0;
    EXPECT_TRUE((callSlot<Status, CacheData, String*, int*>(7, data, &text, &version).failure()));
    EXPECT_TRUE((callSlot<Status, CacheData, String const*>(8, data, &text).failure()));
    EXPECT_TRUE(callSlot<bool>(2, data));
    EXPECT_EQ(observer.numReleaseHints, 0);
    deleteThroughSlot0(data);
    EXPECT_EQ(observer.numReleaseHints, 1);
}

TEST_F(ProducedVideoBufferTest, postsNothingWithDebugLinesOff) {
    const LogCapture log;
    record(1, VideoBufferPrivate::create(pool, true)).reset();
    EXPECT_TRUE(log.messages().empty());
}

// ---- With debug lines on --------------------------------------------------------------------------------------------

class ProducedVideoBufferDebugLines : public ProducedVideoBufferTest {};

TEST_F(ProducedVideoBufferDebugLines, itsEndSaysWhichFrameGoesBeforeTheResourceDoes) {
    auto first = record(10000000000, VideoBufferPrivate::create(pool, true));
    const LogCapture log;
    first.reset();
    EXPECT_THAT(log.lines(),
                ::testing::ElementsAre("Releasing frameNumber = 10000000000", "Releasing a buffer remaining 2"));
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtProducedVideoBuffer");
}

TEST_F(ProducedVideoBufferDebugLines, negativeFramesHaveTheirSign) {
    const LogCapture log;
    record(-3, SharedPtr<VideoBuffer>()).reset();
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("Releasing frameNumber = -3"));
}

}  // namespace QRT_0_81
