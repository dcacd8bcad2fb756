#include "graph/qrtDisplayConversion.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/qrtComposerFixture.h"

namespace qrtplay {
namespace {

using Rgb = std::array<double, 3>;

// One rounding to 8 bits and the arithmetic of 32-bit floats.
constexpr double tolerance = 0.6 / 255;

// The published matrices, as the standards print them.
Rgb times(std::array<double, 9> const& m, Rgb const& v) {
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}
constexpr std::array<double, 9> bt2020ToBt709{1.6605,  -0.5876, -0.0728, -0.1246, 1.1329,
                                              -0.0083, -0.0182, -0.1006, 1.1187};  // ITU-R BT.2407, 2.2
constexpr std::array<double, 9> xyzToBt709{3.2406, -1.5372, -0.4986, -0.9689, 1.8758,
                                           0.0415, 0.0557,  -0.2040, 1.0570};  // IEC 61966-2-1, 5.3

double pqLight(double v) {  // SMPTE ST 2084, reference white at 203 cd/m2
    const double p = std::pow(v, 1 / 78.84375);
    return 10000 / 203.0 * std::pow(std::max(p - 0.8359375, 0.0) / (18.8515625 - 18.6875 * p), 1 / 0.1593017578125);
}
Rgb hlgLight(Rgb const& v) {  // ITU-R BT.2100 for 1000 cd/m2
    const auto scene = [](double x) {
        return x <= 0.5 ? x * x / 3 : (std::exp((x - 0.55991073) / 0.17883277) + 0.28466892) / 12;
    };
    const Rgb light{scene(v[0]), scene(v[1]), scene(v[2])};
    const double luminance = 0.2627 * light[0] + 0.6780 * light[1] + 0.0593 * light[2];
    const double gain = 1000 / 203.0 * std::pow(luminance, 0.2);
    return {gain * light[0], gain * light[1], gain * light[2]};
}
double toVideo(double light) {
    return std::pow(std::clamp(light, 0.0, 1.0), 1 / 2.4);
}
double srgbLight(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double toSrgb(double light) {
    light = std::clamp(light, 0.0, 1.0);
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

template <class Function>
Rgb each(Function function, Rgb const& v) {
    return {function(v[0]), function(v[1]), function(v[2])};
}

/// Greys, saturated colours and some in between, as 16-bit code values.
std::vector<Rgb> samples() {
    std::vector<Rgb> colours;
    for (int i = 0; i < 64; ++i)
        colours.push_back({(i % 4) / 3.0, (i / 4 % 4) / 3.0, (i / 16) / 3.0});
    for (int i = 0; i <= 32; ++i)
        colours.push_back({i / 32.0, i / 32.0, i / 32.0});
    return colours;
}

/// Draws the samples as a clip of these colours.
Image drawn(Composing& drawing, ColourFacts const& colour) {
    const std::vector<Rgb> colours = samples();
    const auto picture = makePicture(AV_PIX_FMT_GBRP16, static_cast<int>(colours.size()), 1, [&](int c, int x, int) {
        return std::round(colours[static_cast<size_t>(x)][static_cast<size_t>(c)] * 65535);
    });
    picture->color_primaries = colour.primaries;
    picture->color_trc = colour.transfer;
    return drawing.compose(drawing.provider.add(picture), picture->width, 1);
}

void expectColours(ColourFacts const& colour, std::function<Rgb(Rgb const&)> const& definition) {
    Composing drawing;
    const Image image = drawn(drawing, colour);
    const std::vector<Rgb> colours = samples();
    for (size_t i = 0; i < colours.size(); ++i) {
        const Rgb expected = definition(colours[i]);
        for (size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(image.colours[i][channel], std::clamp(expected[channel], 0.0, 1.0), 3 * tolerance)
                << "sample " << i << " channel " << channel;
    }
}

ColourFacts facts(AVColorPrimaries primaries, AVColorTransferCharacteristic transfer) {
    return {AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, primaries, transfer};
}

TEST(DisplayConversion, leavesStandardDynamicRangeOfTheDisplaysPrimariesAlone) {
    for (const AVColorTransferCharacteristic transfer :
         {AVCOL_TRC_BT709, AVCOL_TRC_SMPTE170M, AVCOL_TRC_BT2020_10, AVCOL_TRC_BT2020_12, AVCOL_TRC_IEC61966_2_1,
          AVCOL_TRC_UNSPECIFIED}) {
        DisplayConversion conversion;
        ASSERT_TRUE(displayConversion(facts(AVCOL_PRI_BT709, transfer), conversion).success());
        EXPECT_TRUE(conversion.isUnchanged) << transfer;
        for (const AVColorPrimaries primaries : {AVCOL_PRI_SMPTE170M, AVCOL_PRI_BT470BG, AVCOL_PRI_BT2020}) {
            ASSERT_TRUE(displayConversion(facts(primaries, transfer), conversion).success());
            EXPECT_FALSE(conversion.isUnchanged) << transfer;
        }
    }
}

TEST(DisplayConversion, changesNoColoursForPrimariesThatNobodyHasStated) {
    for (const int height : {240, 1080}) {
        const auto picture = makePicture(AV_PIX_FMT_YUV420P, 16, height, [](int, int, int) { return 90; });
        const ColourFacts colour = coloursOf(*picture, *describeLayout(AV_PIX_FMT_YUV420P), plainFacts(*picture));
        EXPECT_EQ(colour.primaries, AVCOL_PRI_BT709) << height;
        picture->color_primaries = AVCOL_PRI_SMPTE170M;
        EXPECT_EQ(coloursOf(*picture, *describeLayout(AV_PIX_FMT_YUV420P), plainFacts(*picture)).primaries,
                  AVCOL_PRI_SMPTE170M);
    }
}

TEST(DisplayConversion, showsPqByItsDefinition) {
    expectColours(facts(AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084),
                  [](Rgb const& v) { return each(toVideo, times(bt2020ToBt709, each(pqLight, v))); });
}

TEST(DisplayConversion, putsReferenceWhiteOfPqAndHlgAtWhite) {
    // ITU-R BT.2408, table 1: 203 cd/m2 is 58 % of PQ and 75 % of HLG.
    EXPECT_NEAR(pqLight(0.5806), 1, 0.005);
    EXPECT_NEAR(hlgLight({0.75, 0.75, 0.75})[1], 1, 0.005);
}

TEST(DisplayConversion, showsHlgByItsDefinition) {
    expectColours(facts(AVCOL_PRI_BT2020, AVCOL_TRC_ARIB_STD_B67),
                  [](Rgb const& v) { return each(toVideo, times(bt2020ToBt709, hlgLight(v))); });
}

TEST(DisplayConversion, bringsWidePrimariesToTheDisplays) {
    expectColours(facts(AVCOL_PRI_BT2020, AVCOL_TRC_BT2020_10), [](Rgb const& v) {
        return each(toVideo, times(bt2020ToBt709, each([](double x) { return std::pow(x, 2.4); }, v)));
    });
}

TEST(DisplayConversion, keepsTheCurveOfSrgbForOtherPrimaries) {
    expectColours(facts(AVCOL_PRI_BT2020, AVCOL_TRC_IEC61966_2_1),
                  [](Rgb const& v) { return each(toSrgb, times(bt2020ToBt709, each(srgbLight, v))); });
}

TEST(DisplayConversion, knowsCameraGammasAndLogarithms) {
    const auto gamma = [](double exponent) {
        return [exponent](Rgb const& v) {
            return each([exponent](double x) { return toVideo(std::pow(x, exponent)); }, v);
        };
    };
    expectColours(facts(AVCOL_PRI_BT709, AVCOL_TRC_GAMMA22), gamma(2.2));
    expectColours(facts(AVCOL_PRI_BT709, AVCOL_TRC_GAMMA28), gamma(2.8));
    expectColours(facts(AVCOL_PRI_BT709, AVCOL_TRC_LINEAR), [](Rgb const& v) { return each(toSrgb, v); });
    expectColours(facts(AVCOL_PRI_BT709, AVCOL_TRC_LOG), [](Rgb const& v) {
        return each([](double x) { return x > 0 ? toVideo(std::pow(10.0, 2 * (x - 1))) : 0.0; }, v);
    });
}

TEST(DisplayConversion, showsTheXyzOfCinemas) {
    Composing drawing;
    const std::vector<Rgb> colours = samples();
    const auto picture = makePicture(AV_PIX_FMT_XYZ12, static_cast<int>(colours.size()), 1, [&](int c, int x, int) {
        return std::round(colours[static_cast<size_t>(x)][static_cast<size_t>(c)] * 4095);
    });
    const Image image = drawing.compose(drawing.provider.add(picture), picture->width, 1);
    for (size_t i = 0; i < colours.size(); ++i) {
        const Rgb xyz =
            each([](double x) { return 52.37 / 48 * std::pow(std::round(x * 4095) / 4095, 2.6); }, colours[i]);
        const Rgb expected = each(toVideo, times(xyzToBt709, xyz));
        for (size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(image.colours[i][channel], expected[channel], 3 * tolerance) << i;
    }
}

TEST(DisplayConversion, keepsWhiteWhite) {
    for (const AVColorPrimaries primaries :
         {AVCOL_PRI_BT709, AVCOL_PRI_BT470M, AVCOL_PRI_BT470BG, AVCOL_PRI_SMPTE170M, AVCOL_PRI_SMPTE240M,
          AVCOL_PRI_FILM, AVCOL_PRI_BT2020, AVCOL_PRI_SMPTE431, AVCOL_PRI_SMPTE432, AVCOL_PRI_EBU3213}) {
        const auto matrix = toBt709(primaries);
        ASSERT_TRUE(matrix.has_value());
        for (const double light : times(*matrix, {1, 1, 1}))
            EXPECT_NEAR(light, 1, 1e-9) << primaries;
        const auto luminance = luminanceWeights(primaries);
        EXPECT_NEAR((*luminance)[0] + (*luminance)[1] + (*luminance)[2], 1, 1e-9) << primaries;
    }
}

TEST(DisplayConversion, derivesThePublishedMatrices) {
    const auto expectMatrix = [](AVColorPrimaries primaries, std::array<double, 9> const& published, double precision) {
        const auto matrix = toBt709(primaries);
        ASSERT_TRUE(matrix.has_value());
        for (size_t i = 0; i < 9; ++i)
            EXPECT_NEAR((*matrix)[i], published[i], precision) << primaries << " " << i;
    };
    expectMatrix(AVCOL_PRI_BT2020, bt2020ToBt709, 1e-4);
    expectMatrix(AVCOL_PRI_SMPTE428, xyzToBt709, 1e-3);
    expectMatrix(AVCOL_PRI_BT709, {1, 0, 0, 0, 1, 0, 0, 0, 1}, 1e-9);
    const auto weights = luminanceWeights(AVCOL_PRI_BT2020);
    EXPECT_NEAR((*weights)[0], 0.2627, 1e-4);
    EXPECT_NEAR((*weights)[1], 0.6780, 1e-4);
    EXPECT_NEAR((*weights)[2], 0.0593, 1e-4);
}

TEST(DisplayConversion, namesWhatItDoesNotKnow) {
    DisplayConversion conversion;
    EXPECT_EQ(displayConversion(facts(AVCOL_PRI_BT709, AVCOL_TRC_NB), conversion).message(),
              "its transfer curve is not supported (unknown)");
    EXPECT_EQ(displayConversion(facts(AVCOL_PRI_NB, AVCOL_TRC_BT709), conversion).message(),
              "its primaries are not supported (unknown)");
}

}  // namespace
}  // namespace qrtplay
