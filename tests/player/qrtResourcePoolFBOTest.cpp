// Pooled framebuffers, in a real context: their formats, how they are lent, and what becomes of those that a pool has
// forgotten.
#include "qrtResourcePoolFBO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtPoolObserver.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtThreadChances.h"
#include "qrtOpenGL.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using SizeUnit = ResourcePool::SizeUnit;

std::vector<QOpenGLFramebufferObject*> lockAll(ResourcePoolFBO& pool) {
    std::vector<QOpenGLFramebufferObject*> fbos;
    while (QOpenGLFramebufferObject* const fbo = pool.lock(true))
        fbos.push_back(fbo);
    return fbos;
}

void releaseAll(ResourcePoolFBO& pool, std::vector<QOpenGLFramebufferObject*> const& fbos) {
    for (QOpenGLFramebufferObject* const fbo : fbos)
        pool.release(fbo);
}

size_t numFree(ResourcePoolFBO& pool) {
    const auto fbos = lockAll(pool);
    releaseAll(pool, fbos);
    return fbos.size();
}

}  // namespace

class ResourcePoolFBOTest : public ::testing::Test {
protected:
    void build(uint64 count) { ASSERT_EQ(pool->setup(count, SizeUnit::buffers, small).get(), Status::ok); }
    GLint bindingOf(GLenum what) const {
        GLint name = -1;
        host.gl().glGetIntegerv(what, &name);
        return name;
    }

    HostContext host;
    const SharedPtr<FramebufferReaper> reaper = FramebufferReaper::create();
    SharedPtr<ResourcePoolFBO> pool = ResourcePoolFBO::create(reaper);
};

// ---- Formats --------------------------------------------------------------------------------------------------------

struct FormatCase {
    char const* name;
    int bits;
    int channels;
    bool isFloat;
    GLenum internalFormat;
    bool isComplete;
};

class ResourcePoolFBOFormats : public ResourcePoolFBOTest, public ::testing::WithParamInterface<FormatCase> {};

TEST_P(ResourcePoolFBOFormats, everyFramebufferHasItsInternalFormatAndNoErrorIsLeftBehind) {
    FormatCase const& format = GetParam();
    const VideoBufferResolution resolution(16, 8, format.channels, format.bits, format.isFloat);
    ASSERT_EQ(pool->setup(2, SizeUnit::buffers, resolution).get(), Status::ok);
    EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const auto fbos = lockAll(*pool);
    ASSERT_EQ(fbos.size(), 2u);
    for (QOpenGLFramebufferObject const* const fbo : fbos) {
        EXPECT_EQ(fbo->format().internalTextureFormat(), format.internalFormat);
        EXPECT_EQ(fbo->format().textureTarget(), static_cast<GLenum>(GL_TEXTURE_RECTANGLE));
        EXPECT_EQ(fbo->format().attachment(), QOpenGLFramebufferObject::NoAttachment);
        EXPECT_EQ(fbo->format().samples(), 0);
        EXPECT_EQ(fbo->size(), QSize(16, 8));
        EXPECT_EQ(fbo->isValid(), format.isComplete);
        if (!format.isComplete) continue;
        host.gl().glBindTexture(GL_TEXTURE_RECTANGLE, fbo->texture());
        GLint internalFormat = 0;
        host.gl().glGetTexLevelParameteriv(GL_TEXTURE_RECTANGLE, 0, GL_TEXTURE_INTERNAL_FORMAT, &internalFormat);
        EXPECT_EQ(static_cast<GLenum>(internalFormat), format.internalFormat);
        EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
    releaseAll(*pool, fbos);
}

INSTANTIATE_TEST_SUITE_P(
    All, ResourcePoolFBOFormats,
    ::testing::Values(FormatCase{"rgb8", 8, 3, false, 0x8051, true}, FormatCase{"rgba8", 8, 4, false, 0x8058, true},
                      FormatCase{"rgb8WhateverTheFloatFlag", 8, 3, true, 0x8051, true},
                      FormatCase{"rgba8WhateverTheFloatFlag", 8, 4, true, 0x8058, true},
                      FormatCase{"rgb10", 10, 3, false, 0x8052, true},
                      FormatCase{"rgb10a2", 10, 4, false, 0x8059, true},
                      FormatCase{"rgb10WhateverTheFloatFlag", 10, 3, true, 0x8052, true},
                      FormatCase{"rgb10a2WhateverTheFloatFlag", 10, 4, true, 0x8059, true},
                      FormatCase{"rgb16", 16, 3, false, 0x8054, true}, FormatCase{"rgba16", 16, 4, false, 0x805B, true},
                      FormatCase{"rgb16f", 16, 3, true, 0x881B, true}, FormatCase{"rgba16f", 16, 4, true, 0x881A, true},
                      FormatCase{"rgb32ui", 32, 3, false, GL_RGB32UI, false},
                      FormatCase{"rgba32ui", 32, 4, false, GL_RGBA32UI, false},
                      FormatCase{"rgb32f", 32, 3, true, 0x8815, true}, FormatCase{"rgba32f", 32, 4, true, 0x8814, true},
                      FormatCase{"twelveBitsGiveFormat0", 12, 4, false, 0, false},
                      FormatCase{"sixtyFourBitsGiveFormat0", 64, 3, true, 0, false},
                      FormatCase{"anOddDepthWithTwoChannelsGivesFormat0", 9, 2, false, 0, false}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

TEST_F(ResourcePoolFBOTest, anotherChannelCountThan3Or4IsType262AndMakesNothing) {
    for (const int bits : {8, 10, 16, 32}) {
        for (const bool isFloat : {false, true}) {
            for (const int channels : {1, 2, 5}) {
                const VideoBufferResolution resolution(16, 8, channels, bits, isFloat);
                EXPECT_EQ(pool->setup(2, SizeUnit::buffers, resolution).get(), 262) << channels << " x " << bits;
                EXPECT_FALSE(pool->isInitialized());
                EXPECT_EQ(pool->lock(true), nullptr);
                EXPECT_EQ(reaper->numAlive(), 0u);
            }
        }
    }
}

TEST_F(ResourcePoolFBOTest, anInvalidResolutionIsType262AndItStaysUninitialized) {
    EXPECT_EQ(pool->initialize().get(), 262);
    (void)pool->setup(2, SizeUnit::buffers, VideoBufferResolution(0, 8, 4, 8, false));
    EXPECT_EQ(pool->initialize().get(), 262);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolFBOTest, formatsAreTheSameWhenBothAreInvalidOrAllFiveValuesAreEqual) {
    constexpr VideoBufferResolution reference(16, 8, 4, 16, false);
    EXPECT_TRUE(pool->isSameResolution(reference, VideoBufferResolution(16, 8, 4, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution(17, 8, 4, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution(16, 9, 4, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution(16, 8, 3, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution(16, 8, 4, 32, false)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution(16, 8, 4, 16, true)));
    EXPECT_FALSE(pool->isSameResolution(reference, VideoBufferResolution()));
    EXPECT_FALSE(pool->isSameResolution(VideoBufferResolution(), reference));
    EXPECT_TRUE(pool->isSameResolution(VideoBufferResolution(), VideoBufferResolution(0, 8, 4, 8, true)));
}

// ---- Building and clearing ------------------------------------------------------------------------------------------

TEST_F(ResourcePoolFBOTest, isOfTypeOneAndStartsWithNothing) {
    EXPECT_EQ(static_cast<int>(pool->getType()), 1);
    EXPECT_EQ(pool->refcount(), 1u);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(ResourcePoolFBOTest, isAPoolFirstAndASubjectSecond) {
    EXPECT_EQ(static_cast<void*>(static_cast<ResourcePool*>(pool.get())), static_cast<void*>(pool.get()));
    EXPECT_LT(static_cast<void*>(pool.get()), static_cast<void*>(static_cast<Subject*>(pool.get())));
}

TEST_F(ResourcePoolFBOTest, buildingRestoresTheFramebufferBindings) {
    GLuint names[2] = {};
    host.gl().glGenFramebuffers(2, names);
    host.gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, names[0]);
    host.gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, names[1]);
    build(3);
    EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(names[0]));
    EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(names[1]));
    EXPECT_EQ(pool->setResolution(VideoBufferResolution(16, 8, 2, 8, false)).get(), 262);
    EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(names[0]));
    EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(names[1]));
    host.gl().glDeleteFramebuffers(2, names);
}

TEST_F(ResourcePoolFBOTest, initializingTwiceMakesNothingNew) {
    build(2);
    EXPECT_EQ(pool->initialize().get(), Status::ok);
    EXPECT_EQ(reaper->numAlive(), 2u);
    EXPECT_EQ(numFree(*pool), 2u);
}

TEST_F(ResourcePoolFBOTest, uninitializingDeletesTheFreeFramebuffersAndTheirTextures) {
    const int numTextures = host.countTextures();
    const int numFramebuffers = host.countFramebuffers();
    build(3);
    EXPECT_EQ(host.countTextures(), numTextures + 3);
    EXPECT_EQ(host.countFramebuffers(), numFramebuffers + 3);
    EXPECT_EQ(pool->uninitialize().get(), Status::ok);
    EXPECT_EQ(host.countTextures(), numTextures);
    EXPECT_EQ(host.countFramebuffers(), numFramebuffers);
    EXPECT_EQ(pool->uninitialize().get(), Status::ok);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolFBOTest, isClearedWhenItEnds) {
    const int numTextures = host.countTextures();
    build(3);
    pool.reset();
    EXPECT_EQ(host.countTextures(), numTextures);
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(ResourcePoolFBOTest, leavesLentFramebuffersToTheirBorrowersWhenItEnds) {
    build(2);
    QOpenGLFramebufferObject* const lent = pool->lock(true);
    pool.reset();
    EXPECT_EQ(reaper->numAlive(), 1u);
    EXPECT_TRUE(host.gl().glIsTexture(lent->texture()));
    reaper->dispose(lent);
}

TEST_F(ResourcePoolFBOTest, worksWithoutAReaperGivenToIt) {
    const int numTextures = host.countTextures();
    auto own = ResourcePoolFBO::create();
    ASSERT_EQ(own->setup(2, SizeUnit::buffers, small).get(), Status::ok);
    EXPECT_EQ(host.countTextures(), numTextures + 2);
    own.reset();
    EXPECT_EQ(host.countTextures(), numTextures);
}

TEST_F(ResourcePoolFBOTest, sizeZeroDeletesItsFramebuffers) {
    build(2);
    EXPECT_EQ(pool->setSize(0, SizeUnit::buffers).get(), Status::ok);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(ResourcePoolFBOTest, theFloatFlagAloneRebuildsIt) {
    ASSERT_EQ(pool->setup(1, SizeUnit::buffers, VideoBufferResolution(16, 8, 4, 16, false)).get(), Status::ok);
    ASSERT_EQ(pool->setResolution(VideoBufferResolution(16, 8, 4, 16, true)).get(), Status::ok);
    QOpenGLFramebufferObject* const fbo = pool->lock(true);
    ASSERT_NE(fbo, nullptr);
    EXPECT_EQ(fbo->format().internalTextureFormat(), static_cast<GLenum>(GL_RGBA16F));
    pool->release(fbo);
}

TEST_F(ResourcePoolFBOTest, aBudgetBelowOneFrameGivesAPoolWithoutFramebuffers) {
    EXPECT_EQ(pool->setup(7, SizeUnit::megabytes, VideoBufferResolution(1920, 1080, 4, 8, false)).get(), Status::ok);
    EXPECT_TRUE(pool->isInitialized());
    EXPECT_EQ(pool->lock(false), nullptr);
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolFBOTest, aBudgetIsDividedByTheBytesOfAFrameInMemory) {
    constexpr VideoBufferResolution mebibyte(512, 512, 4, 8, false);
    ASSERT_EQ(pool->setup(2, SizeUnit::megabytes, mebibyte).get(), Status::ok);
    EXPECT_EQ(numFree(*pool), 2u);
}

// ---- Lending --------------------------------------------------------------------------------------------------------

TEST_F(ResourcePoolFBOTest, theLastFramebufferIsKeptForThoseWhoMayHaveIt) {
    build(1);
    EXPECT_EQ(pool->lock(false), nullptr);
    QOpenGLFramebufferObject* const last = pool->lock(true);
    EXPECT_NE(last, nullptr);
    EXPECT_EQ(pool->lock(true), nullptr);
    pool->release(last);
    EXPECT_EQ(pool->lock(true), last);
    pool->release(last);
}

TEST_F(ResourcePoolFBOTest, lendsTheFramebufferThatCameBackLast) {
    build(3);
    QOpenGLFramebufferObject* const a = pool->lock(true);
    QOpenGLFramebufferObject* const b = pool->lock(true);
    pool->release(a);
    pool->release(b);
    QOpenGLFramebufferObject* const first = pool->lock(true);
    QOpenGLFramebufferObject* const second = pool->lock(true);
    EXPECT_EQ(first, b);
    EXPECT_EQ(second, a);
    pool->release(first);
    pool->release(second);
}

TEST_F(ResourcePoolFBOTest, framebuffersLentDuringARebuildAreDeletedWhenTheyComeBack) {
    build(4);
    QOpenGLFramebufferObject* const a = pool->lock(true);
    QOpenGLFramebufferObject* const b = pool->lock(true);
    const GLuint textureOfA = a->texture();
    ASSERT_EQ(pool->setResolution(twiceAsWide).get(), Status::ok);
    EXPECT_EQ(reaper->numAlive(), 4u + 2u);
    EXPECT_TRUE(host.gl().glIsTexture(textureOfA));
    pool->release(a);
    EXPECT_EQ(reaper->numAlive(), 4u + 1u);
    EXPECT_FALSE(host.gl().glIsTexture(textureOfA));
    pool->release(b);
    EXPECT_EQ(reaper->numAlive(), 4u);
    const auto fbos = lockAll(*pool);
    EXPECT_EQ(fbos.size(), 4u);
    for (QOpenGLFramebufferObject const* const fbo : fbos)
        EXPECT_EQ(fbo->size(), QSize(32, 8));
    releaseAll(*pool, fbos);
}

TEST_F(ResourcePoolFBOTest, aForgottenFramebufferThatComesBackOnAnotherThreadIsDeletedInItsContext) {
    build(2);
    QOpenGLFramebufferObject* const fbo = pool->lock(true);
    const GLuint texture = fbo->texture();
    ASSERT_EQ(pool->uninitialize().get(), Status::ok);
    std::thread([&] { pool->release(fbo); }).join();
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    reaper->reap();
    EXPECT_FALSE(host.gl().glIsTexture(texture));
}

TEST_F(ResourcePoolFBOTest, aLentFramebufferMayComeBackOnAThreadWithoutAContext) {
    build(1);
    QOpenGLFramebufferObject* const fbo = pool->lock(true);
    std::thread([&] { pool->release(fbo); }).join();
    EXPECT_EQ(pool->lock(true), fbo);
    pool->release(fbo);
    EXPECT_EQ(reaper->numAlive(), 1u);
}

TEST_F(ResourcePoolFBOTest, aFramebufferThatItDidNotLendIsDeletedAndAnnounced) {
    build(2);
    auto* const foreign = new QOpenGLFramebufferObject(8, 8);
    const GLuint handle = foreign->handle();
    ASSERT_TRUE(host.gl().glIsFramebuffer(handle));
    PoolObserver observer(*pool);
    pool->release(foreign);
    EXPECT_FALSE(host.gl().glIsFramebuffer(handle));
    EXPECT_EQ(observer.numReleaseHints, 1);
    EXPECT_EQ(numFree(*pool), 2u);
}

TEST_F(ResourcePoolFBOTest, releasingNullAnnouncesAReturnAndChangesNothingElse) {
    build(2);
    PoolObserver observer(*pool);
    pool->release(nullptr);
    EXPECT_EQ(observer.numReleaseHints, 1);
    EXPECT_EQ(observer.numLockHints, 0);
    EXPECT_EQ(reaper->numAlive(), 2u);
    EXPECT_EQ(numFree(*pool), 2u);
}

TEST_F(ResourcePoolFBOTest, announcesEveryLoanAndEveryReturn) {
    build(2);
    PoolObserver observer(*pool);
    QOpenGLFramebufferObject* const fbo = pool->lock(false);
    EXPECT_EQ(observer.numLockHints, 1);
    EXPECT_EQ(pool->lock(false), nullptr);
    EXPECT_EQ(observer.numLockHints, 1);
    EXPECT_EQ(observer.numReleaseHints, 0);
    pool->release(fbo);
    EXPECT_EQ(observer.numReleaseHints, 1);
    EXPECT_EQ(observer.numStrangeHints, 0);
}

TEST_F(ResourcePoolFBOTest, anObserverMayAskThePoolThatNotifiesIt) {
    build(2);
    uint32 numSeen = 0;
    PoolObserver observer(*pool, [&] { numSeen = pool->getNumResources(); });
    pool->release(pool->lock(true));
    EXPECT_EQ(numSeen, 2u);
}

TEST_F(ResourcePoolFBOTest, observersAreToldUnderThePoolsLock) {
    build(2);
    std::atomic<bool> isAnswered{false};
    std::thread asking;
    PoolObserver observer(*pool, [&] {
        asking = std::thread([&] {
            (void)pool->isInitialized();
            isAnswered = true;
        });
        EXPECT_TRUE(staysFalse(isAnswered));
    });
    QOpenGLFramebufferObject* const fbo = pool->lock(true);
    asking.join();
    EXPECT_EQ(observer.numLockHints, 1);
    isAnswered = false;
    pool->release(fbo);
    asking.join();
    EXPECT_EQ(observer.numReleaseHints, 1);
}

TEST_F(ResourcePoolFBOTest, postsNothingWithDebugLinesOff) {
    const LogCapture log;
    build(2);
    pool->release(pool->lock(true));
    (void)pool->uninitialize();
    (void)pool->lock(true);
    EXPECT_TRUE(log.messages().empty());
}

// ---- With debug lines on --------------------------------------------------------------------------------------------

class ResourcePoolFBODebugLines : public ResourcePoolFBOTest {};

TEST_F(ResourcePoolFBODebugLines, buildingSaysHowManyFramebuffersItMade) {
    const LogCapture log;
    build(3);
    EXPECT_THAT(log.lines(), ElementsAre("ResourcePoolFBO::initialize()-numAllocatedFBO=3"));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtResourcePoolFBO");
    EXPECT_GT(log.messages()[0].line(), 0);
}

TEST_F(ResourcePoolFBODebugLines, aBudgetBelowOneFrameSaysThatNoneWasMade) {
    const LogCapture log;
    (void)pool->setup(7, SizeUnit::megabytes, VideoBufferResolution(1920, 1080, 4, 8, false));
    EXPECT_THAT(log.lines(), ElementsAre("ResourcePoolFBO::initialize()-numAllocatedFBO=0"));
}

TEST_F(ResourcePoolFBODebugLines, theSameConfigurationAgainSaysNothing) {
    build(3);
    const LogCapture log;
    build(3);
    EXPECT_EQ(pool->initialize().get(), Status::ok);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(ResourcePoolFBODebugLines, aFormatThatIsRefusedSaysNothing) {
    const LogCapture log;
    EXPECT_EQ(pool->setup(3, SizeUnit::buffers, VideoBufferResolution(16, 8, 2, 8, false)).get(), 262);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(ResourcePoolFBODebugLines, clearingCountsTheFreeFramebuffersOnly) {
    build(5);
    QOpenGLFramebufferObject* const a = pool->lock(true);
    QOpenGLFramebufferObject* const b = pool->lock(true);
    LogCapture log;
    ASSERT_EQ(pool->setResolution(twiceAsWide).get(), Status::ok);
    EXPECT_THAT(log.lines(), ElementsAre("ResourcePoolFBO::uninitialize()-numDeletedFBO=3",
                                         "ResourcePoolFBO::initialize()-numAllocatedFBO=5"));
    log.clear();
    pool->release(a);
    pool->release(b);
    EXPECT_THAT(log.lines(), ElementsAre("Releasing an FBO remaining 5", "Releasing an FBO remaining 5"));
}

TEST_F(ResourcePoolFBODebugLines, lockingAndReleasingSayHowManyRemain) {
    build(3);
    const LogCapture log;
    QOpenGLFramebufferObject* const fbo = pool->lock(false);
    pool->release(fbo);
    pool->release(nullptr);
    EXPECT_THAT(log.lines(), ElementsAre("Locking an FBO remaining 2", "Releasing an FBO remaining 3",
                                         "Releasing an FBO remaining 3"));
}

TEST_F(ResourcePoolFBODebugLines, observersAreToldBeforeTheLineIsPosted) {
    build(3);
    const LogCapture log;
    std::vector<size_t> numPosted;
    PoolObserver observer(*pool, [&] { numPosted.push_back(log.messages().size()); });
    pool->release(pool->lock(true));
    EXPECT_THAT(numPosted, ElementsAre(0u, 1u));
    EXPECT_EQ(log.messages().size(), 2u);
}

TEST_F(ResourcePoolFBODebugLines, anExhaustedPoolSaysNothing) {
    build(1);
    const LogCapture log;
    EXPECT_EQ(pool->lock(false), nullptr);
    EXPECT_TRUE(log.messages().empty());
}

}  // namespace QRT_0_81
