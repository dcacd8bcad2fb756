// Framebuffers end in the context that made them, wherever the last reference to them goes.
#include "qrtFramebufferReaper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
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

/// Framebuffers and textures of a context's own, so many that names which others have given up are among theirs where
/// the driver uses names again.
class OwnObjects final {
public:
    explicit OwnObjects(QOpenGLExtraFunctions& gl) : m_gl(gl) {
        gl.glGenFramebuffers(count, m_framebuffers);
        gl.glGenTextures(count, m_textures);
        for (int i = 0; i < count; ++i) {  // names become objects when they are bound first
            gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffers[i]);
            gl.glBindTexture(GL_TEXTURE_RECTANGLE, m_textures[i]);
        }
        gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffers[0]);
    }
    ~OwnObjects() {
        m_gl.glDeleteFramebuffers(count, m_framebuffers);
        m_gl.glDeleteTextures(count, m_textures);
    }
    OwnObjects(OwnObjects const&) = delete;
    OwnObjects& operator=(OwnObjects const&) = delete;

    [[nodiscard]] bool hasFramebuffer(GLuint name) const {
        return std::find(std::begin(m_framebuffers), std::end(m_framebuffers), name) != std::end(m_framebuffers);
    }
    [[nodiscard]] bool hasTexture(GLuint name) const {
        return std::find(std::begin(m_textures), std::end(m_textures), name) != std::end(m_textures);
    }

    /// Whether all of them still exist, and the first framebuffer is bound.
    [[nodiscard]] bool areUntouched() {
        GLint bound = 0;
        m_gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
        return static_cast<GLuint>(bound) == m_framebuffers[0] &&
               std::all_of(std::begin(m_framebuffers), std::end(m_framebuffers),
                           [this](GLuint name) { return m_gl.glIsFramebuffer(name) == GL_TRUE; }) &&
               std::all_of(std::begin(m_textures), std::end(m_textures),
                           [this](GLuint name) { return m_gl.glIsTexture(name) == GL_TRUE; });
    }

private:
    static constexpr int count = 64;
    QOpenGLExtraFunctions& m_gl;
    GLuint m_framebuffers[count] = {};
    GLuint m_textures[count] = {};
};

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

TEST_F(FramebufferReaperTest, inASharingContextItWaitsForItsOwn) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    const GLuint handle = framebuffer->handle();
    const GLuint texture = framebuffer->texture();
    {
        OtherContext other(&host.context());
        other.makeCurrent();
        OwnObjects ofOther(other.gl());
        reaper->dispose(framebuffer);
        reaper->reap();  // nothing waits for this context
        EXPECT_TRUE(ofOther.areUntouched());
        EXPECT_TRUE(other.gl().glIsTexture(texture));
        host.makeCurrent();
        EXPECT_TRUE(host.gl().glIsFramebuffer(handle));
        reaper->reap();
        EXPECT_FALSE(host.gl().glIsFramebuffer(handle));
        EXPECT_FALSE(host.gl().glIsTexture(texture));
        EXPECT_EQ(reaper->numAlive(), 0u);
        other.makeCurrent();
        EXPECT_TRUE(ofOther.areUntouched());
    }
    host.makeCurrent();
}

TEST_F(FramebufferReaperTest, aForeignContextsOwnFramebufferAndTextureOfTheSameNamesSurvive) {
    QOpenGLFramebufferObject* const framebuffer = reaper->make(size, rectangleFormat());
    {
        OtherContext foreign;
        foreign.makeCurrent();
        OwnObjects ofForeign(foreign.gl());
        ASSERT_TRUE(ofForeign.hasFramebuffer(framebuffer->handle()));  // both contexts count from 1
        ASSERT_TRUE(ofForeign.hasTexture(framebuffer->texture()));
        reaper->dispose(framebuffer);
        reaper->reap();
        EXPECT_TRUE(ofForeign.areUntouched());
        EXPECT_EQ(reaper->numAlive(), 1u);
    }
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

TEST_F(FramebufferReaperTest, framesMayComeBackWhileTheirContextIsClosed) {
    for (int round = 0; round < 50; ++round) {
        constexpr int count = 40;
        std::vector<QOpenGLFramebufferObject*> framebuffers;
        for (int i = 0; i < count; ++i)
            framebuffers.push_back(reaper->make(size, rectangleFormat()));
        std::thread borrower([&] {
            for (QOpenGLFramebufferObject* const framebuffer : framebuffers)
                reaper->dispose(framebuffer);
        });
        reaper->closeContext();
        borrower.join();
        EXPECT_EQ(reaper->numAlive(), 0u);
        reaper->reap();  // what came back was taken out of the books once
    }
}

TEST_F(FramebufferReaperTest, manyThreadsMayDisposeWhileTheOwnerReaps) {
    constexpr int numThreads = 4;
    constexpr int numEach = 25;
    std::vector<QOpenGLFramebufferObject*> framebuffers;
    for (int i = 0; i < numThreads * numEach; ++i)
        framebuffers.push_back(reaper->make(size, rectangleFormat()));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < numThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < numEach; ++i) {
                reaper->dispose(framebuffers[static_cast<size_t>(thread * numEach + i)]);
            }
        });
    }
    while (reaper->numAlive() != 0)
        reaper->reap();
    for (std::thread& thread : threads)
        thread.join();
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
    closeContext();
    OwnObjects ofHost(host.gl());
    reaper->dispose(lent);
    EXPECT_TRUE(ofHost.areUntouched());
    EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(FramebufferReaperOfAnEngine, aFrameThatComesBackAfterTheEndHarmsNothingOfAForeignContext) {
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    const GLuint handle = lent->handle();
    const GLuint texture = lent->texture();
    closeContext();
    {
        OtherContext foreign;
        foreign.makeCurrent();
        OwnObjects ofForeign(foreign.gl());
        ASSERT_TRUE(ofForeign.hasFramebuffer(handle));
        ASSERT_TRUE(ofForeign.hasTexture(texture));
        reaper->dispose(lent);
        EXPECT_TRUE(ofForeign.areUntouched());
    }
    host.makeCurrent();
}

TEST_F(FramebufferReaperOfAnEngine, aFrameMayComeBackAfterTheEndOnAThreadWithoutAContext) {
    host.makeCurrent();
    const int numTextures = host.countTextures();
    engine->makeCurrent();
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    closeContext();
    std::thread([&] { reaper->dispose(lent); }).join();
    EXPECT_EQ(reaper->numAlive(), 0u);
    EXPECT_EQ(host.countTextures(), numTextures);
}

TEST_F(FramebufferReaperOfAnEngine, aFrameMayComeBackBetweenTheCloseAndTheEndOfTheContext) {
    QOpenGLFramebufferObject* const lent = reaper->make(size, rectangleFormat());
    reaper->closeContext();
    engine->doneCurrent();
    host.makeCurrent();
    OwnObjects ofHost(host.gl());
    reaper->dispose(lent);
    EXPECT_TRUE(ofHost.areUntouched());
    engine.reset();
    host.makeCurrent();
    EXPECT_TRUE(ofHost.areUntouched());
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
