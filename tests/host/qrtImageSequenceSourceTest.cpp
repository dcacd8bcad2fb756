#include "media/qrtImageSequenceSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/qrtLimits.h"
#include "host/qrtTestClips.h"
#include "media/qrtImageFile.h"

extern "C" {
#include <libavutil/crc.h>
}

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

ImageSequenceName plates() {
    return {clipPath("stills"), "plate.", ".png", 4, 101, 105, 1, Rational(25, 1)};
}

/// Decodes one frame; the picture is null after a failure, and `why` says what that is.
FramePtr decode(PictureSource& source, int64 frame, std::string& why) {
    FramePtr picture;
    FramePtr kept;
    const auto keep = [&](int64 number, FramePtr const& each) {
        EXPECT_EQ(number, frame);
        kept = each;
    };
    const auto result = source.frame(
        frame, keep, [](int64) { return true; }, picture, why);
    EXPECT_EQ(result == PictureSource::Result::picture, picture != nullptr);
    EXPECT_EQ(kept, picture);
    return picture;
}

std::unique_ptr<PictureSource> openSequence(ImageSequenceName const& name) {
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = ImageSequenceSource::open(name, source);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return source;
}

std::unique_ptr<PictureSource> openStill(std::string const& name) {
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = ImageSequenceSource::openFile(clipPath("stills/" + name), source);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return source;
}

TEST(ImageSequenceSource, takesItsFactsFromTheNameAndTheFirstFile) {
    const auto source = openSequence(plates());
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->facts().frameCount, 5);
    EXPECT_EQ(source->facts().frameRate, Rational(25, 1));
    EXPECT_EQ(source->facts().width, 64);
    EXPECT_EQ(source->facts().height, 48);
    EXPECT_EQ(source->facts().pixelFormat, AV_PIX_FMT_RGB24);
    EXPECT_EQ(source->facts().codecName, "png");
    EXPECT_EQ(source->path(), clipPath("stills") + "/plate.####.png");
}

TEST(ImageSequenceSource, showsEachFileAsTheFrameOfItsNumber) {
    const auto source = openSequence(plates());
    const ReferenceFrames reference("stills/plate", AV_PIX_FMT_RGB24, 64, 48);
    for (const int64 frame : {2, 0, 1}) {
        std::string why;
        const FramePtr picture = decode(*source, frame, why);
        ASSERT_NE(picture, nullptr) << why;
        EXPECT_TRUE(bytesOf(*picture) == reference.frame(frame)) << frame;
    }
}

TEST(ImageSequenceSource, countsInTheStepsOfItsNumbers) {
    ImageSequenceName everySecond = plates();
    everySecond.step = 2;
    const auto source = openSequence(everySecond);
    ASSERT_EQ(source->facts().frameCount, 3);
    const ReferenceFrames reference("stills/plate", AV_PIX_FMT_RGB24, 64, 48);
    std::string why;
    const FramePtr picture = decode(*source, 1, why);
    ASSERT_NE(picture, nullptr) << why;
    EXPECT_TRUE(bytesOf(*picture) == reference.frame(2));
}

TEST(ImageSequenceSource, marksTheFrameOfAFileThatIsMissing) {
    const auto source = openSequence(plates());
    std::string why;
    const FramePtr hole = decode(*source, 3, why);
    ASSERT_NE(hole, nullptr) << why;
    EXPECT_EQ(hole->width, 64);
    EXPECT_EQ(hole->height, 48);
    ASSERT_EQ(hole->format, AV_PIX_FMT_RGBA);
    EXPECT_EQ(hole->data[0][0], 255);
    EXPECT_EQ(hole->data[0][1], 0);
    EXPECT_EQ(hole->data[0][2], 0);
}

TEST(ImageSequenceSource, failsWhereAFileCannotBeDecodedAndNamesIt) {
    const auto source = openSequence(plates());
    std::string why;
    EXPECT_EQ(decode(*source, 4, why), nullptr);
    EXPECT_THAT(why, HasSubstr("frame 4"));
    EXPECT_THAT(why, HasSubstr("plate.0105.png"));
}

TEST(ImageSequenceSource, beginsWithTheFirstFileThatExists) {
    ImageSequenceName early = plates();
    early.firstNumber = 90;
    const auto source = openSequence(early);
    EXPECT_EQ(source->facts().frameCount, 16);
    EXPECT_EQ(source->facts().width, 64);
    std::string why;
    EXPECT_NE(decode(*source, 0, why), nullptr) << "a hole before the first file";
}

TEST(ImageSequenceSource, refusesASequenceOfWhichNothingIsThere) {
    ImageSequenceName none = plates();
    none.prefix = "none.";
    std::unique_ptr<PictureSource> source;
    EXPECT_THAT(ImageSequenceSource::open(none, source).message(),
                HasSubstr("none.####.png: none of its files is there"));
    none.lastNumber = INT64_MAX - 1;
    none.firstNumber = 1;
    EXPECT_TRUE(ImageSequenceSource::open(none, source).failed());
    none.step = 0;
    EXPECT_TRUE(ImageSequenceSource::open(none, source).failed());
    EXPECT_EQ(source, nullptr);
}

TEST(ImageSequenceSource, givesUpBeforeItReadsAFile) {
    const auto source = openSequence(plates());
    FramePtr picture;
    std::string why;
    const auto keep = [](int64, FramePtr const&) { FAIL(); };
    EXPECT_EQ(source->frame(
                  0, keep, [](int64) { return false; }, picture, why),
              PictureSource::Result::given_up);
}

TEST(ImageSequenceSource, hasTwinsThatDecodeTheSame) {
    const auto source = openSequence(plates());
    const auto twin = source->twin();
    ASSERT_NE(twin, nullptr);
    std::string why;
    const FramePtr one = decode(*source, 1, why);
    const FramePtr other = decode(*twin, 1, why);
    ASSERT_TRUE(one && other) << why;
    EXPECT_TRUE(bytesOf(*one) == bytesOf(*other));
}

struct Still {
    const char* file;
    const char* codec;
    AVPixelFormat format;
    AVColorTransferCharacteristic transfer;
};
class Stills : public ::testing::TestWithParam<Still> {};

TEST_P(Stills, areDecodedWithTheirColours) {
    const auto source = openStill(GetParam().file);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->facts().frameCount, 1);
    EXPECT_EQ(source->facts().codecName, GetParam().codec);
    EXPECT_EQ(source->facts().pixelFormat, GetParam().format) << av_get_pix_fmt_name(source->facts().pixelFormat);
    EXPECT_EQ(source->facts().colour.transfer, GetParam().transfer);
    EXPECT_EQ(source->facts().colour.primaries, AVCOL_PRI_BT709);
    EXPECT_EQ(source->facts().colour.range, AVCOL_RANGE_JPEG);
    std::string why;
    const FramePtr picture = decode(*source, 0, why);
    ASSERT_NE(picture, nullptr) << why;
    EXPECT_EQ(picture->width, 64);
    EXPECT_EQ(picture->height, 48);
}

constexpr auto sRgb = AVCOL_TRC_IEC61966_2_1;
INSTANTIATE_TEST_SUITE_P(Files, Stills,
                         ::testing::Values(Still{"plate.0101.png", "png", AV_PIX_FMT_RGB24, sRgb},
                                           Still{"sixteen.png", "png", AV_PIX_FMT_RGB48BE, sRgb},
                                           Still{"one.bmp", "bmp", AV_PIX_FMT_BGR24, sRgb},
                                           Still{"one.tga", "targa", AV_PIX_FMT_BGR24, sRgb},
                                           Still{"one.tif", "tiff", AV_PIX_FMT_RGB24, sRgb},
                                           Still{"one.jpg", "mjpeg", AV_PIX_FMT_YUVJ420P, sRgb},
                                           Still{"one.dpx", "dpx", AV_PIX_FMT_RGB24, sRgb},
                                           Still{"half.exr", "exr", AV_PIX_FMT_GBRPF32LE, AVCOL_TRC_LINEAR},
                                           Still{"float.exr", "exr", AV_PIX_FMT_GBRPF32LE, AVCOL_TRC_LINEAR},
                                           Still{"alpha.exr", "exr", AV_PIX_FMT_GBRAPF32LE, AVCOL_TRC_LINEAR}),
                         [](const auto& caseInfo) {
                             std::string name = caseInfo.param.file;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST(ImageFile, decodesWebPictures) {
    FramePtr picture;
    const Outcome outcome = readImageFile(clipPath("stills/one.webp"), picture);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(picture->width, 64);
}

TEST(ImageFile, tellsTheKindByTheNameInAnyCase) {
    EXPECT_EQ(imageCodecOf("a.PNG"), AV_CODEC_ID_PNG);
    EXPECT_EQ(imageCodecOf("folder.exr/a.Tiff"), AV_CODEC_ID_TIFF);
    EXPECT_EQ(imageCodecOf("folder.exr/a"), AV_CODEC_ID_NONE);
    EXPECT_EQ(imageCodecOf("a.mov"), AV_CODEC_ID_NONE);
    EXPECT_EQ(imageCodecOf(""), AV_CODEC_ID_NONE);
}

void putNumber(std::vector<uint8_t>& bytes, uint32 number) {
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<uint8_t>((number >> shift) & 0xff));
}

void putChunk(std::vector<uint8_t>& bytes, std::string const& type, std::vector<uint8_t> const& content) {
    putNumber(bytes, static_cast<uint32>(content.size()));
    const size_t begin = bytes.size();
    bytes.insert(bytes.end(), type.begin(), type.end());
    bytes.insert(bytes.end(), content.begin(), content.end());
    putNumber(bytes, ~av_crc(av_crc_get_table(AV_CRC_32_IEEE_LE), ~uint32{0}, &bytes[begin], bytes.size() - begin));
}

/// Writes a picture whose header claims a size, with next to nothing behind it.
std::string claimedPicture(int width, int height) {
    std::vector<uint8_t> bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    std::vector<uint8_t> header;
    putNumber(header, static_cast<uint32>(width));
    putNumber(header, static_cast<uint32>(height));
    header.insert(header.end(), {8, 2, 0, 0, 0});
    putChunk(bytes, "IHDR", header);
    putChunk(bytes, "IDAT", {0x78, 0x9c, 0x63, 0x00});
    const std::string path = ::testing::TempDir() + "qrtplay-claimed.png";
    std::ofstream file(path, std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
    return path;
}

TEST(ImageFile, refusesAHeaderThatClaimsMoreThanCanBePlayed) {
    for (const auto& [width, height] : {std::pair(20000, 16), std::pair(16, 20000), std::pair(16384, 8193)}) {
        const std::string path = claimedPicture(width, height);
        FramePtr picture;
        EXPECT_EQ(readImageFile(path, picture).message(), path + ": its picture of " + std::to_string(width) + "x" +
                                                              std::to_string(height) +
                                                              " pixels is larger than can be played");
        EXPECT_EQ(picture, nullptr);
        std::remove(path.c_str());
    }
}

TEST(ImageFile, refusesAFileThatIsLargerThanAPictureCanBe) {
    const std::string path = claimedPicture(16, 16);
    std::filesystem::resize_file(path, static_cast<uintmax_t>(maxPictureFileBytes));  // a hole: takes no room
    FramePtr picture;
    EXPECT_EQ(readImageFile(path, picture).message(), path + ": is larger than a picture can be");
    std::remove(path.c_str());
}

TEST(ImageFile, refusesAFileThatIsCutOff) {
    for (const char* const name : {"plate.0101.png", "one.jpg", "one.tif", "one.dpx", "one.bmp", "one.webp"}) {
        std::ifstream source(clipPath("stills/") + name, std::ios::binary);
        std::vector<char> bytes(std::istreambuf_iterator<char>(source), {});
        const std::string path = ::testing::TempDir() + "qrtplay-cut-" + name;
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size() * 2 / 3));
        FramePtr picture;
        EXPECT_THAT(readImageFile(path, picture).message(), HasSubstr(path + ": ")) << name;
        EXPECT_EQ(picture, nullptr) << name;
        std::remove(path.c_str());
    }
}

TEST(ImageFile, refusesWhatIsNoPicture) {
    const std::string empty = ::testing::TempDir() + "qrtplay-empty.png";
    std::ofstream(empty).close();
    FramePtr picture;
    EXPECT_EQ(readImageFile(empty, picture).message(), empty + ": is empty");
    std::remove(empty.c_str());
    EXPECT_THAT(readImageFile(clipPath("stills/plate.0105.png"), picture).message(), HasSubstr("cannot be decoded"));
    EXPECT_THAT(readImageFile(clipPath("stills"), picture).message(), HasSubstr("is a folder"));
    EXPECT_THAT(readImageFile(clipPath("text.txt"), picture).message(), HasSubstr("is no picture of a known kind"));
}

}  // namespace
}  // namespace qrtplay
