#include "graph/qrtMediaGraphEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "host/qrtReferencePicture.h"
#include "host/qrtTestClips.h"
#include "host/qrtTestOpenGL.h"
#include "input/qrtPlayInput.h"
#include "sound/qrtHostAudioFormat.h"

namespace qrtplay {
namespace {

// A texture unit interpolates 8-bit chroma with weights of 8 bits and may round the result to 8 bits, off by up to one
// step; the matrix stretches that by up to 2.2, and the result is rounded again.
constexpr int colourRounding = 3;

VideoBufferResolution rgba(int width, int height) {
    return VideoBufferResolution(width, height, 4, 8, false);
}

SharedPtr<TimelineComposition> openComposition(std::string const& clip, Presentation const& presentation = {}) {
    PlayInput input;
    input.files = {clipPath(clip)};
    OpenedInput opened;
    InputFailure failure{};
    const Outcome outcome = openInput(input, opened, failure);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return TimelineComposition::create(opened.timeline, {}, presentation);
}

/// An engine with a clip and a texture of its own, as the player would set it up.
class Drawing {
public:
    Drawing(std::string const& clip, int width, int height)
        : composition(openComposition(clip)), texture(context.gl(), width, height), size(rgba(width, height)) {
        EXPECT_TRUE(engine->setGLContext(context.context()).success());
        EXPECT_TRUE(engine->setComposition(composition, {}, size, Rational(24, 1)).success());
    }

    std::vector<unsigned char> draw(int64 frame) {
        EXPECT_EQ(engine->renderFrame(size, frame, texture.name()).get(), Status::ok) << composition->failureOf(frame);
        EXPECT_EQ(context.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        return texture.pixels();
    }

    TestContext context;
    SharedPtr<TimelineComposition> composition;
    TestTexture texture;
    SharedPtr<GraphEngineInterface> engine = MediaGraphEngine::create();
    VideoBufferResolution size;
};

/// What the processor makes of the same frame.
std::vector<unsigned char> expectedColours(std::string const& name, int64 frame) {
    OpenClip clip(name);
    FramePtr picture;
    EXPECT_TRUE(clip.picture(frame, picture).success());
    return referenceColours(*picture, clip.facts());
}

class DrawnFormats : public ::testing::TestWithParam<const char*> {};

TEST_P(DrawnFormats, haveTheColoursOfTheirDefinition) {
    const std::string clip = std::string("format-") + GetParam() + ".nut";
    Drawing drawing(clip, 37, 22);
    EXPECT_LE(largestDifference(drawing.draw(1), expectedColours(clip, 1), 37, 22), colourRounding);
}

INSTANTIATE_TEST_SUITE_P(PixelFormats, DrawnFormats,
                         ::testing::Values("yuv420p", "yuvj420p", "yuv422p", "yuv444p", "yuv440p", "yuv411p", "nv12",
                                           "nv21", "yuyv422", "uyvy422", "yuv420p10le", "yuv422p12le", "yuv444p16le",
                                           "p010le", "gray", "gray10le", "rgb24", "bgr24", "rgba", "bgra", "argb",
                                           "gbrp", "gbrp10le", "rgb48le", "pal8", "monob", "yuva420p", "ya8"),
                         [](const auto& caseInfo) { return std::string(caseInfo.param); });

class DrawnColours : public ::testing::TestWithParam<const char*> {};

TEST_P(DrawnColours, followTheMatrixAndRangeOfTheStream) {
    const std::string clip = std::string(GetParam()) + ".mp4";
    Drawing drawing(clip, 64, 48);
    EXPECT_LE(largestDifference(drawing.draw(3), expectedColours(clip, 3), 64, 48), colourRounding);
}

INSTANTIATE_TEST_SUITE_P(Flags, DrawnColours, ::testing::Values("bt709", "bt601", "bt2020", "full"),
                         [](const auto& caseInfo) { return std::string(caseInfo.param); });

TEST(MediaGraphEngine, drawsEachFrameInWhateverOrder) {
    Drawing drawing("bframes.mp4", 160, 96);
    for (const int64 frame : {40, 3, 4, 5, 47, 46, 45, 0, 23, 12, 11}) {
        EXPECT_LE(largestDifference(drawing.draw(frame), expectedColours("bframes.mp4", frame), 160, 96),
                  colourRounding)
            << frame;
    }
}

TEST(MediaGraphEngine, putsBlackBarsAroundAPictureOfAnotherShape) {
    // 37 x 22 on 37 x 42: ten black rows above and below.
    Drawing drawing("format-rgb24.nut", 37, 42);
    const std::vector<unsigned char> pixels = drawing.draw(0);
    std::vector<unsigned char> expected = expectedColours("format-rgb24.nut", 0);
    std::vector<unsigned char> bar;
    for (int i = 0; i < 37 * 10; ++i)
        bar.insert(bar.end(), {0, 0, 0, 255});
    expected.insert(expected.begin(), bar.begin(), bar.end());
    expected.insert(expected.end(), bar.begin(), bar.end());
    EXPECT_LE(largestDifference(pixels, expected, 37, 42), 1);
}

TEST(MediaGraphEngine, honoursThePixelAspect) {
    // 64 x 48 pixels twice as wide as high fill 128 x 48 without a bar; the corner of the test picture is not black.
    Drawing drawing("anamorphic.mp4", 128, 48);
    const std::vector<unsigned char> pixels = drawing.draw(0);
    const size_t lastPixel = pixels.size() - 4;
    EXPECT_GT(pixels[0] + pixels[1] + pixels[2], 30);
    EXPECT_GT(pixels[lastPixel] + pixels[lastPixel + 1] + pixels[lastPixel + 2], 30);
}

TEST(MediaGraphEngine, scalesAsThePresentationSays) {
    // 37 x 22 on 20 x 10: what is shown pixel for pixel is the middle, from column 8 and row 6 on.
    Drawing drawing("format-rgb24.nut", 20, 10);
    Presentation presentation;
    presentation.scaling = Scaling::one_to_one;
    ASSERT_TRUE(drawing.engine->updateComposition(openComposition("format-rgb24.nut", presentation), "").success());
    const std::vector<unsigned char> pixels = drawing.draw(0);
    const std::vector<unsigned char> source = expectedColours("format-rgb24.nut", 0);
    for (size_t y = 0; y < 10; ++y) {
        for (size_t x = 0; x < 20; ++x)
            EXPECT_EQ(pixels[(y * 20 + x) * 4], source[((y + 6) * 37 + x + 8) * 4]) << x << "," << y;
    }
}

TEST(MediaGraphEngine, drawsBlackOutsideTheClip) {
    Drawing drawing("bt709.mp4", 4, 4);
    for (const int64 frame : {int64{6}, int64{-1}, INT64_MAX, INT64_MIN}) {
        const std::vector<unsigned char> pixels = drawing.draw(frame);
        for (size_t i = 0; i < pixels.size(); ++i)
            EXPECT_EQ(pixels[i], i % 4 == 3 ? 255 : 0);
    }
}

TEST(MediaGraphEngine, repeatsAndLeavesOutFramesAtAnotherRate) {
    Drawing drawing("bframes.mp4", 160, 96);
    ASSERT_TRUE(drawing.engine->setVideoFrameRate(Rational(60, 1)).success());
    EXPECT_EQ(drawing.engine->getVideoFrameRate(), Rational(60, 1));
    for (const int64 frame : {0, 1, 2, 3, 4, 5, 59}) {
        EXPECT_LE(largestDifference(drawing.draw(frame), expectedColours("bframes.mp4", frame * 24 / 60), 160, 96),
                  colourRounding);
    }
    ASSERT_TRUE(drawing.engine->setVideoFrameRate(Rational(8, 1)).success());
    EXPECT_LE(largestDifference(drawing.draw(5), expectedColours("bframes.mp4", 15), 160, 96), colourRounding);
}

TEST(MediaGraphEngine, refusesAFrameRateThatIsNotPositive) {
    const SharedPtr<GraphEngineInterface> engine = MediaGraphEngine::create();
    for (const Rational rate : {Rational(0, 1), Rational(-24, 1), Rational(24, 0)}) {
        EXPECT_TRUE(engine->setVideoFrameRate(rate) == Status::invalid_argument);
        EXPECT_EQ(engine->getVideoFrameRate(), Rational(24, 1));
    }
}

TEST(MediaGraphEngine, takesOverTheRateOfTheClip) {
    Drawing drawing("ntsc.mov", 8, 8);
    EXPECT_EQ(drawing.engine->getVideoFrameRate(), Rational(30000, 1001));
}

TEST(MediaGraphEngine, namesTheFrameThatCannotBeDecoded) {
    Drawing drawing("truncated.mp4", 160, 96);
    EXPECT_TRUE(drawing.engine->renderFrame(drawing.size, 40, drawing.texture.name()) == Status::general_failure);
    EXPECT_EQ(drawing.composition->failureOf(40),
              clipPath("truncated.mp4") + ": frame 40: missing, the file is cut off");
    EXPECT_EQ(drawing.composition->failureOf(39), "");
    EXPECT_LE(largestDifference(drawing.draw(23), expectedColours("bframes.mp4", 23), 160, 96), colourRounding);
}

TEST(MediaGraphEngine, leavesTheStateOfOpenGLAsItWas) {
    Drawing drawing("bframes.mp4", 16, 16);
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    TestTexture other(gl, 3, 3);
    GLuint vertexArray = 0;
    gl.glGenVertexArrays(1, &vertexArray);
    gl.glBindVertexArray(vertexArray);
    gl.glViewport(1, 2, 3, 4);
    gl.glActiveTexture(GL_TEXTURE1);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, other.name());
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    gl.glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);

    ASSERT_TRUE(drawing.engine->renderFrame(drawing.size, 1, drawing.texture.name()).success());

    const auto integer = [&gl](GLenum name) {
        GLint values[4] = {};
        gl.glGetIntegerv(name, values);
        return std::vector<GLint>(values, values + 4);
    };
    EXPECT_EQ(integer(GL_VIEWPORT), (std::vector<GLint>{1, 2, 3, 4}));
    EXPECT_EQ(integer(GL_VERTEX_ARRAY_BINDING)[0], static_cast<GLint>(vertexArray));
    EXPECT_EQ(integer(GL_ACTIVE_TEXTURE)[0], GL_TEXTURE1);
    EXPECT_EQ(integer(GL_TEXTURE_BINDING_RECTANGLE)[0], static_cast<GLint>(other.name()));
    EXPECT_EQ(integer(GL_FRAMEBUFFER_BINDING)[0], 0);
    EXPECT_EQ(integer(GL_CURRENT_PROGRAM)[0], 0);
    EXPECT_EQ(integer(GL_UNPACK_ALIGNMENT)[0], 8);
    EXPECT_EQ(integer(GL_COLOR_WRITEMASK), (std::vector<GLint>{1, 0, 1, 0}));
    EXPECT_TRUE(gl.glIsEnabled(GL_SCISSOR_TEST));
    EXPECT_TRUE(gl.glIsEnabled(GL_DITHER));

    gl.glDisable(GL_SCISSOR_TEST);
    gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl.glBindVertexArray(0);
    gl.glDeleteVertexArrays(1, &vertexArray);
}

TEST(MediaGraphEngine, deletesItsTexturesWithItself) {
    TestContext context;
    QOpenGLExtraFunctions& gl = context.gl();
    const auto livingTextures = [&gl] {
        int living = 0;
        for (GLuint name = 1; name < 64; ++name)
            living += gl.glIsTexture(name) ? 1 : 0;
        return living;
    };
    TestTexture texture(gl, 8, 8);
    const int before = livingTextures();
    {
        SharedPtr<GraphEngineInterface> engine = MediaGraphEngine::create();
        ASSERT_TRUE(engine->setGLContext(context.context()).success());
        ASSERT_TRUE(engine->setPref(MediaGraphEngine::CONVERSION, 2).success());  // the CPU needs no textures
        ASSERT_TRUE(engine->setComposition(openComposition("bt709.mp4"), {}, rgba(8, 8), Rational(24, 1)).success());
        ASSERT_TRUE(engine->renderFrame(rgba(8, 8), 0, texture.name()).success());
        EXPECT_GT(livingTextures(), before);
    }
    EXPECT_EQ(livingTextures(), before);
}

TEST(MediaGraphEngine, refusesACompositionThatIsEmptyOrOfAnotherKind) {
    class Foreign final : public Composition {
    public:
        Status getStartTime(Time&) const override { return Status(); }
        Status getDuration(Time&) const override { return Status(); }
    };
    Drawing drawing("bt709.mp4", 8, 8);
    GraphEngineInterface& engine = *drawing.engine;
    EXPECT_TRUE(engine.setComposition({}, {}, drawing.size, Rational(24, 1)) == Status::no_composition);
    EXPECT_TRUE(engine.renderFrame(drawing.size, 0, drawing.texture.name()) == Status::no_composition);
    const SharedPtr<Composition> foreign(new Foreign);
    EXPECT_TRUE(engine.setComposition(foreign, {}, drawing.size, Rational(24, 1)) == Status::invalid_argument);
    EXPECT_TRUE(engine.updateComposition(foreign, "") == Status::invalid_argument);
    EXPECT_TRUE(engine.setComposition(drawing.composition, {}, drawing.size, Rational(24, 1)).success());
    EXPECT_TRUE(engine.renderFrame(drawing.size, 0, drawing.texture.name()).success());
}

TEST(MediaGraphEngine, failsWithoutAContextATextureOrASize) {
    Drawing drawing("bt709.mp4", 8, 8);
    EXPECT_TRUE(drawing.engine->renderFrame(drawing.size, 0, 0) == Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->renderFrame(VideoBufferResolution(), 0, drawing.texture.name()) ==
                Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->renderFrame(drawing.size, 0, 4711) == Status::general_failure);
    EXPECT_EQ(drawing.context.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const SharedPtr<GraphEngineInterface> without = MediaGraphEngine::create();
    EXPECT_TRUE(without->renderFrame(drawing.size, 0, drawing.texture.name()) == Status::general_failure);
}

/// Whether the engine says that it keeps what a frame is made of.
bool keeps(GraphEngineInterface const& engine, int64 frame) {
    ConstSharedPtr<CacheStats> stats;
    EXPECT_TRUE(engine.getCacheStats(CacheStats::CacheType::graph_engine, stats).success());
    auto const& ranges = stats->getFrameRanges();
    return std::any_of(ranges.begin(), ranges.end(),
                       [frame](auto const& range) { return range.first <= frame && frame <= range.last; });
}

TEST(MediaGraphEngine, reportsTheDecodedFramesThatItKeeps) {
    Drawing drawing("bframes.mp4", 8, 8);
    EXPECT_FALSE(keeps(*drawing.engine, 23));
    (void)drawing.draw(23);
    EXPECT_TRUE(keeps(*drawing.engine, 23));
    EXPECT_FALSE(keeps(*drawing.engine, 2));

    ASSERT_TRUE(drawing.engine->setVideoFrameRate(Rational(48, 1)).success());
    (void)drawing.draw(46);
    EXPECT_TRUE(keeps(*drawing.engine, 46));
    EXPECT_TRUE(keeps(*drawing.engine, 47));
    ASSERT_TRUE(drawing.engine->clearCache().success());
    EXPECT_FALSE(keeps(*drawing.engine, 46));
    ConstSharedPtr<CacheStats> stats;
    EXPECT_TRUE(drawing.engine->getCacheStats(CacheStats::CacheType::producer, stats) == Status::invalid_query);
}

TEST(MediaGraphEngine, decodesAheadInTheDirectionOfItsStep) {
    for (const int32 step : {1, -1}) {
        Drawing drawing("bframes.mp4", 8, 8);
        ASSERT_TRUE(drawing.engine->setStep(step).success());
        (void)drawing.draw(20);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (!keeps(*drawing.engine, 20 + 8 * step) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_TRUE(keeps(*drawing.engine, 20 + 8 * step)) << step;
    }
}

TEST(MediaGraphEngine, keepsWhatIsDecodedWhenOnlyThePresentationChanges) {
    Drawing drawing("bframes.mp4", 8, 8);
    (void)drawing.draw(23);
    Presentation filling;
    filling.scaling = Scaling::fill;
    const auto same = TimelineComposition::create(drawing.composition->timeline(), {}, filling);
    ASSERT_TRUE(drawing.engine->updateComposition(same, "").success());
    EXPECT_TRUE(keeps(*drawing.engine, 23));
    ASSERT_TRUE(drawing.engine->updateComposition(openComposition("bframes.mp4"), "").success());
    EXPECT_FALSE(keeps(*drawing.engine, 23));
}

TEST(MediaGraphEngine, keepsTheDecodedFramesWithinTheirBudget) {
    Drawing drawing("bframes.mp4", 8, 8);
    Vector<String> names;
    ASSERT_TRUE(drawing.engine->getPrefs(names).success());
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], String("QRTPLAY_DECODE_CACHE_MIB"));
    int value = 0;
    ASSERT_TRUE(drawing.engine->getPref(names[0], value).success());
    EXPECT_EQ(value, 512);

    (void)drawing.draw(23);
    EXPECT_TRUE(drawing.engine->setPref(names[0], 0).success());
    ConstSharedPtr<CacheStats> stats;
    ASSERT_TRUE(drawing.engine->getCacheStats(CacheStats::CacheType::graph_engine, stats).success());
    ASSERT_EQ(stats->getFrameRanges().size(), 1u);
    EXPECT_EQ(stats->getFrameRanges()[0].first, stats->getFrameRanges()[0].last);

    EXPECT_TRUE(drawing.engine->setPref(names[0], -1) == Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->setPref("NO_SUCH", 1) == Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->getPref("NO_SUCH", value) == Status::invalid_argument);
    ASSERT_TRUE(drawing.engine->getPref(names[0], value).success());
    EXPECT_EQ(value, 0);
}

struct ConversionCase {
    char const* name;
    int width;
    int height;
    Scaling scaling;
    bool isScaled;
};

class Conversions : public ::testing::TestWithParam<ConversionCase> {
protected:
    static std::vector<unsigned char> drawn(Drawing& drawing, ConversionChoice where) {
        EXPECT_TRUE(drawing.engine->setPref(MediaGraphEngine::CONVERSION, static_cast<int>(where)).success());
        return drawing.draw(3);
    }
};

TEST_P(Conversions, drawTheSameOnTheCpuAndInShaders) {
    Drawing drawing("bt709.mp4", GetParam().width, GetParam().height);
    Presentation presentation;
    presentation.scaling = GetParam().scaling;
    const auto shown = TimelineComposition::create(drawing.composition->timeline(), {}, presentation);
    ASSERT_TRUE(drawing.engine->updateComposition(shown, "").success());
    const std::vector<unsigned char> onCpu = drawn(drawing, ConversionChoice::cpu);
    const std::vector<unsigned char> inShaders = drawn(drawing, ConversionChoice::gpu);
    ASSERT_EQ(onCpu.size(), inShaders.size());
    int largest = 0;
    double sum = 0;
    for (size_t i = 0; i < onCpu.size(); ++i) {
        largest = std::max(largest, std::abs(onCpu[i] - inShaders[i]));
        sum += std::abs(onCpu[i] - inShaders[i]);
    }
    // The test picture is all edges of saturated colours; they get another shape when chroma is scaled by itself.
    if (GetParam().isScaled)
        EXPECT_LE(sum / static_cast<double>(onCpu.size()), 3);
    else
        EXPECT_LE(largest, colourRounding);  // of the shaders
}

INSTANTIATE_TEST_SUITE_P(Places, Conversions,
                         ::testing::Values(ConversionCase{"whole", 64, 48, Scaling::fit, false},
                                           ConversionCase{"barsAboveAndBelow", 64, 60, Scaling::fit, false},
                                           ConversionCase{"barsBeside", 80, 48, Scaling::fit, false},
                                           ConversionCase{"cutOffBeside", 40, 48, Scaling::fill, false},
                                           ConversionCase{"cutOffAboveAndBelow", 64, 20, Scaling::fill, false},
                                           ConversionCase{"cutOutOfTheMiddle", 30, 20, Scaling::one_to_one, false},
                                           ConversionCase{"shrunk", 32, 24, Scaling::fit, true},
                                           ConversionCase{"shrunkAndCutOff", 20, 24, Scaling::fill, true},
                                           ConversionCase{"enlarged", 128, 96, Scaling::fit, true}),
                         [](const auto& caseInfo) { return std::string(caseInfo.param.name); });

TEST(MediaGraphEngine, convertsWhereItIsTold) {
    const SharedPtr<GraphEngineInterface> engine = MediaGraphEngine::create();
    for (const int where : {0, 1, 2}) {
        int value = -1;
        EXPECT_TRUE(engine->setPref(MediaGraphEngine::CONVERSION, where).success());
        EXPECT_TRUE(engine->getPref(MediaGraphEngine::CONVERSION, value).success());
        EXPECT_EQ(value, where);
    }
    for (const int nowhere : {-1, 3})
        EXPECT_TRUE(engine->setPref(MediaGraphEngine::CONVERSION, nowhere) == Status::invalid_argument);
}

TEST(MediaGraphEngine, remembersItsStep) {
    const SharedPtr<GraphEngineInterface> engine = MediaGraphEngine::create();
    EXPECT_EQ(engine->getStep(), 1);
    EXPECT_TRUE(engine->setStep(-4).success());
    EXPECT_EQ(engine->getStep(), -4);
}

TEST(MediaGraphEngine, fillsSoundInTheHostsFormatOnly) {
    Drawing drawing("bt709.mp4", 8, 8);
    std::array<char, 64> bytes;
    bytes.fill(1);
    EXPECT_TRUE(drawing.engine->fillAudio({}, bytes.data(), bytes.size(), 0) == Status::invalid_argument);
    const ConstSharedPtr<AudioFormatInterface> format(new HostAudioFormat(48000, 2, SampleKind::int16));
    EXPECT_TRUE(drawing.engine->fillAudio(format, bytes.data(), 63, 0) == Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->fillAudio(format, nullptr, 4, 0) == Status::invalid_argument);
    EXPECT_TRUE(drawing.engine->fillAudio(format, bytes.data(), bytes.size(), 0).success());
    EXPECT_THAT(bytes, ::testing::Each(0)) << "the clip has no sound";
    bytes.fill(1);
    EXPECT_TRUE(drawing.engine->fillAudio(format, bytes.data(), bytes.size(), SIZE_MAX).success());
    EXPECT_THAT(bytes, ::testing::Each(0)) << "nothing is heard that far away";
    EXPECT_TRUE(MediaGraphEngine::create()->fillAudio(format, bytes.data(), bytes.size(), 0) == Status::no_composition);
}

}  // namespace
}  // namespace qrtplay
