#include "encode/qrtStillWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFloat16>
#include <QImage>
#include <QTemporaryDir>
#include <cstring>

#include "host/qrtDecodedFile.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr int usualQuality = 90;

class StillWriter : public ::testing::Test {
protected:
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    QStringList names() const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

    /// Writes a block and reads it back in a depth.
    PixelBlock written(std::string const& name, PixelBlock const& block, PixelFormat readAs,
                       int quality = usualQuality) {
        const Outcome outcome = writeStill(path(name), block, quality);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        const DecodedFile file(path(name));
        EXPECT_EQ(file.pictures.size(), 1u) << name;
        return file.pictures.empty() ? PixelBlock() : blockOf(*file.pictures[0], readAs);
    }

    QTemporaryDir folder;
};

bool samePixels(PixelBlock const& a, PixelBlock const& b) {
    return a.width == b.width && a.height == b.height && a.format == b.format && !a.empty() && !b.empty() &&
           std::memcmp(a.row(0), b.row(0), a.sizeInBytes()) == 0;
}

TEST_F(StillWriter, keepsEveryBitOfPngAndTiff) {
    for (const char* const name : {"a.png", "a.tif", "a.tiff", "A.PNG"}) {
        for (const PixelFormat depth : {PixelFormat::rgba8, PixelFormat::rgba16}) {
            const PixelBlock block = noiseBlock(31, 17, depth, 1);
            EXPECT_TRUE(samePixels(written(name, block, depth), block)) << name << static_cast<int>(depth);
        }
    }
    EXPECT_FALSE(QImage(folder.filePath("a.png")).hasAlphaChannel());
}

TEST_F(StillWriter, writesAsManyBitsAsThePictureHas) {
    ASSERT_TRUE(writeStill(path("8.png"), noiseBlock(4, 4, PixelFormat::rgba8, 1), usualQuality).success());
    ASSERT_TRUE(writeStill(path("16.png"), noiseBlock(4, 4, PixelFormat::rgba16, 1), usualQuality).success());
    EXPECT_EQ(DecodedFile(path("8.png")).pictures.at(0)->format, AV_PIX_FMT_RGB24);
    EXPECT_EQ(DecodedFile(path("16.png")).pictures.at(0)->format, AV_PIX_FMT_RGB48BE);
}

TEST_F(StillWriter, keepsEveryFloatOfExrBeyondWhiteAndBelowBlack) {
    const PixelBlock floats = noiseBlock(31, 17, PixelFormat::rgba32f, 2);
    EXPECT_TRUE(samePixels(written("float.exr", floats, PixelFormat::rgba32f), floats));
    const PixelBlock halves = noiseBlock(31, 17, PixelFormat::rgba16f, 2);
    const PixelBlock read = written("half.exr", halves, PixelFormat::rgba32f);
    ASSERT_FALSE(read.empty());
    for (int i = 0; i < 31 * 17 * 4; ++i) {
        qfloat16 half;
        float number = 0;
        std::memcpy(&half, halves.row(0) + i * 2, sizeof(half));
        std::memcpy(&number, read.row(0) + i * 4, sizeof(number));
        ASSERT_EQ(number, static_cast<float>(half)) << i;
    }
    EXPECT_LT(QFile(folder.filePath("half.exr")).size(), QFile(folder.filePath("float.exr")).size());
}

TEST_F(StillWriter, keepsTheColoursOfJpegAndMoreOfThemTheHigherTheQuality) {
    const PixelBlock block = gradientBlock(64, 48, PixelFormat::rgba8, 1);
    EXPECT_LE(largestDifference(written("a.jpg", block, PixelFormat::rgba8), block), 6);
    const PixelBlock noise = noiseBlock(64, 48, PixelFormat::rgba8, 1);
    const double best = largestDifference(written("best.jpg", noise, PixelFormat::rgba8, 100), noise);
    const double worst = largestDifference(written("worst.jpeg", noise, PixelFormat::rgba8, 10), noise);
    EXPECT_LE(best, 12);
    EXPECT_GT(worst, 40);
    EXPECT_LT(QFile(folder.filePath("worst.jpeg")).size() * 3, QFile(folder.filePath("best.jpg")).size());
}

TEST_F(StillWriter, replacesAnOldFile) {
    ASSERT_TRUE(writeStill(path("a.png"), noiseBlock(4, 4, PixelFormat::rgba8, 1), usualQuality).success());
    ASSERT_TRUE(writeStill(path("a.png"), noiseBlock(9, 9, PixelFormat::rgba8, 1), usualQuality).success());
    EXPECT_EQ(QImage(folder.filePath("a.png")).width(), 9);
    EXPECT_EQ(names(), QStringList{"a.png"});
}

TEST_F(StillWriter, leavesTheOldFileWhenTheNewOneCannotBeWritten) {
    ASSERT_TRUE(writeStill(path("a.png"), noiseBlock(4, 4, PixelFormat::rgba8, 1), usualQuality).success());
    EXPECT_THAT(writeStill(path("a.png"), PixelBlock(), usualQuality).message(),
                HasSubstr(path("a.png") + ": cannot be written"));
    EXPECT_TRUE(writeStill(path("a.png"), noiseBlock(4, 4, PixelFormat::rgba32f, 1), usualQuality).failed());
    EXPECT_EQ(QImage(folder.filePath("a.png")).width(), 4);
    EXPECT_EQ(names(), QStringList{"a.png"});
}

TEST_F(StillWriter, namesWhatCannotBeWritten) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("taken.png"));
    const PixelBlock block = noiseBlock(4, 4, PixelFormat::rgba8, 1);
    EXPECT_THAT(writeStill(path("taken.png"), block, usualQuality).message(), HasSubstr(path("taken.png")));
    EXPECT_THAT(writeStill(path("missing/x.png"), block, usualQuality).message(), HasSubstr(path("missing/x.png")));
    EXPECT_THAT(writeStill(path("a.bmp"), block, usualQuality).message(), HasSubstr(path("a.bmp")));
    EXPECT_THAT(writeStill(path("a.mp4"), block, usualQuality).message(), HasSubstr(path("a.mp4")));
    EXPECT_THAT(writeStill(path("a.exr"), block, usualQuality).message(), HasSubstr("floating-point"));
    EXPECT_TRUE(names().isEmpty());
}

}  // namespace
}  // namespace qrtplay
