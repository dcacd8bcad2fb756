#include <gtest/gtest.h>

#include <QOpenGLFunctions_3_2_Core>

#include "graph/qrtCoreFunctions.h"
#include "graph/qrtGlState.h"
#include "host/qrtComposerFixture.h"

namespace qrtplay {
namespace {

// OpenGL may round what is laid over a texture of 8 bits before and after it does so.
constexpr double blending = 1.25;

const Colour red{0.8, 0.2, 0.0, 1.0};
const Colour blue{0.0, 0.2, 0.6, 1.0};
const Colour glass{0.4, 1.0, 0.2, 0.4};

Image patterned(int width, int height, double phase) {
    return Image(width, height, [=](int x, int y) {
        return Colour{(x * 37 % 256) / 255.0, (y * 53 % 256) / 255.0, ((x + y) * 29 % 256) / 255.0,
                      ((x * 11 + y * 7 + static_cast<int>(phase * 100)) % 256) / 255.0};
    });
}

/// The definition of "over" and of a mix, on premultiplied colours.
Image premultiplied(Image image) {
    for (Colour& colour : image.colours) {
        for (size_t channel = 0; channel < 3; ++channel)
            colour[channel] *= colour[3];
    }
    return image;
}
Image over(Image const& top, Image const& bottom) {
    Image result = top;
    for (size_t i = 0; i < result.colours.size(); ++i) {
        for (size_t channel = 0; channel < 4; ++channel)
            result.colours[i][channel] += bottom.colours[i][channel] * (1 - top.colours[i][3]);
    }
    return result;
}
Image mixed(double mix, Image const& first, Image const& second) {
    Image result = first;
    for (size_t i = 0; i < result.colours.size(); ++i) {
        for (size_t channel = 0; channel < 4; ++channel)
            result.colours[i][channel] = (1 - mix) * first.colours[i][channel] + mix * second.colours[i][channel];
    }
    return result;
}

TEST(FrameComposer, drawsNothingAsBlack) {
    Composing drawing;
    EXPECT_EQ(drawing.compose(FrameNode(), 5, 4).colours, black(5, 4).colours);
    EXPECT_EQ(drawing.compose(stackOf({}), 5, 4).colours, black(5, 4).colours);
    EXPECT_EQ(drawing.compose(stackOf({FrameNode(), FrameNode()}), 5, 4).colours, black(5, 4).colours);
    EXPECT_EQ(drawing.compose(drawing.provider.add(nullptr, VideoFacts()), 5, 4).colours, black(5, 4).colours);
}

TEST(FrameComposer, drawsAPictureOfTheSameSizeBitForBit) {
    Composing drawing;
    Image image = patterned(33, 21, 0);
    for (Colour& colour : image.colours)
        colour[3] = 1;
    EXPECT_EQ(drawing.compose(drawing.provider.add(image), 33, 21).colours, image.colours);
}

TEST(FrameComposer, laysThePicturesOfAStackOverEachOther) {
    Composing drawing;
    const Image bottom = patterned(16, 9, 0.1);
    const Image middle = patterned(16, 9, 0.5);
    const Image top = patterned(16, 9, 0.9);
    const FrameNode root =
        stackOf({drawing.provider.add(bottom), drawing.provider.add(middle), FrameNode(), drawing.provider.add(top)});
    Image expected = over(premultiplied(bottom), black(16, 9));
    expected = over(premultiplied(middle), expected);
    expected = over(premultiplied(top), expected);
    EXPECT_LE(largestDifference(drawing.compose(root, 16, 9), expected),
              2 * blending);  // the first one lies over black
}

TEST(FrameComposer, hidesWhatLiesBelowAnOpaquePicture) {
    Composing drawing;
    const FrameNode root = stackOf({drawing.provider.add(Image(4, 4, red)), drawing.provider.add(Image(4, 4, blue))});
    EXPECT_EQ(drawing.compose(root, 4, 4).colours, Image(4, 4, blue).colours);
}

TEST(FrameComposer, showsWhatLiesBelowTheBarsOfASmallerPicture) {
    Composing drawing;
    const FrameNode root = stackOf({drawing.provider.add(Image(4, 8, red)), drawing.provider.add(Image(4, 4, blue))});
    const Image drawn = drawing.compose(root, 4, 8);
    EXPECT_EQ(drawn.at(1, 1), red);
    EXPECT_EQ(drawn.at(1, 4), blue);
    EXPECT_EQ(drawn.at(1, 6), red);
}

class Dissolving : public ::testing::TestWithParam<double> {};

TEST_P(Dissolving, mixesTheShares) {
    Composing drawing;
    const Image first = patterned(16, 9, 0.3);
    const Image second(16, 9, glass);
    const FrameNode root = dissolveOf(GetParam(), drawing.provider.add(first), drawing.provider.add(second));
    const Image expected = over(mixed(GetParam(), premultiplied(first), premultiplied(second)), black(16, 9));
    EXPECT_LE(largestDifference(drawing.compose(root, 16, 9), expected), rounding);
}

TEST_P(Dissolving, keepsTheBrightnessOfTwoOpaquePictures) {
    Composing drawing;
    const FrameNode root =
        dissolveOf(GetParam(), drawing.provider.add(Image(4, 4, red)), drawing.provider.add(Image(4, 4, red)));
    EXPECT_EQ(drawing.compose(root, 4, 4).colours, Image(4, 4, red).colours);
}

TEST_P(Dissolving, fadesFromNothing) {
    Composing drawing;
    const FrameNode fading = dissolveOf(GetParam(), FrameNode(), drawing.provider.add(Image(4, 4, blue)));
    const FrameNode root = stackOf({drawing.provider.add(Image(4, 4, red)), fading});
    const Image expected = mixed(GetParam(), Image(4, 4, red), Image(4, 4, blue));
    EXPECT_LE(largestDifference(drawing.compose(root, 4, 4), expected), blending);
}

TEST_P(Dissolving, mixesGroupsThatAreComplete) {
    Composing drawing;
    const Image bottom = patterned(16, 9, 0.3);
    const Image top = patterned(16, 9, 0.6);
    const Image other(16, 9, glass);
    const FrameNode group = stackOf({drawing.provider.add(bottom), drawing.provider.add(top)});
    const FrameNode inner = dissolveOf(0.25, drawing.provider.add(other), drawing.provider.add(bottom));
    const FrameNode root = stackOf({drawing.provider.add(Image(16, 9, red)), dissolveOf(GetParam(), group, inner)});
    const Image groupImage = over(premultiplied(top), premultiplied(bottom));
    const Image innerImage = mixed(0.25, premultiplied(other), premultiplied(bottom));
    const Image expected = over(mixed(GetParam(), groupImage, innerImage), Image(16, 9, red));
    EXPECT_LE(largestDifference(drawing.compose(root, 16, 9), expected), blending);
}

INSTANTIATE_TEST_SUITE_P(Mixes, Dissolving, ::testing::Values(0.0, 0.01, 0.25, 0.5, 0.8, 1.0),
                         [](const auto& caseInfo) { return "at" + std::to_string(int(caseInfo.param * 100)); });

TEST(FrameComposer, nestsGroupsInGroups) {
    Composing drawing;
    const Image image = patterned(8, 8, 0.2);
    FrameNode node = drawing.provider.add(image);
    Image expected = premultiplied(image);
    for (int depth = 0; depth < 5; ++depth) {
        const Image other = patterned(8, 8, 0.1 * depth);
        node = stackOf({dissolveOf(0.4, node, drawing.provider.add(other)), drawing.provider.add(other)});
        expected = over(premultiplied(other), mixed(0.4, expected, premultiplied(other)));
    }
    EXPECT_LE(largestDifference(drawing.compose(node, 8, 8), over(expected, black(8, 8))), 2 * blending);
}

TEST(FrameComposer, refusesMoreNestedGroupsThanItHasMemoryFor) {
    Composing drawing;
    const FrameNode leaf = drawing.provider.add(Image(2, 2, glass));
    FrameNode node = leaf;
    for (int depth = 0; depth <= FrameComposer::mostNestedGroups / 2; ++depth)
        node = stackOf({leaf, dissolveOf(0.5, node, leaf)});
    EXPECT_EQ(drawing.tryToCompose(node, 2, 2).message(), "more than 16 stacks and dissolves lie in each other");
    EXPECT_EQ(drawing.compose(FrameNode(), 2, 2).colours, black(2, 2).colours);
}

/// Fills the texture with half a red, premultiplied, and its lowest row with white.
Outcome fillTexture(QOpenGLExtraFunctions& gl, GLuint texture, int width, int height) {
    std::vector<unsigned char> bytes;
    for (int i = 0; i < width * height; ++i) {
        if (i < width)
            bytes.insert(bytes.end(), {255, 255, 255, 255});
        else
            bytes.insert(bytes.end(), {128, 0, 0, 128});
    }
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl.glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return Outcome();
}

TEST(FrameComposer, laysGeneratorsOverPictures) {
    Composing drawing;
    const FrameNode generator = drawing.provider.addGenerator([&drawing](GLuint texture, int width, int height) {
        return fillTexture(drawing.context.gl(), texture, width, height);
    });
    const FrameNode root = stackOf({drawing.provider.add(Image(6, 4, blue)), generator});
    const Image drawn = drawing.compose(root, 6, 4);
    EXPECT_EQ(drawn.at(2, 3), (Colour{1, 1, 1, 1}));
    const Colour through = drawn.at(2, 0);
    EXPECT_NEAR(through[0] * 255, 128, rounding);
    EXPECT_NEAR(through[2] * 255, 0.6 * 127, rounding);
}

TEST(FrameComposer, startsGeneratorsOnATransparentTexture) {
    Composing drawing;
    const FrameNode filling = drawing.provider.addGenerator([&drawing](GLuint texture, int width, int height) {
        return fillTexture(drawing.context.gl(), texture, width, height);
    });
    const FrameNode idle = drawing.provider.addGenerator([](GLuint, int, int) { return Outcome(); });
    (void)drawing.compose(filling, 6, 4);
    EXPECT_EQ(drawing.compose(idle, 6, 4).colours, black(6, 4).colours);
}

/// Leaves nothing as it was.
void disorder(QOpenGLExtraFunctions& gl) {
    GLuint names[4] = {};
    gl.glGenTextures(2, names);
    gl.glGenBuffers(1, names + 2);
    gl.glGenVertexArrays(1, names + 3);
    gl.glBindVertexArray(names[3]);
    for (const int target : {GL_ARRAY_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_PACK_BUFFER})
        gl.glBindBuffer(static_cast<GLenum>(target), names[2]);
    gl.glActiveTexture(GL_TEXTURE0 + 20);
    gl.glBindTexture(GL_TEXTURE_2D, names[0]);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, names[1]);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(0, 0, 1, 1);
    gl.glEnable(GL_CULL_FACE);
    gl.glCullFace(GL_FRONT_AND_BACK);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glDepthFunc(GL_NEVER);
    gl.glEnable(GL_STENCIL_TEST);
    gl.glStencilFunc(GL_NEVER, 3, 1);
    gl.glEnable(GL_BLEND);
    gl.glBlendFunc(GL_ZERO, GL_ZERO);
    gl.glBlendEquation(GL_FUNC_REVERSE_SUBTRACT);
    gl.glEnable(GL_RASTERIZER_DISCARD);
    gl.glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    gl.glPixelStorei(GL_UNPACK_SKIP_PIXELS, 3);
    gl.glPixelStorei(GL_PACK_ROW_LENGTH, 17);
    gl.glClearColor(1, 0.5, 0.25, 0.125);
    gl.glViewport(1, 2, 3, 4);
    auto* const core = currentCoreFunctions();
    core->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    core->glLogicOp(GL_INVERT);
    gl.glUseProgram(4711);  // leaves an error
}

/// All of it that OpenGL tells.
std::vector<GLint> order(QOpenGLExtraFunctions& gl) {
    std::vector<GLint> values;
    for (const int name : {GL_VIEWPORT,
                           GL_SCISSOR_BOX,
                           GL_COLOR_WRITEMASK,
                           GL_VERTEX_ARRAY_BINDING,
                           GL_ARRAY_BUFFER_BINDING,
                           GL_PIXEL_UNPACK_BUFFER_BINDING,
                           GL_PIXEL_PACK_BUFFER_BINDING,
                           GL_ACTIVE_TEXTURE,
                           GL_CULL_FACE_MODE,
                           GL_DEPTH_FUNC,
                           GL_STENCIL_FUNC,
                           GL_STENCIL_REF,
                           GL_STENCIL_BACK_VALUE_MASK,
                           GL_BLEND_SRC_RGB,
                           GL_BLEND_DST_ALPHA,
                           GL_BLEND_EQUATION_RGB,
                           GL_BLEND_EQUATION_ALPHA,
                           GL_UNPACK_ALIGNMENT,
                           GL_UNPACK_SKIP_PIXELS,
                           GL_PACK_ROW_LENGTH,
                           GL_CURRENT_PROGRAM,
                           GL_DRAW_FRAMEBUFFER_BINDING,
                           GL_READ_FRAMEBUFFER_BINDING,
                           GL_COLOR_CLEAR_VALUE,
                           GL_POLYGON_MODE,
                           GL_LOGIC_OP_MODE}) {
        std::array<GLint, 4> some{};
        gl.glGetIntegerv(static_cast<GLenum>(name), some.data());
        values.insert(values.end(), some.begin(), some.end());
    }
    for (const int name :
         {GL_SCISSOR_TEST, GL_CULL_FACE, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_BLEND, GL_RASTERIZER_DISCARD, GL_DITHER})
        values.push_back(gl.glIsEnabled(static_cast<GLenum>(name)));
    GLint active = 0;
    gl.glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (const GLuint unit : {0u, 1u, 5u, 20u}) {
        gl.glActiveTexture(GL_TEXTURE0 + unit);
        for (const int binding : {GL_TEXTURE_BINDING_RECTANGLE, GL_TEXTURE_BINDING_2D, GL_TEXTURE_BINDING_3D}) {
            GLint name = 0;
            gl.glGetIntegerv(static_cast<GLenum>(binding), &name);
            values.push_back(name);
        }
    }
    gl.glActiveTexture(static_cast<GLenum>(active));
    return values;
}

TEST(FrameComposer, isUntouchedByTheStateThatGeneratorsLeave) {
    Composing drawing;
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const FrameNode wild = drawing.provider.addGenerator([&gl](GLuint texture, int width, int height) {
        Outcome outcome = fillTexture(gl, texture, width, height);
        disorder(gl);
        return outcome;
    });
    const FrameNode tame = drawing.provider.addGenerator(
        [&gl](GLuint texture, int width, int height) { return fillTexture(gl, texture, width, height); });
    const FrameNode picture = drawing.provider.add(patterned(6, 4, 0.5));
    const Image expected = drawing.compose(stackOf({picture, tame, picture}), 6, 4);
    const std::vector<GLint> before = order(gl);
    EXPECT_EQ(drawing.compose(stackOf({picture, tame, picture}), 6, 4).colours, expected.colours);
    EXPECT_EQ(order(gl), before);
    EXPECT_EQ(drawing.compose(stackOf({picture, wild, picture}), 6, 4).colours, expected.colours);
    EXPECT_EQ(order(gl), before);
}

TEST(FrameComposer, leavesTheStateOfOpenGLAsItWas) {
    Composing drawing;
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const FrameNode picture = drawing.provider.add(patterned(6, 4, 0.5));
    const FrameNode root = dissolveOf(0.5, stackOf({picture, picture}), picture);
    const Image expected = drawing.compose(root, 9, 7);
    TestTexture texture(gl, 9, 7);
    disorder(gl);
    while (gl.glGetError() != GL_NO_ERROR) {
    }
    const std::vector<GLint> before = order(gl);
    EXPECT_TRUE(drawing.composer.compose(gl, root, drawing.provider, {texture.name(), 9, 7}).success());
    EXPECT_EQ(order(gl), before);
}

TEST(FrameComposer, failsInTheWordsOfTheLeafThatFails) {
    Composing drawing;
    const FrameNode good = drawing.provider.add(Image(4, 4, red));
    const FrameNode bad = drawing.provider.addFailing("clip.mov: frame 7: it is broken");
    for (FrameNode const& root : {bad, stackOf({good, bad}), dissolveOf(0.5, stackOf({good, bad}), good)})
        EXPECT_EQ(drawing.tryToCompose(root, 4, 4).message(), "clip.mov: frame 7: it is broken");
    const FrameNode generator =
        drawing.provider.addGenerator([](GLuint, int, int) { return Outcome::failure("no such title"); });
    EXPECT_EQ(drawing.tryToCompose(stackOf({good, generator}), 4, 4).message(), "no such title");
    EXPECT_EQ(drawing.compose(good, 4, 4).colours, Image(4, 4, red).colours);
}

TEST(FrameComposer, namesTheFileThatItCannotDraw) {
    Composing drawing;
    auto picture = makePicture(AV_PIX_FMT_YUV420P10, 8, 8, [](int, int, int) { return 512; });
    picture->colorspace = AVCOL_SPC_ICTCP;
    const FrameNode node = drawing.provider.add(picture);
    EXPECT_EQ(drawing.tryToCompose(node, 8, 8).message(), "clip.mov: its colour matrix is not supported (ictcp)");
}

TEST(FrameComposer, refusesATextureThatCannotBeDrawnInto) {
    Composing drawing;
    const Outcome outcome = drawing.composer.compose(drawing.context.gl(), FrameNode(), drawing.provider, {4711, 8, 8});
    EXPECT_EQ(outcome.message().find("the output texture cannot be drawn into"), 0u) << outcome.message();
    EXPECT_EQ(drawing.context.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

int living(QOpenGLExtraFunctions& gl) {
    int count = 0;
    for (GLuint name = 1; name < 256; ++name) {
        count += gl.glIsTexture(name) == GL_TRUE;
        count += gl.glIsFramebuffer(name) == GL_TRUE;
        count += gl.glIsVertexArray(name) == GL_TRUE;
        count += gl.glIsProgram(name) == GL_TRUE;
    }
    return count;
}

TEST(FrameComposer, deletesEverythingWhenItIsReleased) {
    Composing drawing;
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const int before = living(gl);
    const FrameNode picture = drawing.provider.add(patterned(6, 4, 0.5));
    const FrameNode generator = drawing.provider.addGenerator([](GLuint, int, int) { return Outcome(); });
    for (int round = 0; round < 2; ++round) {
        (void)drawing.compose(dissolveOf(0.5, stackOf({picture, picture}), stackOf({picture, generator})), 9, 7);
        EXPECT_GT(living(gl), before);
        drawing.composer.release(gl);
        EXPECT_EQ(living(gl), before);
    }
}

TEST(FrameComposer, keepsNoMoreIntermediatePicturesThanItUses) {
    Composing drawing;
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const FrameNode picture = drawing.provider.add(patterned(6, 4, 0.5));
    const FrameNode root = dissolveOf(0.5, stackOf({picture, picture}), picture);
    (void)drawing.compose(root, 9, 7);
    const int used = living(gl);
    for (int side = 10; side < 60; ++side)
        (void)drawing.compose(root, side, side);
    EXPECT_LE(living(gl), used + 16);
    for (int round = 0; round < 60; ++round)
        (void)drawing.compose(picture, 6, 4);
    EXPECT_LE(living(gl), used);
}

}  // namespace
}  // namespace qrtplay
