#include "generators/qrtGlGeneratorSegment.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/qrtGeneratedPicture.h"

namespace qrtplay {
namespace {

using Kind = Generator::Kind;
using Pixel = GeneratedPicture::Pixel;

class GlGeneratorSegmentTest : public ::testing::Test {
protected:
    /// A point between the circles of a leader, `turn` clockwise from the top.
    static Pixel onTheClock(GeneratedPicture const& picture, double turn) {
        constexpr double radius = 0.39;
        const double angle = turn * 6.28318530718;
        const double unit = std::min(picture.width, picture.height);
        return picture.at(static_cast<int>(picture.width / 2.0 + std::sin(angle) * radius * unit),
                          static_cast<int>(picture.height / 2.0 + std::cos(angle) * radius * unit));
    }
    static bool isInTheMiddle(GeneratedPicture const& picture, int x, int y) {
        const int side = std::min(picture.width, picture.height) / 2;
        return std::abs(x - picture.width / 2) <= side / 2 && std::abs(y - picture.height / 2) <= side / 2;
    }
    /// How many pixels differ in the middle, where the number is, and elsewhere.
    static std::pair<int, int> differences(GeneratedPicture const& a, GeneratedPicture const& b) {
        std::pair<int, int> counts;
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                if (a.at(x, y) != b.at(x, y)) ++(isInTheMiddle(a, x, y) ? counts.first : counts.second);
            }
        }
        return counts;
    }
    GeneratedPicture leader(int64 frame, int width = 160, int height = 120) {
        return draw(context.gl(), generatorOf(Kind::counting_leader), width, height, frame);
    }

    static inline const Pixel ground{153, 153, 153, 255};
    static inline const Pixel swept{102, 102, 102, 255};
    TestContext context;
};

TEST_F(GlGeneratorSegmentTest, aSolidColourIsEverywhereWithItsAlphaMultipliedIn) {
    const GeneratedPicture picture = draw(context.gl(), generatorOf(Kind::solid_colour, {1, 0.5, 0, 0.4}), 5, 3);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(picture.at(x, y), (Pixel{102, 51, 0, 102}));
    }
}

TEST_F(GlGeneratorSegmentTest, aColourThatIsNoneIsMovedIntoRange) {
    const auto colourOf = [this](std::vector<double> const& colour) {
        return draw(context.gl(), generatorOf(Kind::solid_colour, colour), 1, 1).at(0, 0);
    };
    EXPECT_EQ(colourOf({}), (Pixel{0, 0, 0, 255}));
    EXPECT_EQ(colourOf({1, 0}), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(colourOf({-1, 7, NAN, 1, 3}), (Pixel{0, 255, 0, 255}));
}

TEST_F(GlGeneratorSegmentTest, theLeadersNumberIsAnotherOneEachSecond) {
    std::vector<GeneratedPicture> pictures;
    for (int64 second = 0; second < 8; ++second)
        pictures.push_back(leader(second * 24));  // before the pop
    for (size_t i = 0; i < pictures.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            const auto [inTheMiddle, elsewhere] = differences(pictures[i], pictures[j]);
            EXPECT_GT(inTheMiddle, 100) << i << " and " << j;
            EXPECT_EQ(elsewhere, 0) << i << " and " << j;
        }
    }
}

TEST_F(GlGeneratorSegmentTest, theLeadersHandTurnsClockwiseAndDarkensWhatItHasSwept) {
    const GeneratedPicture quarter = leader(6);
    EXPECT_EQ(onTheClock(quarter, 0.125), swept);
    EXPECT_EQ(onTheClock(quarter, 0.375), ground);
    EXPECT_EQ(onTheClock(quarter, 0.625), ground);
    EXPECT_EQ(onTheClock(quarter, 0.875), ground);
    const GeneratedPicture late = leader(20);
    EXPECT_EQ(onTheClock(late, 0.125), swept);
    EXPECT_EQ(onTheClock(late, 0.625), swept);
    EXPECT_EQ(onTheClock(late, 20 / 24.0), (Pixel{0, 0, 0, 255})) << "the hand itself";
    EXPECT_EQ(onTheClock(late, 0.93), ground);
    EXPECT_EQ(onTheClock(leader(0), 0.875), ground) << "nothing is swept when a second begins";
}

TEST_F(GlGeneratorSegmentTest, theLeadersPopIsTwoWhiteFramesTwoSecondsBeforeTheEnd) {
    EXPECT_EQ(onTheClock(leader(191), 0.99), ground);
    EXPECT_EQ(onTheClock(leader(192), 0.625), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(onTheClock(leader(193), 0.625), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(onTheClock(leader(194), 0.625), ground);
}

TEST_F(GlGeneratorSegmentTest, theLeaderStaysAtItsEndsOutside) {
    EXPECT_EQ(leader(-7), leader(0));
    EXPECT_EQ(leader(1000), leader(239));
}

TEST_F(GlGeneratorSegmentTest, theLeaderIsDrawnInPicturesOfAnyShape) {
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{1, 1}, {2, 90}, {90, 3}, {301, 77}}) {
        const GeneratedPicture picture = leader(7, width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(picture.at(x, y)[3], 255) << x << "," << y;
        }
    }
}

TEST_F(GlGeneratorSegmentTest, bothKindsOfTextureGetTheSamePicture) {
    for (const Kind kind : {Kind::solid_colour, Kind::smpte_bars, Kind::counting_leader}) {
        const Generator generator = generatorOf(kind, {0.2, 0.4, 0.6, 0.8});
        EXPECT_EQ(draw(context.gl(), generator, 71, 44, 30, GL_TEXTURE_2D),
                  draw(context.gl(), generator, 71, 44, 30, GL_TEXTURE_RECTANGLE));
    }
}

TEST_F(GlGeneratorSegmentTest, leavesTheStateOfOpenGLAsItWas) {
    QOpenGLExtraFunctions& gl = context.gl();
    TestTexture target(gl, 40, 30);
    TestTexture other(gl, 3, 3);
    GLuint vertexArray = 0;
    gl.glGenVertexArrays(1, &vertexArray);
    gl.glBindVertexArray(vertexArray);
    gl.glViewport(1, 2, 3, 4);
    gl.glScissor(5, 6, 7, 8);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glEnable(GL_BLEND);
    gl.glActiveTexture(GL_TEXTURE1);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, other.name());
    gl.glClearColor(0.25f, 0.5f, 0.75f, 1.0f);
    gl.glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 8);

    for (const Kind kind : {Kind::solid_colour, Kind::smpte_bars, Kind::counting_leader}) {
        const auto segment = GlGeneratorSegment::create(generatorOf(kind));
        ASSERT_TRUE(segment->renderToTexture(target.name(), 1, formatOf(40, 30), Time(3, Rational(24, 1))).success());
        const auto integers = [&gl](GLenum name) {
            GLint values[4] = {};
            gl.glGetIntegerv(name, values);
            return std::vector<GLint>(values, values + 4);
        };
        EXPECT_EQ(integers(GL_VIEWPORT), (std::vector<GLint>{1, 2, 3, 4}));
        EXPECT_EQ(integers(GL_SCISSOR_BOX), (std::vector<GLint>{5, 6, 7, 8}));
        EXPECT_TRUE(gl.glIsEnabled(GL_SCISSOR_TEST));
        EXPECT_TRUE(gl.glIsEnabled(GL_BLEND));
        EXPECT_EQ(integers(GL_VERTEX_ARRAY_BINDING)[0], static_cast<GLint>(vertexArray));
        EXPECT_EQ(integers(GL_CURRENT_PROGRAM)[0], 0);
        EXPECT_EQ(integers(GL_FRAMEBUFFER_BINDING)[0], 0);
        EXPECT_EQ(integers(GL_ACTIVE_TEXTURE)[0], GL_TEXTURE1);
        EXPECT_EQ(integers(GL_TEXTURE_BINDING_RECTANGLE)[0], static_cast<GLint>(other.name()));
        EXPECT_EQ(integers(GL_COLOR_WRITEMASK), (std::vector<GLint>{1, 0, 1, 0}));
        EXPECT_EQ(integers(GL_UNPACK_ALIGNMENT)[0], 8);
        GLfloat clearColour[4] = {};
        gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, clearColour);
        EXPECT_EQ(clearColour[2], 0.75f);
    }
    gl.glBindVertexArray(0);
    gl.glDeleteVertexArrays(1, &vertexArray);
}

TEST_F(GlGeneratorSegmentTest, leavesNoObjectOfOpenGLBehind) {
    TestTexture target(context.gl(), 40, 30);
    const std::vector<int> before = livingObjects(context.gl());
    std::vector<SharedPtr<GlGeneratorSegment>> held;
    for (const Kind kind : {Kind::solid_colour, Kind::smpte_bars, Kind::counting_leader}) {
        held.push_back(GlGeneratorSegment::create(generatorOf(kind)));
        for (int64 frame = 0; frame < 3; ++frame) {
            ASSERT_TRUE(held.back()
                            ->renderToTexture(target.name(), 1, formatOf(40, 30), Time(frame, Rational(24, 1)))
                            .success());
        }
        EXPECT_EQ(livingObjects(context.gl()), before);
    }
}

TEST_F(GlGeneratorSegmentTest, refusesWhatItCannotDrawInto) {
    QOpenGLExtraFunctions& gl = context.gl();
    const TestTexture target(gl, 8, 8);
    const std::vector<int> before = livingObjects(gl);
    const auto segment = GlGeneratorSegment::create(generatorOf(Kind::smpte_bars));
    const Time time(0, Rational(24, 1));
    EXPECT_EQ(segment->renderToTexture(0, 1, formatOf(8, 8), time).get(), Status::invalid_argument);
    EXPECT_EQ(segment->renderToTexture(target.name(), 1, formatOf(0, 8), time).get(), Status::invalid_argument);
    EXPECT_EQ(segment->renderToTexture(target.name(), 0, formatOf(8, 8), time).get(), Status::general_failure);
    EXPECT_EQ(segment->renderToTexture(4711, 1, formatOf(8, 8), time).get(), Status::general_failure);
    unsigned char memory[256] = {};
    EXPECT_EQ(segment->renderToRam(memory, sizeof memory, formatOf(8, 8), time).get(), Status::invalid_query);
    const auto title = GlGeneratorSegment::create(titleOf("no"));
    EXPECT_EQ(title->renderToTexture(target.name(), 1, formatOf(8, 8), time).get(), Status::invalid_query);
    EXPECT_EQ(gl.glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(livingObjects(gl), before);
}

TEST(GlGeneratorSegment, failsWithoutACurrentContext) {
    const auto segment = GlGeneratorSegment::create(generatorOf(Kind::smpte_bars));
    EXPECT_EQ(segment->renderToTexture(1, 1, formatOf(8, 8), Time(0, Rational(24, 1))).get(), Status::general_failure);
}

}  // namespace
}  // namespace qrtplay
