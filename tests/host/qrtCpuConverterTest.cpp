#include "graph/qrtCpuConverter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "host/qrtMadePicture.h"
#include "host/qrtReferencePicture.h"

namespace qrtplay {
namespace {

LayerPicture layerOf(std::shared_ptr<AVFrame> const& picture) {
    LayerPicture layer{picture, {}, "clip.mov"};
    layer.facts.width = picture->width;
    layer.facts.height = picture->height;
    layer.facts.pixelFormat = static_cast<AVPixelFormat>(picture->format);
    layer.facts.colour = completeColour({}, layer.facts.pixelFormat, picture->height);
    return layer;
}

std::optional<CpuForm> formOf(LayerPicture const& layer, int width, int height) {
    return cpuForm(layer, {0, 0, width, height}, false);
}

/// Bottom row first.
std::vector<unsigned char> converted(LayerPicture const& layer, int width, int height) {
    PixelPool pool;
    const auto form = formOf(layer, width, height);
    if (!form) return {};
    const auto pixels = pool.lend(width, height);
    CpuConverter converter;
    if (!converter.convert(*layer.picture, *form, *pixels)) return {};
    return std::vector<unsigned char>(pixels->bytes.get(), pixels->bytes.get() + pixels->sizeInBytes());
}

class ConvertedFormats : public ::testing::TestWithParam<AVPixelFormat> {};

TEST_P(ConvertedFormats, haveTheColoursOfTheirDefinitionAtEverySharpEdge) {
    const int depth = av_pix_fmt_desc_get(GetParam())->comp[0].depth;
    const auto picture = makePicture(GetParam(), 37, 21, [depth](int component, int x, int y) {
        const int seed = (x * 7919 + y * 104729 + component * 1299709) % 1009;
        return seed * ((1 << depth) - 1) / 1008;
    });
    for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
        for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL}) {
            LayerPicture layer = layerOf(picture);
            if ((av_pix_fmt_desc_get(GetParam())->flags & AV_PIX_FMT_FLAG_RGB) == 0) {
                layer.facts.colour.range = range;
                layer.facts.colour.matrix = matrix;
            }
            EXPECT_LE(largestDifference(converted(layer, 37, 21), referenceColours(*picture, layer.facts), 37, 21), 1)
                << range << " " << matrix;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(PixelFormats, ConvertedFormats,
                         ::testing::Values(AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P,
                                           AV_PIX_FMT_YUV440P, AV_PIX_FMT_NV12, AV_PIX_FMT_NV21, AV_PIX_FMT_P010LE,
                                           AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV422P12BE,
                                           AV_PIX_FMT_YUV444P16LE, AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY10LE,
                                           AV_PIX_FMT_GRAY16BE, AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24, AV_PIX_FMT_GBRP,
                                           AV_PIX_FMT_GBRP10LE, AV_PIX_FMT_RGB48BE, AV_PIX_FMT_0BGR),
                         [](const auto& caseInfo) { return std::string(av_get_pix_fmt_name(caseInfo.param)); });

TEST(CpuConverter, shrinksToTheMeanOfWhatAPixelCovers) {
    // Each pixel of the output covers 2 x 3 pixels whose mean is 30 + 20 x + 30 y, in full range.
    for (const AVPixelFormat format : {AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P10LE}) {
        const int scale = format == AV_PIX_FMT_YUV444P10LE ? 4 : 1;
        const auto picture = makePicture(format, 12, 12, [scale](int component, int x, int y) {
            if (component > 0) return 128 * scale;
            return (30 + x / 2 * 20 + y / 3 * 30 + (x % 2 == 0 ? -25 : 25)) * scale;
        });
        LayerPicture layer = layerOf(picture);
        layer.facts.colour.range = AVCOL_RANGE_JPEG;
        const std::vector<unsigned char> pixels = converted(layer, 6, 4);
        ASSERT_EQ(pixels.size(), 6u * 4 * 4);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 6; ++x)
                EXPECT_NEAR(pixels[static_cast<size_t>(((3 - y) * 6 + x) * 4)], 30 + x * 20 + y * 30, 1)
                    << x << " " << y;
        }
    }
}

struct ScaledChromaCase {
    AVChromaLocation location;
    double x;  // of the first sample, in pixels from the middle of the first pixel
    double y;
};

class ScaledChroma : public ::testing::TestWithParam<ScaledChromaCase> {};

TEST_P(ScaledChroma, staysWhereItLies) {
    // A ramp of chroma so steep that a quarter of a pixel makes more than a step.
    constexpr int side = 64;
    constexpr double slope = 25;
    for (const bool isDown : {false, true}) {
        const auto picture = makePicture(AV_PIX_FMT_YUV420P10LE, side, side, [isDown](int component, int x, int y) {
            return component == 2 ? 112 + 25 * (isDown ? y : x) : 512;
        });
        picture->chroma_location = GetParam().location;
        LayerPicture layer = layerOf(picture);
        layer.facts.colour.range = AVCOL_RANGE_JPEG;
        layer.facts.colour.matrix = AVCOL_SPC_BT709;
        for (const int scaledSide : {side / 2, side, side * 3 / 2, side * 2}) {
            const std::vector<unsigned char> pixels = converted(layer, scaledSide, scaledSide);
            ASSERT_EQ(pixels.size(), static_cast<size_t>(scaledSide) * static_cast<size_t>(scaledSide) * 4);
            for (int i = scaledSide / 3; i < scaledSide * 2 / 3; ++i) {
                const double pixel = (i + 0.5) * side / scaledSide - 0.5;
                const double sample = (pixel - (isDown ? GetParam().y : GetParam().x)) / 2;
                const double red = (512 + 1.5748 * (-400 + sample * slope)) / 1023 * 255;
                const int row = isDown ? scaledSide - 1 - i : scaledSide / 2;
                const int column = isDown ? scaledSide / 2 : i;
                EXPECT_NEAR(pixels[static_cast<size_t>(row * scaledSide + column) * 4], red, 0.75)
                    << scaledSide << " " << i << (isDown ? " down" : " across");
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Locations, ScaledChroma,
                         ::testing::Values(ScaledChromaCase{AVCHROMA_LOC_LEFT, 0, 0.5},
                                           ScaledChromaCase{AVCHROMA_LOC_CENTER, 0.5, 0.5},
                                           ScaledChromaCase{AVCHROMA_LOC_TOPLEFT, 0, 0}),
                         [](const auto& caseInfo) {
                             return std::string(av_chroma_location_name(caseInfo.param.location));
                         });

TEST(CpuForms, areForPicturesThatTheCpuConvertsAsWellAsAShader) {
    const auto picture = makePicture(AV_PIX_FMT_YUV420P, 16, 16, [](int, int, int) { return 128; });
    const LayerPicture plain = layerOf(picture);
    EXPECT_TRUE(formOf(plain, 16, 16) && formOf(plain, 8, 8) && formOf(plain, 32, 32) && formOf(plain, 16, 8));
    EXPECT_FALSE(formOf(plain, 32, 8)) << "wider and less high";
    EXPECT_FALSE(cpuForm(plain, {0, 0, 16, 16}, true)) << "managed colours";

    LayerPicture turned = plain;
    turned.facts.clockwiseQuarterTurns = 1;
    EXPECT_FALSE(formOf(turned, 16, 16));
    LayerPicture mirrored = plain;
    mirrored.facts.isFlippedHorizontally = true;
    EXPECT_FALSE(formOf(mirrored, 16, 16));
    LayerPicture wideGamut = plain;
    wideGamut.facts.colour.primaries = AVCOL_PRI_BT2020;
    EXPECT_FALSE(formOf(wideGamut, 16, 16));
    LayerPicture highRange = plain;
    highRange.facts.colour.transfer = AVCOL_TRC_SMPTE2084;
    EXPECT_FALSE(formOf(highRange, 16, 16));
    LayerPicture unusual = plain;
    unusual.facts.colour.matrix = AVCOL_SPC_YCGCO;
    EXPECT_FALSE(formOf(unusual, 16, 16));

    for (const AVPixelFormat format : {AV_PIX_FMT_RGBA, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUYV422}) {
        const auto other = makePicture(format, 16, 16, [](int, int, int) { return 128; });
        EXPECT_FALSE(formOf(layerOf(other), 16, 16)) << av_get_pix_fmt_name(format);
    }
    const auto colours = makePicture(AV_PIX_FMT_RGB24, 16, 16, [](int, int, int) { return 128; });
    EXPECT_TRUE(formOf(layerOf(colours), 16, 16));
    EXPECT_FALSE(formOf(layerOf(colours), 8, 8)) << "FFmpeg scales RGB by way of luma and chroma";
    picture->interlaced_frame = 1;
    EXPECT_FALSE(formOf(plain, 16, 16)) << "chroma by fields";
    const auto fields = makePicture(AV_PIX_FMT_YUV422P, 16, 16, [](int, int, int) { return 128; });
    fields->interlaced_frame = 1;
    EXPECT_TRUE(formOf(layerOf(fields), 16, 16));
    EXPECT_FALSE(formOf(layerOf(fields), 8, 8));
}

}  // namespace
}  // namespace qrtplay
