// How the host's own context is adopted, and that the host gets it back.
#include "qrtNativeContext.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "harness/qrtIdleGraphEngine.h"
#include "harness/qrtLogCapture.h"
#include "qrtPlayerImpl.h"

// X11 defines words that the headers above use.
#include <EGL/egl.h>
#include <GL/glx.h>

#include <memory>
#include <thread>

#include "common/native_context.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtOtherContext.h"

#undef Status  // X11's

namespace QRT_0_81 {

using ::testing::Contains;
using ::testing::HasSubstr;

namespace {

/// What is current on this thread, whichever interface it was made current through.
struct Current {
    void* glxContext = glXGetCurrentContext();
    GLXDrawable glxDraw = glXGetCurrentDrawable();
    GLXDrawable glxRead = glXGetCurrentReadDrawable();
    void* eglContext = eglGetCurrentContext();
    void* eglDraw = eglGetCurrentSurface(EGL_DRAW);
    void* eglRead = eglGetCurrentSurface(EGL_READ);

    bool operator==(Current const& other) const = default;
    [[nodiscard]] void* context() const { return glxContext ? glxContext : eglContext; }
};

}  // namespace

class NativeContextTest : public ::testing::Test {
protected:
    [[nodiscard]] NativeContext native() const { return {host.nativeContext(), host.nativeWindow()}; }

    HostContext host;
};

TEST_F(NativeContextTest, theHostsContextIsLetGoOfForOneScopeAndIsCurrentAgainAfterwards) {
    const Current before;
    ASSERT_EQ(before.context(), host.nativeContext());
    {
        const HostContextRelease release(native());
        EXPECT_EQ(Current().context(), nullptr);
    }
    EXPECT_EQ(Current(), before);
    GLuint texture = 0;
    host.gl().glGenTextures(1, &texture);
    host.gl().glBindTexture(GL_TEXTURE_2D, texture);
    EXPECT_TRUE(host.gl().glIsTexture(texture));
    host.gl().glDeleteTextures(1, &texture);
}

TEST_F(NativeContextTest, anotherContextThatIsCurrentIsLeftAlone) {
    OtherContext other;
    other.makeCurrent();
    const Current before;
    ASSERT_NE(before.context(), host.nativeContext());
    {
        const HostContextRelease release(native());
        EXPECT_EQ(Current(), before);
    }
    EXPECT_EQ(Current(), before);
}

TEST_F(NativeContextTest, aNullContextLetsGoOfNothing) {
    const Current before;
    {
        const HostContextRelease release(NativeContext{});
        EXPECT_EQ(Current(), before);
    }
    EXPECT_EQ(Current(), before);
}

TEST_F(NativeContextTest, withNothingCurrentNothingIsMadeCurrent) {
    host.doneCurrent();
    {
        const HostContextRelease ofTheHost(native());
        const HostContextRelease ofNone(NativeContext{});
    }
    EXPECT_EQ(Current().context(), nullptr);
}

TEST_F(NativeContextTest, isOnlyLetGoOfOnTheThreadThatHasItCurrent) {
    const Current before;
    std::thread([this] {
        const HostContextRelease release(native());
        EXPECT_EQ(Current().context(), nullptr);
    }).join();
    EXPECT_EQ(Current(), before);
}

TEST_F(NativeContextTest, theAdoptedContextIsTheHostsThroughTheInterfaceThatQtWorksThrough) {
    QOffscreenSurface surface;
    surface.create();
    host.doneCurrent();
    const auto adopted = adoptContext(native(), &surface);
    ASSERT_TRUE(adopted);
    const examples::NativeContext itsOwn = examples::nativeContextOf(*adopted);
    EXPECT_EQ(itsOwn.context, host.nativeContext());
    EXPECT_EQ(itsOwn.window, host.nativeWindow());
}

TEST_F(NativeContextTest, aContextThatSharesWithTheAdoptedOneHasTheHostsTextures) {
    GLuint texture = 0;
    host.gl().glGenTextures(1, &texture);
    host.gl().glBindTexture(GL_TEXTURE_2D, texture);
    host.gl().glFinish();
    host.doneCurrent();
    OtherContext engine(native());
    engine.makeCurrent();
    EXPECT_TRUE(engine.gl().glIsTexture(texture));
    engine.doneCurrent();
    host.makeCurrent();
    host.gl().glDeleteTextures(1, &texture);
}

TEST_F(NativeContextTest, theHostsContextOutlivesThoseThatHaveAdoptedIt) {
    GLuint texture = 0;
    host.gl().glGenTextures(1, &texture);
    host.gl().glBindTexture(GL_TEXTURE_2D, texture);
    for (int round = 0; round < 3; ++round) {
        host.doneCurrent();
        { OtherContext engine(native()); }
        host.makeCurrent();
        EXPECT_TRUE(host.gl().glIsTexture(texture));
    }
    host.gl().glDeleteTextures(1, &texture);
}

/// Through GLX a handle is the address of memory of the client's; nobody can tell that it has been given back.
TEST_F(NativeContextTest, aContextOfEglThatIsDeadIsAFailureWithAMessageAndTheNextOneWorks) {
    if (!Current().eglContext) GTEST_SKIP() << "this is GLX";
    const auto dead = std::make_unique<HostContext>()->nativeContext();  // gone at the end of this line
    host.makeCurrent();
    LogCapture log;
    PlayerImpl engine(VideoBufferResolution(16, 8, 4, 8, false), IdleGraphEngine::create);
    EXPECT_EQ(engine.initialize(dead, host.nativeWindow()).get(), Status::general_failure);
    EXPECT_THAT(log.lines(), Contains(HasSubstr("initialize() failed: the host's OpenGL context")));
    EXPECT_EQ(engine.uninitialize().get(), Status::ok);
    EXPECT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(engine.uninitialize().get(), Status::ok);
}

}  // namespace QRT_0_81
