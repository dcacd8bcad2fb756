#include "render/qrtImageWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

QImage noise(int width, int height, unsigned seed) {
    QImage image(width, height, QImage::Format_RGBX8888);
    image.fill(Qt::black);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            seed = seed * 1664525u + 1013904223u;
            image.setPixel(x, y, qRgb(static_cast<int>(seed >> 24), static_cast<int>(seed >> 16 & 255), x & 255));
        }
    }
    return image;
}

class Writing : public ::testing::Test {
protected:
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    QStringList names() const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

    QTemporaryDir folder;
};

TEST_F(Writing, keepsEveryPixel) {
    const QImage image = noise(31, 17, 1);
    ASSERT_TRUE(writePng(path("a.png"), image).success());
    const QImage read(QString::fromStdString(path("a.png")));
    EXPECT_EQ(read.convertToFormat(QImage::Format_RGB32), image.convertToFormat(QImage::Format_RGB32));
    EXPECT_FALSE(read.hasAlphaChannel());
}

TEST_F(Writing, leavesNothingButTheFinishedFiles) {
    {
        ImageWriter writer(3);
        for (int i = 0; i < 20; ++i) writer.write(i, path(std::to_string(i + 10) + ".png"), noise(40, 30, 7));
        writer.finish();
        EXPECT_TRUE(writer.takeFailures().empty());
    }
    EXPECT_EQ(names().size(), 20);
    for (const QString& name : names()) EXPECT_FALSE(QImage(folder.filePath(name)).isNull()) << name.toStdString();
}

TEST_F(Writing, replacesAnOldFile) {
    ASSERT_TRUE(writePng(path("a.png"), noise(4, 4, 1)).success());
    ASSERT_TRUE(writePng(path("a.png"), noise(9, 9, 1)).success());
    EXPECT_EQ(QImage(folder.filePath("a.png")).width(), 9);
}

TEST_F(Writing, namesThePathThatCannotBeWrittenAndGoesOn) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("taken.png"));
    ImageWriter writer(2);
    writer.write(1, path("taken.png"), noise(4, 4, 1));
    writer.write(2, path("missing/x.png"), noise(4, 4, 1));
    writer.write(3, path("fine.png"), noise(4, 4, 1));
    writer.finish();
    auto failures = writer.takeFailures();
    ASSERT_EQ(failures.size(), 2u);
    std::sort(failures.begin(), failures.end(), [](auto const& a, auto const& b) { return a.frame < b.frame; });
    EXPECT_EQ(failures[0].frame, 1);
    EXPECT_THAT(failures[0].message, HasSubstr("frame 1: " + path("taken.png") + ": cannot be written"));
    EXPECT_THAT(failures[1].message, HasSubstr(path("missing/x.png")));
    EXPECT_EQ(names(), QStringList{"fine.png"});
    EXPECT_TRUE(writer.takeFailures().empty());
}

TEST_F(Writing, leavesTheOldFileWhenAnEmptyImageCannotBeWritten) {
    ASSERT_TRUE(writePng(path("a.png"), noise(4, 4, 1)).success());
    EXPECT_TRUE(writePng(path("a.png"), QImage()).failed());
    EXPECT_EQ(QImage(folder.filePath("a.png")).width(), 4);
    EXPECT_EQ(names(), QStringList{"a.png"});
}

TEST_F(Writing, makesTheFolder) {
    EXPECT_TRUE(prepareFolder(path("x/y/z")).success());
    EXPECT_TRUE(QDir(folder.filePath("x/y/z")).exists());
    EXPECT_TRUE(QDir(folder.filePath("x/y/z")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(Writing, namesTheFolderThatCannotBeMadeOrWrittenTo) {
    ASSERT_TRUE(writePng(path("file.png"), noise(4, 4, 1)).success());
    const Outcome behindAFile = prepareFolder(path("file.png/x"));
    EXPECT_THAT(behindAFile.message(), HasSubstr(path("file.png/x") + ": the output folder cannot be made"));
    EXPECT_THAT(prepareFolder("/proc").message(), HasSubstr("/proc: the output folder cannot be written to"));
}

}  // namespace
}  // namespace qrtplay
