#include "encode/qrtImageWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <algorithm>

#include "encode/qrtBlockImage.h"
#include "encode/qrtOutputFolder.h"
#include "host/qrtDecodedFile.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr int quality = 90;

class ImageWriting : public ::testing::Test {
protected:
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    QStringList names() const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
    static PixelBlock noise(unsigned seed) { return noiseBlock(40, 30, PixelFormat::rgba8, seed); }

    QTemporaryDir folder;
};

TEST_F(ImageWriting, leavesNothingButTheFinishedFilesAndTellsOfEach) {
    ImageWriter writer(quality, 3);
    for (int i = 0; i < 20; ++i)
        writer.write(i, path(std::to_string(i + 10) + ".png"), noise(7));
    writer.finish();
    const std::vector<WriteResult> results = writer.takeResults();
    EXPECT_EQ(results.size(), 20u);
    EXPECT_TRUE(std::none_of(results.begin(), results.end(), [](auto const& result) { return result.failed(); }));
    EXPECT_TRUE(writer.takeResults().empty());
    EXPECT_EQ(names().size(), 20);
    for (const QString& name : names())
        EXPECT_FALSE(QImage(folder.filePath(name)).isNull()) << name.toStdString();
}

TEST_F(ImageWriting, namesThePathThatCannotBeWrittenAndGoesOn) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("taken.png"));
    ImageWriter writer(quality, 2);
    writer.write(1, path("taken.png"), noise(1));
    writer.write(2, path("missing/x.png"), noise(1));
    writer.write(3, path("fine.png"), noise(1));
    writer.finish();
    std::vector<WriteResult> results = writer.takeResults();
    ASSERT_EQ(results.size(), 3u);
    std::sort(results.begin(), results.end(), [](auto const& a, auto const& b) { return a.frame < b.frame; });
    EXPECT_THAT(results[0].failure, HasSubstr(path("taken.png") + ": cannot be written"));
    EXPECT_THAT(results[1].failure, HasSubstr(path("missing/x.png")));
    EXPECT_FALSE(results[2].failed());
    EXPECT_EQ(results[2].path, path("fine.png"));
    EXPECT_EQ(names(), QStringList{"fine.png"});
}

TEST_F(ImageWriting, makesTheFolder) {
    EXPECT_TRUE(prepareFolder(path("x/y/z")).success());
    EXPECT_TRUE(QDir(folder.filePath("x/y/z")).exists());
    EXPECT_TRUE(QDir(folder.filePath("x/y/z")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(ImageWriting, namesTheFolderThatCannotBeMadeOrWrittenTo) {
    QFile file(folder.filePath("file.png"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const Outcome behindAFile = prepareFolder(path("file.png/x"));
    EXPECT_THAT(behindAFile.message(), HasSubstr(path("file.png/x") + ": the output folder cannot be made"));
    EXPECT_THAT(prepareFolder("/proc").message(), HasSubstr("/proc: the output folder cannot be written to"));
}

TEST(BlockImage, goesThereAndBackUnchanged) {
    const PixelBlock block = noiseBlock(31, 17, PixelFormat::rgba8, 3);
    const PixelBlock back = blockOf(imageOf(block));
    EXPECT_EQ(largestDifference(back, block), 0);
    EXPECT_TRUE(imageOf(noiseBlock(4, 4, PixelFormat::rgba16, 3)).isNull());
}

TEST(BlockImage, keepsThePixelsAliveWithoutTheBlock) {
    QImage image;
    {
        const PixelBlock block = noiseBlock(31, 17, PixelFormat::rgba8, 3);
        image = imageOf(block);
    }
    EXPECT_EQ(largestDifference(blockOf(image), noiseBlock(31, 17, PixelFormat::rgba8, 3)), 0);
}

}  // namespace
}  // namespace qrtplay
