// Frames: one lent resource each, for as long as they live.
#include "qrtVideoBufferPrivate.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtPoolObserver.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

namespace {

using SizeUnit = ResourcePool::SizeUnit;

}  // namespace

class VideoBufferPrivateTest : public ::testing::Test {
protected:
    VideoBufferPrivateTest() {
        EXPECT_EQ(fboPool->setup(3, SizeUnit::buffers, small).get(), Status::ok);
        EXPECT_EQ(ramPool->setup(3, SizeUnit::buffers, small).get(), Status::ok);
    }

    HostContext host;
    SharedPtr<ResourcePoolFBO> fboPool = ResourcePoolFBO::create();
    SharedPtr<ResourcePoolRAM> ramPool = ResourcePoolRAM::create();
};

TEST_F(VideoBufferPrivateTest, aFramebufferFrameAnswersWithItsTexture) {
    const auto buffer = VideoBufferPrivate::create(fboPool, true);
    EXPECT_EQ(buffer->refcount(), 1u);
    EXPECT_EQ(buffer->getStatus().get(), Status::ok);
    EXPECT_EQ(buffer->getType(), 0);
    EXPECT_EQ(buffer->getResolution(), small);
    EXPECT_TRUE(buffer->isAllowLast());
    QOpenGLFramebufferObject* fbo = nullptr;
    EXPECT_EQ(buffer->getFBO(fbo).get(), Status::ok);
    ASSERT_NE(fbo, nullptr);
    unsigned int texture = 0;
    EXPECT_EQ(buffer->getTexture(texture).get(), Status::ok);
    EXPECT_EQ(texture, fbo->texture());
    EXPECT_TRUE(host.gl().glIsTexture(texture));
}

TEST_F(VideoBufferPrivateTest, aFramebufferFrameHasNullDataAndItsStatus) {
    const auto buffer = VideoBufferPrivate::create(fboPool, true);
    void* data = this;
    EXPECT_EQ(buffer->getData(data).get(), Status::ok);
    EXPECT_EQ(data, nullptr);
    data = this;
    EXPECT_EQ(static_cast<VideoBufferPrivate const&>(*buffer).getData(data).get(), Status::ok);
    EXPECT_EQ(data, nullptr);
}

TEST_F(VideoBufferPrivateTest, aMemoryFrameAnswersWithItsMemory) {
    const auto buffer = VideoBufferPrivate::create(ramPool, false);
    EXPECT_EQ(buffer->refcount(), 1u);
    EXPECT_EQ(buffer->getStatus().get(), Status::ok);
    EXPECT_EQ(buffer->getType(), 1);
    EXPECT_EQ(buffer->getResolution(), small);
    EXPECT_FALSE(buffer->isAllowLast());
    void* data = nullptr;
    EXPECT_EQ(buffer->getData(data).get(), Status::ok);
    EXPECT_NE(data, nullptr);
    void* sameData = nullptr;
    EXPECT_EQ(static_cast<VideoBufferPrivate const&>(*buffer).getData(sameData).get(), Status::ok);
    EXPECT_EQ(sameData, data);
}

TEST_F(VideoBufferPrivateTest, aMemoryFrameHasTexture0AndItsStatus) {
    const auto buffer = VideoBufferPrivate::create(ramPool, true);
    unsigned int texture = 99;
    EXPECT_EQ(buffer->getTexture(texture).get(), Status::ok);
    EXPECT_EQ(texture, 0u);
    QOpenGLFramebufferObject* fbo = reinterpret_cast<QOpenGLFramebufferObject*>(this);
    EXPECT_EQ(buffer->getFBO(fbo).get(), Status::ok);
    EXPECT_EQ(fbo, nullptr);
}

TEST_F(VideoBufferPrivateTest, theKindsRunOppositeToThePoolsTypes) {
    EXPECT_EQ(VideoBufferPrivate::create(fboPool, true)->getType(), static_cast<int>(ramPool->getType()));
    EXPECT_EQ(VideoBufferPrivate::create(ramPool, true)->getType(), static_cast<int>(fboPool->getType()));
}

TEST_F(VideoBufferPrivateTest, ofNResourcesAllButTheLastAreLentToThoseWhoMayNotHaveIt) {
    std::vector<SharedPtr<VideoBufferPrivate>> fbos;
    std::vector<SharedPtr<VideoBufferPrivate>> blocks;
    for (int i = 0; i < 2; ++i) {
        fbos.push_back(VideoBufferPrivate::create(fboPool, false));
        blocks.push_back(VideoBufferPrivate::create(ramPool, false));
        EXPECT_EQ(fbos.back()->getStatus().get(), Status::ok);
        EXPECT_EQ(blocks.back()->getStatus().get(), Status::ok);
    }
    EXPECT_EQ(VideoBufferPrivate::create(fboPool, false)->getStatus().get(), 260);
    EXPECT_EQ(VideoBufferPrivate::create(ramPool, false)->getStatus().get(), 260);
    EXPECT_EQ(VideoBufferPrivate::create(fboPool, true)->getStatus().get(), Status::ok);
    EXPECT_EQ(VideoBufferPrivate::create(ramPool, true)->getStatus().get(), Status::ok);
}

TEST_F(VideoBufferPrivateTest, aFrameWithoutAResourceAnswersType260EverywhereAndHoldsNothing) {
    (void)fboPool->setSize(1, SizeUnit::buffers);
    (void)ramPool->setSize(1, SizeUnit::buffers);
    for (auto const& buffer :
         {VideoBufferPrivate::create(fboPool, false), VideoBufferPrivate::create(ramPool, false)}) {
        EXPECT_EQ(buffer->getStatus().get(), 260);
        void* data = this;
        EXPECT_EQ(buffer->getData(data).get(), 260);
        EXPECT_EQ(data, nullptr);
        unsigned int texture = 99;
        EXPECT_EQ(buffer->getTexture(texture).get(), 260);
        EXPECT_EQ(texture, 0u);
        QOpenGLFramebufferObject* fbo = reinterpret_cast<QOpenGLFramebufferObject*>(this);
        EXPECT_EQ(buffer->getFBO(fbo).get(), 260);
        EXPECT_EQ(fbo, nullptr);
        EXPECT_FALSE(buffer->getResolution().isValid());
        EXPECT_FALSE(buffer->isAllowLast());
    }
    EXPECT_EQ(VideoBufferPrivate::create(fboPool, false)->getType(), 0);
    EXPECT_EQ(VideoBufferPrivate::create(ramPool, false)->getType(), 1);
}

TEST_F(VideoBufferPrivateTest, thePoolSeesOneLoanAndOneReturnInAFramesLife) {
    PoolObserver ofFbos(*fboPool);
    PoolObserver ofBlocks(*ramPool);
    auto fbo = VideoBufferPrivate::create(fboPool, false);
    auto block = VideoBufferPrivate::create(ramPool, false);
    EXPECT_EQ(ofFbos.numLockHints, 1);
    EXPECT_EQ(ofBlocks.numLockHints, 1);
    SharedPtr<VideoBuffer> secondReference = fbo;
    fbo.reset();
    EXPECT_EQ(ofFbos.numReleaseHints, 0);
    block.reset();
    EXPECT_EQ(ofBlocks.numReleaseHints, 1);
    secondReference.reset();
    EXPECT_EQ(ofFbos.numReleaseHints, 1);
}

TEST_F(VideoBufferPrivateTest, theEndOfAFrameWithoutAResourceIsNoReturn) {
    (void)fboPool->setSize(1, SizeUnit::buffers);
    (void)ramPool->setSize(1, SizeUnit::buffers);
    PoolObserver ofFbos(*fboPool);
    PoolObserver ofBlocks(*ramPool);
    (void)VideoBufferPrivate::create(fboPool, false);
    (void)VideoBufferPrivate::create(ramPool, false);
    EXPECT_EQ(ofFbos.numReleaseHints, 0);
    EXPECT_EQ(ofBlocks.numReleaseHints, 0);
}

TEST_F(VideoBufferPrivateTest, aFrameOutlivesThePoolsOwnerAndGivesItsResourceBackToThePool) {
    PoolObserver ofFbos(*fboPool);
    PoolObserver ofBlocks(*ramPool);
    auto fbo = VideoBufferPrivate::create(fboPool, true);
    auto block = VideoBufferPrivate::create(ramPool, true);
    fboPool.reset();
    ramPool.reset();
    unsigned int texture = 0;
    EXPECT_EQ(fbo->getTexture(texture).get(), Status::ok);
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    void* data = nullptr;
    EXPECT_EQ(block->getData(data).get(), Status::ok);
    std::memset(data, 1, small.getBufferSize());
    fbo.reset();
    block.reset();
    EXPECT_EQ(ofFbos.numReleaseHints, 1);
    EXPECT_EQ(ofBlocks.numReleaseHints, 1);
}

TEST_F(VideoBufferPrivateTest, theLastFrameTakesItsPoolWithIt) {
    const int numTextures = host.countTextures();
    auto buffer = VideoBufferPrivate::create(fboPool, true);
    fboPool.reset();
    EXPECT_EQ(host.countTextures(), numTextures);
    buffer.reset();
    EXPECT_EQ(host.countTextures(), numTextures - 3);
}

TEST_F(VideoBufferPrivateTest, theLastReferenceMayGoOnAnyThread) {
    auto fbo = VideoBufferPrivate::create(fboPool, true);
    auto block = VideoBufferPrivate::create(ramPool, true);
    PoolObserver ofFbos(*fboPool);
    PoolObserver ofBlocks(*ramPool);
    std::thread([&] {
        fbo.reset();
        block.reset();
    }).join();
    EXPECT_EQ(ofFbos.numReleaseHints, 1);
    EXPECT_EQ(ofBlocks.numReleaseHints, 1);
    std::vector<SharedPtr<VideoBufferPrivate>> all;
    for (int i = 0; i < 3; ++i) {
        all.push_back(VideoBufferPrivate::create(fboPool, true));
        EXPECT_EQ(all.back()->getStatus().get(), Status::ok);
    }
}

TEST_F(VideoBufferPrivateTest, theResolutionIsThatOfTheMomentOfLending) {
    const auto buffer = VideoBufferPrivate::create(ramPool, true);
    (void)ramPool->setResolution(VideoBufferResolution(32, 8, 4, 8, false));
    EXPECT_EQ(buffer->getResolution(), small);
}

TEST_F(VideoBufferPrivateTest, theSlotsAreInTheirOrder) {
    const auto fbo = VideoBufferPrivate::create(fboPool, true);
    const auto block = VideoBufferPrivate::create(ramPool, true);
    VideoBuffer* const texture = fbo.get();
    VideoBuffer* const memory = block.get();
    callSlot<void>(1, memory);
    EXPECT_EQ(callSlot<uint32>(3, memory), 2u);
    EXPECT_FALSE(callSlot<bool>(2, memory));
    EXPECT_EQ(callSlot<unsigned char>(4, texture), 0);
    EXPECT_EQ(callSlot<unsigned char>(4, memory), 1);
    void* expected = nullptr;
    ASSERT_TRUE(block->getData(expected).success());
    for (const size_t slot : {5u, 6u}) {
        void* data = nullptr;
        EXPECT_EQ((callSlot<Status, VideoBuffer, void**>(slot, memory, &data).get()), Status::ok);
        EXPECT_EQ(data, expected);
    }
    unsigned int name = 0;
    EXPECT_EQ((callSlot<Status, VideoBuffer, unsigned int*>(7, texture, &name).get()), Status::ok);
    EXPECT_TRUE(host.gl().glIsTexture(name));
    EXPECT_EQ(callSlot<VideoBufferResolution>(8, memory), small);
}

TEST_F(VideoBufferPrivateTest, slot0GivesTheResourceBack) {
    PoolObserver observer(*ramPool);
    VideoBuffer* const buffer = new VideoBufferPrivate(ramPool, true);
    deleteThroughSlot0(buffer);
    EXPECT_EQ(observer.numReleaseHints, 1);
    EXPECT_EQ(ramPool->refcount(), 1u);
}

TEST_F(VideoBufferPrivateTest, oneThatGotNoResourceMayAskOnceMore) {
    for (const bool isInMemory : {false, true}) {
        const auto lend = [&] {
            return isInMemory ? VideoBufferPrivate::create(ramPool, true) : VideoBufferPrivate::create(fboPool, true);
        };
        auto first = lend();
        const auto second = lend();
        const auto third = lend();
        const auto late = lend();
        EXPECT_EQ(late->lend().get(), Status::no_resource);
        EXPECT_EQ(late->getStatus().get(), Status::no_resource);
        first.reset();
        EXPECT_EQ(late->lend().get(), Status::ok);
        EXPECT_EQ(late->getStatus().get(), Status::ok);
        EXPECT_EQ(late->getResolution(), small);
        EXPECT_EQ(lend()->getStatus().get(), Status::no_resource) << "it has what came back";
        EXPECT_EQ(late->lend().get(), Status::ok) << "it has one";
    }
}

}  // namespace QRT_0_81
