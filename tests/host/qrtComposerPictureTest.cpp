#include <gtest/gtest.h>

#include <cmath>

#include "host/qrtComposerFixture.h"

namespace qrtplay {
namespace {

/// No two pixels alike, opaque.
Image numbered(int width, int height) {
    return Image(width, height, [](int x, int y) {
        return Colour{x * 20 / 255.0, y * 30 / 255.0, (x * 7 + y) / 255.0, 1};
    });
}

Image overBlack(Image image) {
    for (Colour& colour : image.colours) {
        for (size_t channel = 0; channel < 3; ++channel)
            colour[channel] *= colour[3];
        colour[3] = 1;
    }
    return image;
}

class AlphaFormats : public ::testing::TestWithParam<AVPixelFormat> {};

TEST_P(AlphaFormats, areSeeThroughByTheirAlpha) {
    Composing drawing;
    AVPixFmtDescriptor const& descriptor = *av_pix_fmt_desc_get(GetParam());
    const bool isFloat = (descriptor.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    const double most = isFloat ? 1 : std::exp2(descriptor.comp[0].depth) - 1;
    const bool isRgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const int alpha = descriptor.nb_components - 1;
    // The first component is at its most, chroma at its middle, alpha runs from left to right.
    const auto picture = makePicture(GetParam(), 16, 4, [&](int component, int x, int) {
        if (component == alpha) return most * x / 15;
        if (component == 0) return most;
        return isRgb ? 0.0 : std::exp2(descriptor.comp[0].depth - 1);
    });
    picture->color_range = AVCOL_RANGE_JPEG;
    const Image drawn = drawing.compose(drawing.provider.add(picture), 16, 4);
    const Image expected(16, 4, [&](int x, int) {
        const double level = x / 15.0;
        return isRgb ? Colour{level, 0, 0, 1} : Colour{level, level, level, 1};
    });
    EXPECT_LE(largestDifference(drawn, expected), 1.25);
}

INSTANTIATE_TEST_SUITE_P(PixelFormats, AlphaFormats,
                         ::testing::Values(AV_PIX_FMT_RGBA, AV_PIX_FMT_BGRA, AV_PIX_FMT_ARGB, AV_PIX_FMT_GBRAP,
                                           AV_PIX_FMT_GBRAP10, AV_PIX_FMT_GBRAP12, AV_PIX_FMT_GBRAP16,
                                           AV_PIX_FMT_RGBA64, AV_PIX_FMT_RGBA64BE, AV_PIX_FMT_YA8, AV_PIX_FMT_YA16,
                                           AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA422P, AV_PIX_FMT_YUVA444P,
                                           AV_PIX_FMT_YUVA420P9, AV_PIX_FMT_YUVA422P10, AV_PIX_FMT_YUVA444P12,
                                           AV_PIX_FMT_YUVA444P16, AV_PIX_FMT_YUVA420P16BE, AV_PIX_FMT_GBRAPF32),
                         [](const auto& caseInfo) { return std::string(av_get_pix_fmt_name(caseInfo.param)); });

TEST(Pictures, ofDeepSamplesKeepTheirValuesInEitherByteOrder) {
    Composing drawing;
    for (const AVPixelFormat format : {AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_GRAY16BE}) {
        const auto picture = makePicture(format, 4, 2, [](int, int x, int y) { return (x * 60 + y * 5) * 257.0; });
        const Image drawn = drawing.compose(drawing.provider.add(picture), 4, 2);
        for (int x = 0; x < 4; ++x)
            EXPECT_NEAR(drawn.at(x, 1)[0] * 255, x * 60 + 5, rounding) << x;
    }
}

TEST(Pictures, ofFloatsAreLightThatIsCodedForTheDisplay) {
    Composing drawing;
    const Image light(6, 2, [](int x, int y) {
        const double level = std::array<double, 6>{-0.5, 0.0, 0.002, 0.18, 1.0, 40.0}[static_cast<size_t>(x)];
        return Colour{level, level * 0.5, y * 1.0, 1};
    });
    const auto srgb = [](double v) {
        v = std::clamp(v, 0.0, 1.0);
        return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
    };
    Image expected = light;
    for (Colour& colour : expected.colours)
        colour = {srgb(colour[0]), srgb(colour[1]), srgb(colour[2]), 1};
    for (const AVPixelFormat format : {AV_PIX_FMT_GBRPF32, AV_PIX_FMT_GBRAPF32})
        EXPECT_LE(largestDifference(drawing.compose(drawing.provider.add(makeFloats(light, format)), 6, 2), expected),
                  rounding);
    const Image grey = drawing.compose(drawing.provider.add(makeFloats(light, AV_PIX_FMT_GRAYF32)), 6, 2);
    for (int x = 0; x < 6; ++x)
        EXPECT_NEAR(grey.at(x, 0)[1], srgb(light.at(x, 0)[0]), rounding / 255) << x;
}

TEST(Pictures, ofFloatsThatAreNoNumbersAreBlack) {
    Composing drawing;
    const Image light(2, 1, [](int x, int) {
        return x == 0 ? Colour{NAN, NAN, NAN, 1} : Colour{INFINITY, 0, -INFINITY, 1};
    });
    const Image drawn = drawing.compose(drawing.provider.add(makeFloats(light)), 2, 1);
    EXPECT_EQ(drawn.at(0, 0), (Colour{0, 0, 0, 1}));
    EXPECT_EQ(drawn.at(1, 0), (Colour{1, 0, 0, 1}));
}

TEST(Pictures, ofOpenExrHaveColoursThatContainTheirAlpha) {
    Composing drawing;
    const auto picture = makeFloats(Image(2, 1, [](int x, int) {
        return x == 0 ? Colour{0.25, 0.5, 0, 0.5} : Colour{0.25, 0, 0, 0};  // half a colour, and a glow
    }));
    VideoFacts facts = plainFacts(*picture);
    facts.codecName = "exr";
    const Image drawn = drawing.compose(drawing.provider.add(picture, facts), 2, 1);
    const double half = 1.055 * std::pow(0.5, 1 / 2.4) - 0.055;  // the colour of 0.25 at alpha 0.5
    const double quarter = 1.055 * std::pow(0.25, 1 / 2.4) - 0.055;
    EXPECT_NEAR(drawn.at(0, 0)[0], half * 0.5, rounding / 255);
    EXPECT_NEAR(drawn.at(0, 0)[1], 0.5, rounding / 255);
    EXPECT_NEAR(drawn.at(1, 0)[0], quarter, rounding / 255);
}

struct OrientationCase {
    int turns;
    bool isFlipped;
};

class Orientations : public ::testing::TestWithParam<OrientationCase> {
protected:
    /// Mirrors, then turns.
    static Image upright(Image const& stored) {
        Image image = stored;
        if (GetParam().isFlipped)
            image =
                Image(stored.width, stored.height, [&](int x, int y) { return stored.at(stored.width - 1 - x, y); });
        for (int i = 0; i < GetParam().turns; ++i) {
            const Image before = image;
            image =
                Image(before.height, before.width, [&](int x, int y) { return before.at(y, before.height - 1 - x); });
        }
        return image;
    }
    static VideoFacts turnedFacts(AVFrame const& picture) {
        VideoFacts facts = plainFacts(picture);
        facts.clockwiseQuarterTurns = GetParam().turns;
        facts.isFlippedHorizontally = GetParam().isFlipped;
        return facts;
    }
};

TEST_P(Orientations, standUprightBitForBit) {
    Composing drawing;
    const auto picture = makeRgba(numbered(7, 5));
    const Image expected = upright(numbered(7, 5));
    const Image drawn =
        drawing.compose(drawing.provider.add(picture, turnedFacts(*picture)), expected.width, expected.height);
    EXPECT_EQ(drawn.colours, expected.colours);
}

TEST_P(Orientations, scaleAlongTheirOwnSides) {
    // Each pixel becomes 3 x 3 when it is shrunk from as many.
    Composing drawing;
    const Image small = numbered(6, 4);
    const auto picture = makeRgba(Image(18, 12, [&](int x, int y) { return small.at(x / 3, y / 3); }));
    const Image expected = upright(small);
    const Image drawn =
        drawing.compose(drawing.provider.add(picture, turnedFacts(*picture)), expected.width, expected.height);
    EXPECT_LE(largestDifference(drawn, expected), rounding);
}

TEST_P(Orientations, turnTheAspectOfTheirPixels) {
    // 8 x 8 pixels twice as wide as high stand as 16 x 8, or lie as 8 x 16.
    Composing drawing;
    const auto picture = makeRgba(Image(8, 8, Colour{1, 1, 1, 1}));
    VideoFacts facts = turnedFacts(*picture);
    facts.sampleAspect = Rational(2, 1);
    const Image drawn = drawing.compose(drawing.provider.add(picture, facts), 16, 16);
    const bool isOnItsSide = GetParam().turns % 2 == 1;
    EXPECT_EQ(drawn.at(0, 8)[0], isOnItsSide ? 0 : 1);
    EXPECT_EQ(drawn.at(8, 0)[0], isOnItsSide ? 1 : 0);
    EXPECT_EQ(drawn.at(8, 8)[0], 1);
}

INSTANTIATE_TEST_SUITE_P(All, Orientations,
                         ::testing::Values(OrientationCase{0, false}, OrientationCase{1, false},
                                           OrientationCase{2, false}, OrientationCase{3, false},
                                           OrientationCase{0, true}, OrientationCase{1, true}, OrientationCase{2, true},
                                           OrientationCase{3, true}),
                         [](const auto& caseInfo) {
                             return std::string(caseInfo.param.isFlipped ? "mirroredAnd" : "") + "turned" +
                                    std::to_string(caseInfo.param.turns * 90);
                         });

TEST(PictureScaling, cutsOffWhatExceedsAFilledOutput) {
    // 12 x 4 fills 4 x 4: the middle third shows.
    Composing drawing;
    drawing.composer.setScaling(Scaling::fill);
    const Image image = numbered(12, 4);
    const Image expected(4, 4, [&](int x, int y) { return image.at(x + 4, y); });
    EXPECT_EQ(drawing.compose(drawing.provider.add(image), 4, 4).colours, expected.colours);
}

TEST(PictureScaling, scalesWhatItCutsOff) {
    // 24 x 8 fills 4 x 4 at half its size: the middle third shows.
    Composing drawing;
    drawing.composer.setScaling(Scaling::fill);
    const Image small = numbered(12, 4);
    const Image large(24, 8, [&](int x, int y) { return small.at(x / 2, y / 2); });
    const Image expected(4, 4, [&](int x, int y) { return small.at(x + 4, y); });
    EXPECT_LE(largestDifference(drawing.compose(drawing.provider.add(large), 4, 4), expected), rounding);
}

TEST(PictureScaling, showsAPixelForAPixel) {
    Composing drawing;
    drawing.composer.setScaling(Scaling::one_to_one);
    const Image image = numbered(6, 6);
    VideoFacts facts = plainFacts(*makeRgba(image));
    facts.sampleAspect = Rational(2, 1);
    const FrameNode node = drawing.provider.add(makeRgba(image), facts);
    const Image cut(2, 4, [&](int x, int y) { return image.at(x + 2, y + 1); });
    EXPECT_EQ(drawing.compose(node, 2, 4).colours, cut.colours);
    Image framed = black(10, 8);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 6; ++x)
            framed.at(x + 2, y + 1) = image.at(x, y);
    }
    EXPECT_EQ(drawing.compose(node, 10, 8).colours, framed.colours);
}

/// The mean of what a pixel covers, parts of pixels by their share.
double meanOf(std::function<double(int)> const& line, int size, double low, double high) {
    double sum = 0;
    for (int i = 0; i < size; ++i)
        sum += line(i) * std::max(0.0, std::min(high, i + 1.0) - std::max(low, double(i)));
    return sum / (high - low);
}

TEST(PictureScaling, shrinksByTheMeanOfWhatAPixelCovers) {
    Composing drawing;
    const auto level = [](int i) { return ((i * 97) % 256) / 255.0; };
    const Image wide(50, 4, [&](int x, int) { return Colour{level(x), level(x), level(x), 1}; });
    const Image drawnWide = drawing.compose(drawing.provider.add(wide), 13, 1);
    for (int x = 0; x < 13; ++x)
        EXPECT_NEAR(drawnWide.at(x, 0)[0], meanOf(level, 50, x * 50 / 13.0, (x + 1) * 50 / 13.0), rounding / 255) << x;
    const Image high(4, 50, [&](int, int y) { return Colour{level(y), level(y), level(y), 1}; });
    const Image drawnHigh = drawing.compose(drawing.provider.add(high), 1, 13);
    for (int y = 0; y < 13; ++y)
        EXPECT_NEAR(drawnHigh.at(0, y)[0], meanOf(level, 50, y * 50 / 13.0, (y + 1) * 50 / 13.0), rounding / 255) << y;
}

/// The curve of Catmull and Rom through the four nearest, the last one going on beyond the end.
double curveAt(std::function<double(int)> const& line, int size, double position) {
    const int i = static_cast<int>(std::floor(position));
    const double t = position - i;
    const auto at = [&](int k) { return line(std::clamp(k, 0, size - 1)); };
    const double weights[] = {((2 - t) * t - 1) * t / 2, ((3 * t - 5) * t * t + 2) / 2, ((4 - 3 * t) * t + 1) * t / 2,
                              (t - 1) * t * t / 2};
    double sum = 0;
    for (int k = 0; k < 4; ++k)
        sum += weights[k] * at(i - 1 + k);
    return std::clamp(sum, 0.0, 1.0);
}

TEST(PictureScaling, enlargesAlongACubicCurve) {
    Composing drawing;
    const auto level = [](int i) { return 0.2 + ((i * 97) % 151) / 255.0; };
    const Image image(8, 8, [&](int x, int y) { return Colour{level(x), level(y), level(x), 1}; });
    const Image drawn = drawing.compose(drawing.provider.add(image), 27, 27);
    for (int i = 0; i < 27; ++i) {
        const double expected = curveAt(level, 8, (i + 0.5) * 8 / 27 - 0.5);
        EXPECT_NEAR(drawn.at(i, 13)[0], expected, rounding / 255) << i;
        EXPECT_NEAR(drawn.at(13, i)[1], expected, rounding / 255) << i;
    }
}

TEST(PictureScaling, letsNoInvisibleColourShowAtEdges) {
    // White that nobody sees beside opaque red: no pixel may turn out lighter than red in green or blue.
    Composing drawing;
    const Image image(8, 8, [](int x, int) { return x < 4 ? Colour{1, 0, 0, 1} : Colour{1, 1, 1, 0}; });
    for (const int side : {3, 5, 21}) {
        const Image drawn = drawing.compose(drawing.provider.add(image), side, side);
        for (Colour const& colour : drawn.colours) {
            EXPECT_EQ(colour[1], 0);
            EXPECT_EQ(colour[2], 0);
        }
    }
}

TEST(PictureScaling, takesPicturesOfEveryShape) {
    Composing drawing;
    const Image line(16384, 1, Colour{1, 1, 1, 1});
    for (const Scaling scaling : {Scaling::fit, Scaling::fill, Scaling::one_to_one}) {
        drawing.composer.setScaling(scaling);
        EXPECT_EQ(drawing.compose(drawing.provider.add(line), 9, 9).at(4, 4), (Colour{1, 1, 1, 1}));
    }
}

/// Light in the first field, dark in the second.
std::shared_ptr<AVFrame> makeFields(bool topFirst, std::function<double(int component, int x, int y)> const& code) {
    auto picture = makePicture(AV_PIX_FMT_YUV420P, 16, 16, code);
    picture->interlaced_frame = 1;
    picture->top_field_first = topFirst ? 1 : 0;
    picture->color_range = AVCOL_RANGE_JPEG;
    return picture;
}

TEST(InterlacedPictures, showTheLinesOfBothFieldsAsTheyAre) {
    Composing drawing;
    const auto picture = makeFields(true, [](int c, int, int y) { return c > 0 ? 128.0 : y % 2 == 0 ? 200.0 : 40.0; });
    const Image drawn = drawing.compose(drawing.provider.add(picture), 16, 16);
    for (int y = 0; y < 16; ++y)
        EXPECT_NEAR(drawn.at(3, y)[1] * 255, y % 2 == 0 ? 200 : 40, 1.25) << y;
}

TEST(InterlacedPictures, showTheirFirstFieldWhenTheyAreScaled) {
    Composing drawing;
    for (const bool topFirst : {true, false}) {
        const auto picture = makeFields(topFirst, [](int c, int, int y) {
            return c > 0 ? 128.0 : y % 2 == 0 ? 200.0 : 40.0;
        });
        const FrameNode node = drawing.provider.add(picture);
        for (const int side : {5, 8, 12, 31}) {
            for (Colour const& colour : drawing.compose(node, side, side).colours)
                EXPECT_NEAR(colour[1] * 255, topFirst ? 200 : 40, 1.25) << side;
        }
    }
}

TEST(InterlacedPictures, doNotMoveWhenTheyAreScaled) {
    // A ramp stays where it is whichever field it is taken from.
    Composing drawing;
    for (const bool topFirst : {true, false}) {
        const auto picture = makeFields(topFirst, [](int c, int, int y) { return c > 0 ? 128.0 : 40 + y * 10.0; });
        const Image drawn = drawing.compose(drawing.provider.add(picture), 32, 32);
        for (int y = 8; y < 24; ++y)
            EXPECT_NEAR(drawn.at(5, y)[1] * 255, 40 + ((y + 0.5) / 2 - 0.5) * 10, 1.25) << y << topFirst;
    }
}

TEST(InterlacedPictures, takeTheirChromaFromTheirOwnField) {
    // Blue in the first field, none in the second: no line may take over from the other.
    Composing drawing;
    const auto picture = makeFields(true, [](int c, int, int y) { return c == 1 && y % 2 == 0 ? 200.0 : 128.0; });
    const Image drawn = drawing.compose(drawing.provider.add(picture), 16, 16);
    for (int y = 0; y < 16; ++y) {
        const double blue = 128 + (y % 2 == 0 ? 72 * 1.772 : 0);  // ITU-R BT.601
        EXPECT_NEAR(drawn.at(7, y)[2] * 255, std::min(blue, 255.0), 3) << y;
    }
}

TEST(InterlacedPictures, placeTheirChromaAQuarterOfALineOff) {
    // A ramp of Cr down each field; a line of chroma lies a quarter of a line of its field below the first of the two
    // lines that share it in the first field, and three quarters in the second.
    Composing drawing;
    const auto chroma = [](int row) { return 60.0 + 16 * row; };
    const auto picture = makeFields(true, [&](int c, int, int y) { return c == 2 ? chroma(y) : 128.0; });
    const Image drawn = drawing.compose(drawing.provider.add(picture), 16, 16);
    for (int y = 4; y < 12; ++y) {
        const int field = y % 2;
        const double row = (y / 2 - (field == 0 ? 0.25 : 0.75)) / 2;  // of the field's chroma
        const double expected = 128 + 1.402 * (chroma(0) + 16 * (2 * row + field) - 128);
        EXPECT_NEAR(drawn.at(7, y)[0] * 255, expected, 2) << y;
    }
}

TEST(Pictures, ofAnotherShapeLeaveTheBarsBlack) {
    Composing drawing;
    const Image image = numbered(6, 4);
    Image expected = black(6, 10);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            expected.at(x, y + 3) = image.at(x, y);
    }
    EXPECT_EQ(drawing.compose(drawing.provider.add(image), 6, 10).colours, expected.colours);
}

TEST(Pictures, thatAreUpsideDownInMemoryAreDrawnTheRightWay) {
    Composing drawing;
    const Image image = numbered(6, 5);
    const auto picture = makeRgba(image);
    const Image flipped(6, 5, [&](int x, int y) { return image.at(x, 4 - y); });
    picture->data[0] += std::ptrdiff_t{4} * picture->linesize[0];
    picture->linesize[0] = -picture->linesize[0];
    EXPECT_EQ(drawing.compose(drawing.provider.add(picture), 6, 5).colours, overBlack(flipped).colours);
}

}  // namespace
}  // namespace qrtplay
