#include "graph/qrtColourTransform.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

/// What a code triple becomes; `codes` are samples as they lie in memory, divided by the largest number of the channel.
std::array<double, 3> applied(ColourTransform const& transform, std::array<double, 3> const& samples) {
    std::array<double, 3> rgb = transform.offset;
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column)
            rgb[row] += transform.matrix[row * 3 + column] * samples[column];
    }
    return rgb;
}

ColourTransform transformOf(AVColorSpace matrix, AVColorRange range, AVPixelFormat format) {
    const auto transform = colourTransform({matrix, range, AVCOL_PRI_BT709}, *describeLayout(format));
    EXPECT_TRUE(transform.has_value());
    return transform.value_or(ColourTransform());
}

void expectColour(std::array<double, 3> const& rgb, double red, double green, double blue) {
    EXPECT_NEAR(rgb[0], red, 0.004);
    EXPECT_NEAR(rgb[1], green, 0.004);
    EXPECT_NEAR(rgb[2], blue, 0.004);
}

TEST(ColourTransform, putsBlackAndWhiteOfLimitedRangeAtTheEnds) {
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT470BG, AVCOL_SPC_BT2020_NCL,
                                      AVCOL_SPC_SMPTE240M, AVCOL_SPC_FCC, AVCOL_SPC_YCGCO}) {
        const ColourTransform transform = transformOf(matrix, AVCOL_RANGE_MPEG, AV_PIX_FMT_YUV420P);
        expectColour(applied(transform, {16 / 255.0, 128 / 255.0, 128 / 255.0}), 0, 0, 0);
        expectColour(applied(transform, {235 / 255.0, 128 / 255.0, 128 / 255.0}), 1, 1, 1);
    }
}

TEST(ColourTransform, turnsThePrimariesOfColourBarsBack) {
    // 100 % red and blue as ITU-R BT.709 and BT.601 code them in 8 bits.
    const ColourTransform hd = transformOf(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AV_PIX_FMT_YUV444P);
    expectColour(applied(hd, {63 / 255.0, 102 / 255.0, 240 / 255.0}), 1, 0, 0);
    expectColour(applied(hd, {32 / 255.0, 240 / 255.0, 118 / 255.0}), 0, 0, 1);
    const ColourTransform sd = transformOf(AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, AV_PIX_FMT_YUV444P);
    expectColour(applied(sd, {81 / 255.0, 90 / 255.0, 240 / 255.0}), 1, 0, 0);
    expectColour(applied(sd, {41 / 255.0, 240 / 255.0, 110 / 255.0}), 0, 0, 1);
}

TEST(ColourTransform, stretchesNothingInFullRange) {
    const ColourTransform transform = transformOf(AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG, AV_PIX_FMT_YUVJ420P);
    expectColour(applied(transform, {0, 128 / 255.0, 128 / 255.0}), 0, 0, 0);
    expectColour(applied(transform, {1, 128 / 255.0, 128 / 255.0}), 1, 1, 1);
    expectColour(applied(transform, {100 / 255.0, 128 / 255.0, 128 / 255.0}), 100 / 255.0, 100 / 255.0, 100 / 255.0);
}

TEST(ColourTransform, scalesDeepSamplesFromEitherEndOfTheirChannel) {
    const ColourTransform low = transformOf(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AV_PIX_FMT_YUV420P10LE);
    expectColour(applied(low, {940 / 65535.0, 512 / 65535.0, 512 / 65535.0}), 1, 1, 1);
    expectColour(applied(low, {64 / 65535.0, 512 / 65535.0, 512 / 65535.0}), 0, 0, 0);
    const ColourTransform high = transformOf(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AV_PIX_FMT_P010LE);
    expectColour(applied(high, {(940 << 6) / 65535.0, (512 << 6) / 65535.0, (512 << 6) / 65535.0}), 1, 1, 1);
}

TEST(ColourTransform, leavesRedGreenAndBlueAlone) {
    expectColour(applied(transformOf(AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, AV_PIX_FMT_RGB24), {0.25, 0.5, 1}), 0.25, 0.5, 1);
    const double unit = 1023 / 65535.0;
    expectColour(applied(transformOf(AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, AV_PIX_FMT_GBRP10LE), {0, unit / 2, unit}), 0,
                 0.5, 1);
}

TEST(ColourTransform, refusesAMatrixThatIsNotLinear) {
    const auto layout = describeLayout(AV_PIX_FMT_YUV420P10LE);
    for (const AVColorSpace matrix : {AVCOL_SPC_BT2020_CL, AVCOL_SPC_ICTCP, AVCOL_SPC_CHROMA_DERIVED_CL})
        EXPECT_FALSE(colourTransform({matrix, AVCOL_RANGE_MPEG, AVCOL_PRI_BT2020}, *layout).has_value());
}

TEST(PixelLayout, findsAFormatThatCanBeUploadedForEveryFormatThatCanBeConverted) {
    for (const AVPixFmtDescriptor* format = av_pix_fmt_desc_next(nullptr); format;
         format = av_pix_fmt_desc_next(format)) {
        const AVPixelFormat id = av_pix_fmt_desc_get_id(format);
        if (describeLayout(id) || !sws_isSupportedInput(id)) continue;
        const AVPixelFormat target = uploadableFormat(id);
        EXPECT_TRUE(describeLayout(target).has_value()) << format->name;
        EXPECT_TRUE(sws_isSupportedOutput(target)) << format->name;
    }
}

}  // namespace
}  // namespace qrtplay
