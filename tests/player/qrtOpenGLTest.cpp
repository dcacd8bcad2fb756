// The small OpenGL utilities, in a real context.
#include "qrtOpenGL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"

namespace QRT_0_81 {

namespace {

constexpr int width = 16;
constexpr int height = 8;
constexpr GLuint noTexture = 4000;  // a name that was never made

constexpr VideoBufferResolution formatOf(int channels, int bits, bool isFloat = false) {
    return VideoBufferResolution(width, height, channels, bits, isFloat);
}

}  // namespace

class OpenGLTest : public ::testing::Test {
protected:
    ~OpenGLTest() override {
        for (const GLuint texture : m_textures)
            gl.glDeleteTextures(1, &texture);
    }

    GLuint bindingOf(GLenum what) {
        GLint name = -1;
        gl.glGetIntegerv(what, &name);
        return static_cast<GLuint>(name);
    }
    bool hasNoError() { return gl.glGetError() == GL_NO_ERROR; }

    GLuint makeTexture(GLenum target) {
        GLuint texture = 0;
        gl.glGenTextures(1, &texture);
        gl.glBindTexture(target, texture);
        gl.glTexImage2D(target, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        gl.glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.glBindTexture(target, 0);
        m_textures.push_back(texture);
        return texture;
    }

    void clear(GLuint framebuffer, float red, float green, float blue) {
        gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl.glClearColor(red, green, blue, 1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
    }

    HostContext host;
    QOpenGLExtraFunctions& gl = host.gl();

private:
    std::vector<GLuint> m_textures;
};

// ---- FramebufferBindingGuard ----------------------------------------------------------------------------------------

TEST_F(OpenGLTest, aGuardRestoresFramebuffers5And7AfterAnyNumberOfRebinds) {
    GLuint names[8] = {};
    gl.glGenFramebuffers(8, names);
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, names[5]);
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, names[7]);
    for (const int numRebinds : {0, 1, 50}) {
        {
            const FramebufferBindingGuard guard;
            for (int i = 0; i < numRebinds; ++i) {
                gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, names[i % 3]);
                gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, names[i % 4]);
                gl.glBindFramebuffer(GL_FRAMEBUFFER, i % 2 == 0 ? 0 : names[i % 5]);
            }
        }
        EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), names[5]);
        EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), names[7]);
    }
    EXPECT_TRUE(hasNoError());
    gl.glDeleteFramebuffers(8, names);
}

TEST_F(OpenGLTest, aGuardRestoresTheDefaultFramebufferToo) {
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    GLuint name = 0;
    gl.glGenFramebuffers(1, &name);
    {
        const FramebufferBindingGuard guard;
        gl.glBindFramebuffer(GL_FRAMEBUFFER, name);
    }
    EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), 0u);
    EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), 0u);
    gl.glDeleteFramebuffers(1, &name);
}

// ---- TextureFramebuffer ---------------------------------------------------------------------------------------------

TEST_F(OpenGLTest, aFramebufferAroundATextureIsCompleteForBothTargets) {
    for (const bool rectangle : {true, false}) {
        const GLuint texture = makeTexture(rectangle ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D);
        const TextureFramebuffer framebuffer(texture, rectangle);
        EXPECT_EQ(framebuffer.getStatus().get(), Status::ok);
        EXPECT_TRUE(gl.glIsFramebuffer(framebuffer.getFramebuffer()));
        GLint attached = 0;
        gl.glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                                 GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &attached);
        EXPECT_EQ(static_cast<GLuint>(attached), texture);
        EXPECT_TRUE(hasNoError());
    }
}

TEST_F(OpenGLTest, aFramebufferAroundATextureStaysBoundAndSoDoesTheTexture) {
    constexpr GLenum rectangleBinding = 0x84F6;
    for (const bool rectangle : {true, false}) {
        const GLuint texture = makeTexture(rectangle ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D);
        const TextureFramebuffer framebuffer(texture, rectangle);
        EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), framebuffer.getFramebuffer());
        EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), framebuffer.getFramebuffer());
        EXPECT_EQ(bindingOf(rectangle ? rectangleBinding : GL_TEXTURE_BINDING_2D), texture);
    }
}

TEST_F(OpenGLTest, theEndOfAFramebufferAroundATextureDeletesItAndLeavesTheTexture) {
    const GLuint texture = makeTexture(GL_TEXTURE_2D);
    GLuint name = 0;
    {
        const TextureFramebuffer framebuffer(texture, false);
        name = framebuffer.getFramebuffer();
    }
    EXPECT_FALSE(gl.glIsFramebuffer(name));
    EXPECT_TRUE(gl.glIsTexture(texture));
    EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), 0u);
    EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), 0u);
}

TEST_F(OpenGLTest, aFramebufferAroundATextureThatDoesNotExistIsIncompleteWithType1) {
    const int numFramebuffers = host.countFramebuffers();
    {
        const TextureFramebuffer framebuffer(noTexture, true);
        EXPECT_EQ(framebuffer.getStatus().get(), 1);
        EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), framebuffer.getFramebuffer());
    }
    EXPECT_EQ(host.countFramebuffers(), numFramebuffers);
    drainGlErrors();
}

TEST_F(OpenGLTest, aFramebufferAroundATextureOfTheOtherTargetIsIncompleteWithType1) {
    const TextureFramebuffer framebuffer(makeTexture(GL_TEXTURE_2D), true);
    EXPECT_EQ(framebuffer.getStatus().get(), 1);
    drainGlErrors();
}

TEST_F(OpenGLTest, anIncompleteFramebufferPostsNothingWithDebugLinesOff) {
    const LogCapture log;
    const TextureFramebuffer framebuffer(noTexture, false);
    EXPECT_TRUE(log.messages().empty());
    drainGlErrors();
}

// ---- blitFramebuffer ------------------------------------------------------------------------------------------------

TEST_F(OpenGLTest, aBlitCopiesTheRectangleAtTheOriginAndLeavesBothFramebuffersBound) {
    const GLuint sourceTexture = makeTexture(GL_TEXTURE_RECTANGLE);
    const GLuint targetTexture = makeTexture(GL_TEXTURE_RECTANGLE);
    const TextureFramebuffer source(sourceTexture, true);
    const TextureFramebuffer target(targetTexture, true);
    clear(source.getFramebuffer(), 1.0f, 0.0f, 0.0f);
    clear(target.getFramebuffer(), 0.0f, 0.0f, 1.0f);
    constexpr int copiedWidth = 5;
    constexpr int copiedHeight = 3;
    blitFramebuffer(&gl, source.getFramebuffer(), copiedWidth, copiedHeight, target.getFramebuffer());
    EXPECT_TRUE(hasNoError());
    EXPECT_EQ(bindingOf(GL_READ_FRAMEBUFFER_BINDING), source.getFramebuffer());
    EXPECT_EQ(bindingOf(GL_DRAW_FRAMEBUFFER_BINDING), target.getFramebuffer());
    const std::vector<float> pixels = host.readTexture(targetTexture, width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isCopied = x < copiedWidth && y < copiedHeight;
            float const* const pixel = &pixels[static_cast<size_t>((y * width + x) * 4)];
            ASSERT_EQ(pixel[0], isCopied ? 1.0f : 0.0f) << x << ',' << y;
            ASSERT_EQ(pixel[2], isCopied ? 0.0f : 1.0f) << x << ',' << y;
        }
    }
}

TEST_F(OpenGLTest, aBlitDoesNotTurnThePictureOver) {
    const GLuint sourceTexture = makeTexture(GL_TEXTURE_RECTANGLE);
    const GLuint targetTexture = makeTexture(GL_TEXTURE_2D);
    const TextureFramebuffer source(sourceTexture, true);
    clear(source.getFramebuffer(), 0.0f, 0.0f, 0.0f);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(0, 0, width, 1);
    clear(source.getFramebuffer(), 0.0f, 1.0f, 0.0f);  // the bottom row
    gl.glDisable(GL_SCISSOR_TEST);
    const TextureFramebuffer target(targetTexture, false);
    blitFramebuffer(&gl, source.getFramebuffer(), width, height, target.getFramebuffer());
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, target.getFramebuffer());
    std::vector<unsigned char> pixels(static_cast<size_t>(width * height * 4));
    gl.glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    EXPECT_EQ(pixels[1], 255);
    EXPECT_EQ(pixels[static_cast<size_t>((height - 1) * width * 4 + 1)], 0);
}

// ---- Errors ---------------------------------------------------------------------------------------------------------

TEST_F(OpenGLTest, drainedErrorsAreGone) {
    gl.glEnable(0xFFFF);
    drainGlErrors();
    EXPECT_TRUE(hasNoError());
}

// ---- Transfer formats -----------------------------------------------------------------------------------------------

TEST(OglFormat, isRedForOneChannelRgbForThreeAndRgbaForAnyOtherCount) {
    EXPECT_EQ(getOglFormat(formatOf(1, 8)), 0x1903u);
    EXPECT_EQ(getOglFormat(formatOf(3, 8)), 0x1907u);
    for (const int channels : {0, 2, 4, 5, 100, -1})
        EXPECT_EQ(getOglFormat(formatOf(channels, 8)), 0x1908u) << channels;
}

TEST(OglType, followsTheDepthAndTheFloatFlag) {
    const LogCapture log;
    EXPECT_EQ(getOglType(formatOf(4, 8, false)), 0x1401u);
    EXPECT_EQ(getOglType(formatOf(4, 8, true)), 0x1401u);
    EXPECT_EQ(getOglType(formatOf(4, 16, false)), 0x1403u);
    EXPECT_EQ(getOglType(formatOf(4, 16, true)), 0x140Bu);
    EXPECT_EQ(getOglType(formatOf(4, 32, false)), 0x1405u);
    EXPECT_EQ(getOglType(formatOf(4, 32, true)), 0x1406u);
    EXPECT_TRUE(log.messages().empty());
}

TEST(OglType, ofTenBitsIsBytesAndPostsOnceThatItIsUnsupported) {
    const LogCapture log;
    EXPECT_EQ(getOglType(formatOf(4, 10)), 0x1401u);
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("getOglType() Unsupported QRT::VideoBufferResolution"));
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtPlayerImpl");
}

TEST(OglType, ofEveryOtherDepthIsBytesAndPostsEachTime) {
    const LogCapture log;
    size_t numAsked = 0;
    for (const int bits : {0, 1, 10, 12, 24, 64, -8}) {
        for (const bool isFloat : {false, true}) {
            EXPECT_EQ(getOglType(formatOf(4, bits, isFloat)), 0x1401u) << bits;
            ++numAsked;
        }
    }
    EXPECT_EQ(log.count("getOglType() Unsupported QRT::VideoBufferResolution"), numAsked);
}

// ---- With debug lines on --------------------------------------------------------------------------------------------

class OpenGLDebugLines : public OpenGLTest {};

TEST_F(OpenGLDebugLines, anIncompleteFramebufferSaysWhatTheDriverReturnedInDecimal) {
    const LogCapture log;
    const TextureFramebuffer framebuffer(noTexture, true);
    const GLenum completeness = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER);  // it stays bound
    EXPECT_THAT(log.lines(),
                ::testing::ElementsAre("ERROR: glCheckFramebufferStatus() returned : " + std::to_string(completeness)));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtOpenGL");
    drainGlErrors();
}

TEST_F(OpenGLDebugLines, aCompleteFramebufferSaysNothing) {
    const GLuint texture = makeTexture(GL_TEXTURE_RECTANGLE);
    const LogCapture log;
    const TextureFramebuffer framebuffer(texture, true);
    EXPECT_TRUE(log.messages().empty());
}

}  // namespace QRT_0_81
