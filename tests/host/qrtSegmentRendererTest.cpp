#include "generators/qrtSegmentRenderer.h"

#include <gtest/gtest.h>

#include "generators/qrtGeneratorSegments.h"
#include "harness/qrtFakeSegment.h"
#include "host/qrtGeneratedPicture.h"

namespace qrtplay {
namespace {

using Kind = Generator::Kind;

class SegmentRendererTest : public ::testing::Test {
protected:
    static constexpr int width = 46;
    static constexpr int height = 30;

    template <class... Segment>
    void setSegments(Segment const&... segments) {
        List<SharedPtr<ExternalSegment>> list;
        (list.append(segments), ...);
        renderer.setSegments(list);
    }
    Outcome render(std::string const& id, int64 frame) {
        return renderer.render(gl, id, frame, Rational(24, 1), texture.name(), width, height);
    }
    GeneratedPicture rendered(std::string const& id, int64 frame) {
        const Outcome outcome = render(id, frame);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        EXPECT_EQ(gl.glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        return {width, height, texture.pixels()};
    }
    static GeneratedPicture filledWith(FakeSegment::Pixel const& pixel) {
        GeneratedPicture picture{width, height, {}};
        for (int i = 0; i < width * height; ++i)
            picture.pixels.insert(picture.pixels.end(), pixel.begin(), pixel.end());
        return picture;
    }

    TestContext context;
    QOpenGLExtraFunctions& gl = context.gl();
    TestTexture texture{gl, width, height};
    SegmentRenderer renderer;
};

TEST_F(SegmentRendererTest, bringsTheSegmentOfTheIdIntoTheTexture) {
    Generator bars = generatorOf(Kind::smpte_bars);
    bars.id = "bars";
    Generator leader = generatorOf(Kind::counting_leader);
    leader.id = "leader";
    Generator title = titleOf("Hello", {1, 0, 0, 0.5});
    title.id = "title";
    setSegments(makeGeneratorSegment(bars), makeGeneratorSegment(leader), makeGeneratorSegment(title));
    for (const int64 frame : {0, 31}) {
        EXPECT_EQ(rendered("title", frame), fill(title, width, height, frame));
        EXPECT_EQ(rendered("leader", frame), draw(gl, leader, width, height, frame));
        EXPECT_EQ(rendered("bars", frame), draw(gl, bars, width, height, frame));
    }
}

TEST_F(SegmentRendererTest, takesPicturesFromSegmentsWithBuffersOfTheirOwn) {
    const auto drawing = FakeSegment::create("drawing", {50, false, true, true});
    const auto filling = FakeSegment::create("filling", {60, true, true, true});
    setSegments(drawing, filling);
    EXPECT_EQ(rendered("drawing", 7), filledWith(drawing->pixelOf(7)));
    EXPECT_EQ(rendered("filling", 8), filledWith(filling->pixelOf(8)));
    EXPECT_EQ(rendered("drawing", 9), filledWith(drawing->pixelOf(9)));
}

TEST_F(SegmentRendererTest, leavesNothingOfOpenGLBehindAndTheStateAsItWas) {
    const auto drawing = FakeSegment::create("drawing", {50, false, true, true});
    setSegments(makeGeneratorSegment(titleOf("Hello")), drawing);
    (void)rendered("drawing", 0);  // makes its own texture
    const std::vector<int> before = livingObjects(gl);
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    gl.glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    for (const char* id : {"generator", "drawing"}) {
        const GeneratedPicture picture = rendered(id, 3);
        EXPECT_EQ(picture, id == std::string("drawing") ? filledWith(drawing->pixelOf(3))
                                                        : fill(titleOf("Hello"), width, height));
        GLint value = 0;
        gl.glGetIntegerv(GL_UNPACK_SKIP_ROWS, &value);
        EXPECT_EQ(value, 3);
        gl.glGetIntegerv(GL_TEXTURE_BINDING_RECTANGLE, &value);
        EXPECT_EQ(value, 0);
        gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &value);
        EXPECT_EQ(value, 0);
    }
    EXPECT_EQ(livingObjects(gl), before);
}

TEST_F(SegmentRendererTest, namesTheSegmentThatThereIsNot) {
    EXPECT_EQ(render("bars", 0).message(), "generator 'bars': unknown");
    setSegments(makeGeneratorSegment(generatorOf(Kind::smpte_bars)), SharedPtr<ExternalSegment>());
    EXPECT_TRUE(render("generator", 0).success());
    EXPECT_EQ(render("", 0).message(), "generator '': unknown");
    renderer.setSegments({});
    EXPECT_EQ(render("generator", 0).message(), "generator 'generator': unknown");
}

TEST_F(SegmentRendererTest, namesTheSegmentThatFailsAndSaysWhy) {
    const auto drawing = FakeSegment::create("drawing", {50, false, true, true});
    const auto filling = FakeSegment::create("filling", {60, true, false, true});
    drawing->renderStatus = Status::out_of_range;
    filling->renderStatus = 4711;
    setSegments(drawing, filling);
    const std::string outOfRange = Status(Status::out_of_range).toString().c_str();
    EXPECT_EQ(render("drawing", 12).message(), "generator 'drawing': frame 12: " + outOfRange);
    EXPECT_EQ(render("filling", -3).message(), "generator 'filling': frame -3: unknown status 4711");
}

TEST_F(SegmentRendererTest, failsForATextureThatCannotBeDrawnInto) {
    const auto drawing = FakeSegment::create("drawing", {50, false, true, true});
    const auto filling = FakeSegment::create("filling", {60, true, false, true});
    setSegments(drawing, filling, makeGeneratorSegment(generatorOf(Kind::smpte_bars)));
    for (const char* id : {"drawing", "filling", "generator"}) {
        EXPECT_TRUE(renderer.render(gl, id, 0, Rational(24, 1), 4711, width, height).failed()) << id;
        EXPECT_TRUE(renderer.render(gl, id, 0, Rational(24, 1), texture.name(), 0, -1).failed()) << id;
        EXPECT_EQ(gl.glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

}  // namespace
}  // namespace qrtplay
