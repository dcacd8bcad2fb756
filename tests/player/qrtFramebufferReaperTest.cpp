// Framebuffers end in the context that made them, wherever the last reference to them goes.
#include "qrtFramebufferReaper.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtOtherContext.h"
#include "qrtOpenGL.h"

namespace QRT_0_81 {

namespace {

const QSize size(16, 8);

QOpenGLFramebufferObjectFormat rectangleFormat(GLenum internalFormat = GL_RGBA8) {
    QOpenGLFramebufferObjectFormat format;
    format.setTextureTarget(GL_TEXTURE_RECTANGLE);
    format.setInternalTextureFormat(internalFormat);
    return format;
}

/// Makes framebuffers of the current context until one is called `name`, and gives all of them an existence.
std::vector<GLuint> makeFramebuffersUpTo(QOpenGLExtraFunctions& gl, GLuint name) {
    std::vector<GLuint> names;
    while (names.empty() || names.back() < name) {
        GLuint next = 0;
        gl.glGenFramebuffers(1, &next);
        gl.glBindFramebuffer(GL_FRAMEBUFFER, next);
        names.push_back(next);
    }
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return names;
}

}  // namespace

class FramebufferReaperTest : public ::testing::Test {
protected:
    HostContext host;
    const SharedPtr<FramebufferReaper> reaper = FramebufferReaper::create();
};

TEST_F(FramebufferReaperTest, aFramebufferThatItMakesIsAliveInTheCurrentContext) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    ASSERT_TRUE(framebuffer->isValid());
    EXPECT_EQ(framebuffer->size(), size);
    EXPECT_TRUE(host.gl().glIsFramebuffer(framebuffer->handle()));
    EXPECT_EQ(reaper->numAlive(), 1u);
    reaper->dispose(framebuffer);
}

TEST_F(FramebufferReaperTest, anUnsupportedFormatLeavesNoErrorBehind) {
    for (const GLenum format : {0u, static_cast<unsigned>(GL_RGBA32UI)}) {
        QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat(format));
        EXPECT_FALSE(framebuffer->isValid());
        EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        reaper->dispose(framebuffer);
        EXPECT_EQ(reaper->numAlive(), 0u);
    }
}

TEST_F(FramebufferReaperTest, inItsOwnContextAFramebufferEndsAtOnce) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint texture = framebuffer->texture();
    const GLuint handle = framebuffer->handle();
    reaper->dispose(framebuffer);
    EXPECT_FALSE(host.gl().glIsTexture(texture));
    EXPECT_FALSE(host.gl().glIsFramebuffer(handle));
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(FramebufferReaperTest, onAThreadWithoutAContextItWaitsForItsOwn) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint texture = framebuffer->texture();
    std::thread([&] { reaper->dispose(framebuffer); }).join();
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 1u);
    reaper->reap();
    EXPECT_FALSE(host.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(FramebufferReaperTest, aSharingContextsOwnFramebufferOfTheSameNameSurvives) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint handle = framebuffer->handle();
    const GLuint texture = framebuffer->texture();
    OtherContext other(&host.context());
    other.makeCurrent();
    const auto names = makeFramebuffersUpTo(other.gl(), handle);
    ASSERT_TRUE(other.gl().glIsFramebuffer(handle));

    reaper->dispose(framebuffer);
    EXPECT_TRUE(other.gl().glIsFramebuffer(handle));
    reaper->reap();  // nothing waits for this context
    EXPECT_TRUE(other.gl().glIsFramebuffer(handle));
    EXPECT_TRUE(other.gl().glIsTexture(texture));

    host.makeCurrent();
    EXPECT_TRUE(host.gl().glIsFramebuffer(handle));
    reaper->reap();
    EXPECT_FALSE(host.gl().glIsFramebuffer(handle));
    EXPECT_FALSE(host.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 0u);
    other.makeCurrent();
    EXPECT_TRUE(other.gl().glIsFramebuffer(handle));
    other.gl().glDeleteFramebuffers(static_cast<GLsizei>(names.size()), names.data());
}

TEST_F(FramebufferReaperTest, aForeignContextsOwnFramebufferAndTextureOfTheSameNamesSurvive) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint handle = framebuffer->handle();
    const GLuint texture = framebuffer->texture();
    OtherContext foreign;
    foreign.makeCurrent();
    const auto names = makeFramebuffersUpTo(foreign.gl(), handle);
    GLuint ownTexture = 0;
    while (ownTexture < texture) {
        foreign.gl().glGenTextures(1, &ownTexture);
        foreign.gl().glBindTexture(GL_TEXTURE_2D, ownTexture);
    }
    reaper->dispose(framebuffer);
    reaper->reap();
    EXPECT_TRUE(foreign.gl().glIsFramebuffer(handle));
    EXPECT_TRUE(foreign.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 1u);
    host.makeCurrent();
    reaper->reap();
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(FramebufferReaperTest, reapingTakesOnlyWhatWaitsForTheCurrentContext) {
    QOpenGLFramebufferObject* const ofHost = reaper->make(size, rectangleFormat());
    OtherContext other(&host.context());
    other.makeCurrent();
    QOpenGLFramebufferObject* const ofOther = reaper->make(size, rectangleFormat());
    QOpenGLFramebufferObject* const kept = reaper->make(size, rectangleFormat());
    std::thread([&] {
        reaper->dispose(ofHost);
        reaper->dispose(ofOther);
    }).join();
    EXPECT_EQ(reaper->numAlive(), 3u);
    reaper->reap();
    EXPECT_EQ(reaper->numAlive(), 2u);
    host.makeCurrent();
    reaper->reap();
    EXPECT_EQ(reaper->numAlive(), 1u);
    other.makeCurrent();
    EXPECT_TRUE(other.gl().glIsFramebuffer(kept->handle()));
    reaper->dispose(kept);
    EXPECT_EQ(reaper->numAlive(), 0u);
    host.makeCurrent();
}

TEST_F(FramebufferReaperTest, manyThreadsMayDisposeWhileTheOwnerReaps) {
    constexpr int numThreads = 4;
    constexpr int numEach = 25;
    std::vector<QOpenGLFramebufferObject*> framebuffers;
    for (int i = 0; i < numThreads * numEach; ++i) framebuffers.push_back(reaper->make(size, rectangleFormat()));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < numThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < numEach; ++i) {
                reaper->dispose(framebuffers[static_cast<size_t>(thread * numEach + i)]);
            }
        });
    }
    while (reaper->numAlive() != 0) reaper->reap();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(reaper->numAlive(), 0u);
}

// ---- The end of a context -------------------------------------------------------------------------------------------

/// A host, and beside it a context that shares with it as the engine's does.
class FramebufferReaperOfAnEngine : public ::testing::Test {
protected:
    FramebufferReaperOfAnEngine() {
        host.doneCurrent();
        engine = std::make_unique<OtherContext>(NativeContext{host.nativeContext(), host.nativeWindow()});
        engine->makeCurrent();
    }
    ~FramebufferReaperOfAnEngine() override {
        engine.reset();
        host.makeCurrent();
    }

    /// The context ends as it does with the engine's thread.
    void closeContext() {
        engine->makeCurrent();
        reaper->closeContext();
        engine.reset();
        host.makeCurrent();
    }

    HostContext host;
    std::unique_ptr<OtherContext> engine;
    const SharedPtr<FramebufferReaper> reaper = FramebufferReaper::create();
};

TEST_F(FramebufferReaperOfAnEngine, itsTexturesAreSharedWithTheHost) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint texture = framebuffer->texture();
    host.makeCurrent();
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    engine->makeCurrent();
    reaper->dispose(framebuffer);
    host.makeCurrent();
    EXPECT_FALSE(host.gl().glIsTexture(texture));
}

TEST_F(FramebufferReaperOfAnEngine, closingItsContextTakesTheTexturesOfLentFramebuffersAway) {
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    const GLuint texture = lent->texture();
    host.makeCurrent();
    ASSERT_TRUE(host.gl().glIsTexture(texture));
    closeContext();
    EXPECT_FALSE(host.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 0u);
    reaper->dispose(lent);
}

TEST_F(FramebufferReaperOfAnEngine, closingItsContextDeletesWhatWaits) {
    QOpenGLFramebufferObject* const waiting = reaper->make(size, rectangleFormat());
    const GLuint texture = waiting->texture();
    std::thread([&] { reaper->dispose(waiting); }).join();
    closeContext();
    EXPECT_FALSE(host.gl().glIsTexture(texture));
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(FramebufferReaperOfAnEngine, closingItsContextLeavesTheFramebuffersOfOthers) {
    host.makeCurrent();
    QOpenGLFramebufferObject* const ofHost = reaper->make(size, rectangleFormat());
    closeContext();
    EXPECT_EQ(reaper->numAlive(), 1u);
    EXPECT_TRUE(host.gl().glIsTexture(ofHost->texture()));
    reaper->dispose(ofHost);
}

TEST_F(FramebufferReaperOfAnEngine, aFrameThatComesBackAfterTheEndHarmsNothingOfTheHosts) {
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    const GLuint handle = lent->handle();
    const GLuint texture = lent->texture();
    closeContext();
    // The host's own objects take over the names.
    const auto names = makeFramebuffersUpTo(host.gl(), handle);
    GLuint ownTexture = 0;
    while (ownTexture < texture) {
        host.gl().glGenTextures(1, &ownTexture);
        host.gl().glBindTexture(GL_TEXTURE_RECTANGLE, ownTexture);
    }
    host.gl().glBindFramebuffer(GL_FRAMEBUFFER, handle);

    reaper->dispose(lent);
    EXPECT_TRUE(host.gl().glIsFramebuffer(handle));
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    GLint bound = 0;
    host.gl().glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(static_cast<GLuint>(bound), handle);
    EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    host.gl().glDeleteFramebuffers(static_cast<GLsizei>(names.size()), names.data());
}

TEST_F(FramebufferReaperOfAnEngine, aFrameMayComeBackAfterTheEndOnAThreadWithoutAContext) {
    const int numTextures = host.countTextures();
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    closeContext();
    std::thread([&] { reaper->dispose(lent); }).join();
    EXPECT_EQ(reaper->numAlive(), 0u);
    EXPECT_EQ(host.countTextures(), numTextures);
}

TEST_F(FramebufferReaperOfAnEngine, aFrameMayComeBackBetweenTheCloseAndTheEndOfTheContext) {
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    const GLuint handle = lent->handle();
    reaper->closeContext();
    engine->doneCurrent();
    host.makeCurrent();
    const auto names = makeFramebuffersUpTo(host.gl(), handle);
    reaper->dispose(lent);
    EXPECT_TRUE(host.gl().glIsFramebuffer(handle));
    engine.reset();
    EXPECT_TRUE(host.gl().glIsFramebuffer(handle));
    host.gl().glDeleteFramebuffers(static_cast<GLsizei>(names.size()), names.data());
}

TEST_F(FramebufferReaperOfAnEngine, oneReaperServesOneContextAfterAnother) {
    for (int life = 0; life < 3; ++life) {
        QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
        QOpenGLFramebufferObject* const free = reaper->make(size, rectangleFormat());
        reaper->dispose(free);
        closeContext();
        EXPECT_EQ(reaper->numAlive(), 0u);
        host.doneCurrent();
        engine = std::make_unique<OtherContext>(NativeContext{host.nativeContext(), host.nativeWindow()});
        engine->makeCurrent();
        reaper->dispose(lent);
        EXPECT_EQ(reaper->numAlive(), 0u);
    }
}

}  // namespace QRT_0_81
