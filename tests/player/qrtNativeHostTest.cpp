// A host that draws without Qt: its own connection to the X server, its own GLX context. Only a QGuiApplication exists.
#include <gtest/gtest.h>

#include <QGuiApplication>

#include "foundation/core/qrtList.h"
#include "harness/qrtFakeGraphEngine.h"
#include "player/qrtPlayer.h"

#include <GL/glx.h>

#undef Status
#undef None
#undef Bool
#undef Success

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

/// A hidden window and a GLX 3.2 core context of its own, current on the calling thread for the object's life.
class NativeGlxHost final {
public:
    NativeGlxHost() {
        display = XOpenDisplay(nullptr);
        if (!display) return;
        int const wanted[] = {GLX_X_RENDERABLE,
                              True,
                              GLX_DRAWABLE_TYPE,
                              GLX_WINDOW_BIT,
                              GLX_RENDER_TYPE,
                              GLX_RGBA_BIT,
                              GLX_RED_SIZE,
                              8,
                              GLX_GREEN_SIZE,
                              8,
                              GLX_BLUE_SIZE,
                              8,
                              0};
        int count = 0;
        GLXFBConfig* const configs = glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
        if (!configs || count == 0) return;
        XVisualInfo* const visual = glXGetVisualFromFBConfig(display, configs[0]);
        XSetWindowAttributes attributes{};
        attributes.colormap = XCreateColormap(display, RootWindow(display, visual->screen), visual->visual, AllocNone);
        window = XCreateWindow(display, RootWindow(display, visual->screen), 0, 0, 64, 64, 0, visual->depth,
                               InputOutput, visual->visual, CWColormap, &attributes);
        using CreateContext = GLXContext (*)(Display*, GLXFBConfig, GLXContext, int, int const*);
        const auto createContext = reinterpret_cast<CreateContext>(
            glXGetProcAddress(reinterpret_cast<GLubyte const*>("glXCreateContextAttribsARB")));
        constexpr int majorVersion = 0x2091;
        constexpr int minorVersion = 0x2092;
        constexpr int profileMask = 0x9126;
        int const version[] = {majorVersion, 3, minorVersion, 2, profileMask, 1, 0};
        context = createContext(display, configs[0], nullptr, True, version);
        glXMakeCurrent(display, window, context);
        XFree(visual);
        XFree(configs);
    }

    ~NativeGlxHost() {
        if (!display) return;
        glXMakeCurrent(display, 0, nullptr);
        if (context) glXDestroyContext(display, context);
        if (window) XDestroyWindow(display, window);
        XCloseDisplay(display);
    }

    /// Reads the middle pixel of a rectangle texture with this context and plain OpenGL.
    [[nodiscard]] std::vector<float> middlePixel(GLuint texture, int width, int height) const {
        using GenFramebuffers = void (*)(GLsizei, GLuint*);
        using BindFramebuffer = void (*)(GLenum, GLuint);
        using FramebufferTexture2D = void (*)(GLenum, GLenum, GLenum, GLuint, GLint);
        const auto find = [](char const* name) { return glXGetProcAddress(reinterpret_cast<GLubyte const*>(name)); };
        const auto genFramebuffers = reinterpret_cast<GenFramebuffers>(find("glGenFramebuffers"));
        const auto deleteFramebuffers =
            reinterpret_cast<void (*)(GLsizei, GLuint const*)>(find("glDeleteFramebuffers"));
        const auto bindFramebuffer = reinterpret_cast<BindFramebuffer>(find("glBindFramebuffer"));
        const auto attach = reinterpret_cast<FramebufferTexture2D>(find("glFramebufferTexture2D"));
        constexpr GLenum framebufferTarget = 0x8D40;
        constexpr GLenum colorAttachment = 0x8CE0;
        GLuint framebuffer = 0;
        genFramebuffers(1, &framebuffer);
        bindFramebuffer(framebufferTarget, framebuffer);
        attach(framebufferTarget, colorAttachment, GL_TEXTURE_RECTANGLE, texture, 0);
        std::vector<float> pixel(4, -1.0f);
        glReadPixels(width / 2, height / 2, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
        bindFramebuffer(framebufferTarget, 0);
        deleteFramebuffers(1, &framebuffer);
        return pixel;
    }

    Display* display = nullptr;
    Window window = 0;
    GLXContext context = nullptr;
};

class NativeHost : public ::testing::Test {
protected:
    NativeHost() { FakeGraphEngine::resetScript(); }

    void playAFrame(void* nativeContext, void* nativeWindow) {
        const auto player = Player::create(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
        ASSERT_EQ(player->initialize(nativeContext, nativeWindow).get(), Status::ok);
        ASSERT_EQ(player->setComposition(FakeComposition::create(0, 100), List<SharedPtr<ExternalSegment>>()).get(),
                  Status::ok);
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(37, buffer).get(), Status::ok);
        unsigned int texture = 0;
        ASSERT_EQ(buffer->getTexture(texture).get(), Status::ok);
        ASSERT_TRUE(glIsTexture(texture));
        EXPECT_EQ(paintedFrame(host.middlePixel(texture, 16, 8).data()), 37);
        buffer.reset();
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
        EXPECT_FALSE(glIsTexture(texture));
        EXPECT_EQ(glXGetCurrentContext(), host.context) << "still current, which Qt knows nothing of";
        EXPECT_EQ(glXGetCurrentDrawable(), host.window);
    }

    NativeGlxHost host;
};

}  // namespace

TEST_F(NativeHost, sharesItsTexturesWithThePlayerGivenContextAndWindow) {
    ASSERT_TRUE(host.context);
    playAFrame(host.context, reinterpret_cast<void*>(host.window));
}

TEST_F(NativeHost, sharesItsTexturesWithThePlayerGivenTheContextAlone) {
    ASSERT_TRUE(host.context);
    playAFrame(host.context, nullptr);
}

TEST_F(NativeHost, mayHaveItsContextCurrentNowhere) {
    ASSERT_TRUE(host.context);
    glXMakeCurrent(host.display, 0, nullptr);
    const auto player = Player::create(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
    ASSERT_EQ(player->initialize(host.context, nullptr).get(), Status::ok);
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    ASSERT_EQ(player->setComposition(FakeComposition::create(0, 100), List<SharedPtr<ExternalSegment>>()).get(),
              Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(37, buffer).get(), Status::ok);
    unsigned int texture = 0;
    ASSERT_EQ(buffer->getTexture(texture).get(), Status::ok);
    glXMakeCurrent(host.display, host.window, host.context);
    EXPECT_EQ(paintedFrame(host.middlePixel(texture, 16, 8).data()), 37);
}

}  // namespace QRT_0_81
