// One cached frame of an external segment: what it remembers, and its four copies.
#include "qrtExternalSegmentVideoBuffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtTestTexture.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

namespace {

using Pixel = TestTexture::Pixel;
using Block = std::vector<unsigned char>;

}  // namespace

class ExternalSegmentVideoBufferTest : public ::testing::Test {
protected:
    ExternalSegmentVideoBufferTest() {
        (void)fboPool->setup(1, ResourcePool::SizeUnit::buffers, small);
        (void)ramPool->setup(1, ResourcePool::SizeUnit::buffers, small);
    }

    SharedPtr<ExternalSegmentVideoBuffer> textureRecord(unsigned int rectangle = 1) {
        return SharedPtr<ExternalSegmentVideoBuffer>(
            new ExternalSegmentVideoBuffer(rectangle, small, VideoBufferPrivate::create(fboPool, true)));
    }
    SharedPtr<ExternalSegmentVideoBuffer> ramRecord(size_t size = smallSize) {
        return SharedPtr<ExternalSegmentVideoBuffer>(
            new ExternalSegmentVideoBuffer(size, small, VideoBufferPrivate::create(ramPool, true)));
    }

    HostContext host;
    const SharedPtr<ResourcePoolFBO> fboPool = ResourcePoolFBO::create(nullptr);
    const SharedPtr<ResourcePoolRAM> ramPool = ResourcePoolRAM::create();
};

TEST_F(ExternalSegmentVideoBufferTest, ofATextureRemembersItsTargetAndHasNoSize) {
    for (const unsigned int rectangle : {0u, 1u, 5u}) {
        const auto record = textureRecord(rectangle);
        EXPECT_EQ(record->getRectangle(), rectangle);
        EXPECT_EQ(record->getSize(), 0u);
        EXPECT_EQ(record->getResolution(), small);
    }
}

TEST_F(ExternalSegmentVideoBufferTest, inMemoryRemembersItsSizeAndCountsAsRectangle) {
    const auto record = ramRecord(77);
    EXPECT_EQ(record->getRectangle(), 1u);
    EXPECT_EQ(record->getSize(), 77u);
    EXPECT_EQ(record->getResolution(), small);
}

TEST_F(ExternalSegmentVideoBufferTest, givesItsResourceBackAtItsEnd) {
    auto texture = textureRecord();
    auto memory = ramRecord();
    EXPECT_EQ(fboPool->lock(true), nullptr);
    EXPECT_EQ(ramPool->lock(true), nullptr);
    texture.reset();
    memory.reset();
    auto* const fbo = fboPool->lock(true);
    EXPECT_NE(fbo, nullptr);
    fboPool->release(fbo);
    void* const block = ramPool->lock(true);
    EXPECT_NE(block, nullptr);
    ramPool->release(block);
}

TEST_F(ExternalSegmentVideoBufferTest, keepsItsPoolAliveWhenEveryoneElseHasLetGoOfIt) {
    auto pool = ResourcePoolRAM::create();
    (void)pool->setup(1, ResourcePool::SizeUnit::buffers, small);
    const SharedPtr<ExternalSegmentVideoBuffer> record(
        new ExternalSegmentVideoBuffer(smallSize, small, VideoBufferPrivate::create(pool, true)));
    pool.reset();
    Block block(smallSize, 5);
    EXPECT_EQ(record->copyFromRam(block.data(), block.size()).get(), Status::ok);
}

TEST_F(ExternalSegmentVideoBufferTest, countsReferencesAndIsNotClonedThroughItsSlots) {
    const auto record = ramRecord();
    CacheData* const data = record.get();
    ASSERT_EQ(static_cast<void*>(data), static_cast<void*>(record.get()));
    callSlot<void>(1, data);
    EXPECT_EQ(callSlot<uint32>(3, data), 2u);
    EXPECT_FALSE(callSlot<bool>(2, data));
    EXPECT_FALSE((callSlot<ConstSharedPtr<CacheData>>(4, data)));
    EXPECT_FALSE((callSlot<SharedPtr<CacheData>>(5, data)));
    EXPECT_FALSE((callSlot<bool>(6, data, CacheData::Reason::lookup)));
}

// ---- Textures -------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentVideoBufferTest, copiesATextureInAndOutOverItsWholeSize) {
    for (const bool rectangle : {true, false}) {
        const auto record = textureRecord(rectangle ? 1 : 0);
        TestTexture source(host.gl(), rectangle, 16, 8);
        source.fill({200, 100, 50, 25});
        ASSERT_EQ(record->copyFromTexture(source.name()).get(), Status::ok);
        source.fill(black);
        const TestTexture target(host.gl(), rectangle, 16, 8);
        ASSERT_EQ(record->copyToTexture(target.name()).get(), Status::ok);
        for (const auto& [x, y] : {std::pair{0, 0}, {15, 0}, {0, 7}, {15, 7}, {8, 4}}) {
            EXPECT_EQ(target.pixel(x, y), (Pixel{200, 100, 50, 25})) << x << "," << y;
        }
        EXPECT_EQ(source.pixel(8, 4), black) << "a copy out leaves the first texture alone";
    }
}

TEST_F(ExternalSegmentVideoBufferTest, ofALargerTextureCopiesNoMoreThanItsOwnSize) {
    const auto record = textureRecord();
    TestTexture source(host.gl(), true, 40, 40);
    source.fill({9, 9, 9, 9});
    ASSERT_EQ(record->copyFromTexture(source.name()).get(), Status::ok);
    const TestTexture target(host.gl(), true, 40, 40);
    ASSERT_EQ(record->copyToTexture(target.name()).get(), Status::ok);
    EXPECT_EQ(target.pixel(15, 7), (Pixel{9, 9, 9, 9}));
    EXPECT_EQ(target.pixel(16, 7), black);
    EXPECT_EQ(target.pixel(15, 8), black);
}

TEST_F(ExternalSegmentVideoBufferTest, copiesInTheMiddleOfTheCallersDrawing) {
    // Neither the caller's scissor cuts the copy, nor does the copy cost the caller its state.
    auto& gl = host.gl();
    GLuint framebuffers[2] = {};
    gl.glGenFramebuffers(2, framebuffers);
    TestTexture source(gl, true, 16, 8);
    source.fill({7, 8, 9, 10});
    const TestTexture target(gl, true, 16, 8);
    const auto record = textureRecord();
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[0]);
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffers[1]);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(0, 0, 1, 1);
    EXPECT_EQ(record->copyFromTexture(source.name()).get(), Status::ok);
    EXPECT_EQ(record->copyToTexture(target.name()).get(), Status::ok);
    EXPECT_TRUE(gl.glIsEnabled(GL_SCISSOR_TEST));
    gl.glDisable(GL_SCISSOR_TEST);
    EXPECT_EQ(record->copyToTexture(target.name()).get(), Status::ok);
    EXPECT_FALSE(gl.glIsEnabled(GL_SCISSOR_TEST));
    GLint bound[2] = {};
    gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound[0]);
    gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound[1]);
    EXPECT_EQ(bound[0], static_cast<GLint>(framebuffers[0]));
    EXPECT_EQ(bound[1], static_cast<GLint>(framebuffers[1]));
    gl.glDeleteFramebuffers(2, framebuffers);
    EXPECT_EQ(target.pixel(15, 7), (Pixel{7, 8, 9, 10}));
}

TEST_F(ExternalSegmentVideoBufferTest, refusesTexture0) {
    const auto record = textureRecord();
    EXPECT_EQ(record->copyFromTexture(0).get(), 3);
    EXPECT_EQ(record->copyToTexture(0).get(), 3);
}

TEST_F(ExternalSegmentVideoBufferTest, withoutAFramebufferFailsToCopyATexture) {
    const TestTexture texture(host.gl(), true, 16, 8);
    const auto held = VideoBufferPrivate::create(fboPool, true);
    const auto starved = VideoBufferPrivate::create(fboPool, true);
    ASSERT_EQ(starved->getStatus().get(), 260);
    const auto memory = VideoBufferPrivate::create(ramPool, true);
    for (auto const& buffer : {starved, memory, SharedPtr<VideoBufferPrivate>()}) {
        ExternalSegmentVideoBuffer record(1u, small, buffer);
        EXPECT_EQ(record.copyFromTexture(texture.name()).get(), 1);
        EXPECT_EQ(record.copyToTexture(texture.name()).get(), 1);
        EXPECT_EQ(record.copyFromTexture(0).get(), 3) << "the texture is looked at first";
    }
}

TEST_F(ExternalSegmentVideoBufferTest, passesOnThatATextureCannotBeWrapped) {
    LogCapture log;
    const auto record = textureRecord();
    EXPECT_EQ(record->copyFromTexture(4711).get(), 1);
    EXPECT_EQ(record->copyToTexture(4711).get(), 1);
    const bool isDebugOn = std::getenv("QRT_DEBUG_PLAYER") != nullptr;
    EXPECT_EQ(log.messages().empty(), !isDebugOn);
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentVideoBufferTest, copiesTheSmallerOfTheTwoSizesInAndOut) {
    const auto record = ramRecord(100);
    const Block hundred(100, 1);
    ASSERT_EQ(record->copyFromRam(hundred.data(), hundred.size()).get(), Status::ok);
    Block source(200, 2);
    ASSERT_EQ(record->copyFromRam(source.data(), 60).get(), Status::ok);
    Block target(200, 3);
    ASSERT_EQ(record->copyToRam(target.data(), target.size()).get(), Status::ok);
    EXPECT_EQ(Block(target.begin(), target.begin() + 60), Block(60, 2));
    EXPECT_EQ(Block(target.begin() + 60, target.begin() + 100), Block(40, 1)) << "no more went in than was given";
    EXPECT_EQ(Block(target.begin() + 100, target.end()), Block(100, 3)) << "no more comes out than there is";
    ASSERT_EQ(record->copyFromRam(source.data(), source.size()).get(), Status::ok);
    Block few(10, 4);
    ASSERT_EQ(record->copyToRam(few.data(), 5).get(), Status::ok);
    EXPECT_EQ(few, (Block{2, 2, 2, 2, 2, 4, 4, 4, 4, 4}));
}

TEST_F(ExternalSegmentVideoBufferTest, refusesNullPointersAndSizesOfZero) {
    Block block(smallSize);
    const auto record = ramRecord();
    EXPECT_EQ(record->copyFromRam(nullptr, smallSize).get(), 3);
    EXPECT_EQ(record->copyToRam(nullptr, smallSize).get(), 3);
    EXPECT_EQ(record->copyFromRam(block.data(), 0).get(), 3);
    EXPECT_EQ(record->copyToRam(block.data(), 0).get(), 3);
}

TEST_F(ExternalSegmentVideoBufferTest, withoutMemoryOrSizeOfItsOwnRefusesToCopyMemory) {
    Block block(smallSize);
    const auto starving = VideoBufferPrivate::create(ramPool, true);
    const auto starved = VideoBufferPrivate::create(ramPool, true);
    ASSERT_EQ(starved->getStatus().get(), 260);
    for (auto const& buffer : {starved, SharedPtr<VideoBufferPrivate>(), VideoBufferPrivate::create(fboPool, true)}) {
        ExternalSegmentVideoBuffer record(smallSize, small, buffer);
        EXPECT_EQ(record.copyFromRam(block.data(), block.size()).get(), 3);
        EXPECT_EQ(record.copyToRam(block.data(), block.size()).get(), 3);
    }
    ExternalSegmentVideoBuffer sizeless(size_t{0}, small, starving);
    EXPECT_EQ(sizeless.copyFromRam(block.data(), block.size()).get(), 3);
    EXPECT_EQ(sizeless.copyToRam(block.data(), block.size()).get(), 3);
}

}  // namespace QRT_0_81
