#include "encode/qrtOutputFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

OutputFormat chosen(std::string const& path, FormatWishes const& wishes = {}) {
    OutputFormat format;
    const Outcome outcome = chooseOutputFormat(path, wishes, format);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return format;
}

std::string refusal(std::string const& path, FormatWishes const& wishes = {}) {
    OutputFormat format;
    return chooseOutputFormat(path, wishes, format).message();
}

TEST(OutputFormat, isToldByTheEnding) {
    EXPECT_EQ(chosen("out/a.####.png").kind, FileKind::png);
    EXPECT_EQ(chosen("a.TIFF").kind, FileKind::tiff);
    EXPECT_EQ(chosen("a.tif").kind, FileKind::tiff);
    EXPECT_EQ(chosen("a.jpeg").kind, FileKind::jpeg);
    EXPECT_EQ(chosen("b.mkv/a.exr").kind, FileKind::exr);
    for (const char* const path : {"", "a", "a.gif", ".png", "out/.mov", "png"})
        EXPECT_THAT(refusal(path),
                    HasSubstr("output '" + std::string(path) + "': the name has to end with one of .png"));
}

TEST(OutputFormat, choosesTheCodecThatSuitsTheContainer) {
    EXPECT_EQ(chosen("a.mp4").codec, VideoCodec::h264);
    EXPECT_EQ(chosen("a.mov").codec, VideoCodec::prores);
    EXPECT_EQ(chosen("a.mkv").codec, VideoCodec::ffv1);
    EXPECT_EQ(chosen("a.mov", {VideoCodec::h264, {}, {}}).codec, VideoCodec::h264);
    EXPECT_THAT(refusal("a.mp4", {VideoCodec::prores, {}, {}}), HasSubstr("the codec 'prores' cannot be had"));
    EXPECT_THAT(refusal("a.png", {VideoCodec::h264, {}, {}}), HasSubstr("for movies only"));
}

TEST(OutputFormat, choosesTheDepthThatSuitsTheFile) {
    EXPECT_EQ(chosen("a.png").depth, PixelFormat::rgba8);
    EXPECT_EQ(chosen("a.exr").depth, PixelFormat::rgba16f);
    EXPECT_EQ(chosen("a.mov").depth, PixelFormat::rgba16);
    EXPECT_EQ(chosen("a.tif", {{}, PixelFormat::rgba16, {}}).depth, PixelFormat::rgba16);
    EXPECT_THAT(refusal("a.exr", {{}, PixelFormat::rgba8, {}}), HasSubstr("the depth '8' cannot be had"));
    EXPECT_THAT(refusal("a.jpg", {{}, PixelFormat::rgba16, {}}), HasSubstr("possible here: 8"));
    EXPECT_THAT(refusal("a.png", {{}, PixelFormat::rgba32f, {}}), HasSubstr("possible here: 8, 16"));
}

TEST(OutputFormat, hasAQualityWhereThereIsOneToChoose) {
    EXPECT_EQ(chosen("a.jpg", {{}, {}, 75}).quality, 75);
    EXPECT_EQ(chosen("a.jpg").quality, 90);
    EXPECT_GT(chosen("a.mp4").quality, 0);
    EXPECT_EQ(chosen("a.png").quality, 0);
    EXPECT_THAT(refusal("a.png", {{}, {}, 75}), HasSubstr("a quality is for JPEG files and H.264 only"));
    EXPECT_THAT(refusal("a.mov", {{}, {}, 75}), HasSubstr("a quality"));
}

TEST(OutputFormat, knowsNamesBothWays) {
    for (const char* const name : {"8", "16", "16f", "32f"})
        EXPECT_EQ(nameOf(depthOf(name).value()), name);
    for (const char* const name : {"h264", "prores", "ffv1"})
        EXPECT_EQ(nameOf(videoCodecOf(name).value()), name);
    EXPECT_FALSE(depthOf("10").has_value());
    EXPECT_FALSE(videoCodecOf("av1").has_value());
}

}  // namespace
}  // namespace qrtplay
