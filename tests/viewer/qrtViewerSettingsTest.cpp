#include "viewer/qrtViewerSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include "playback/qrtTimelinePlayer.h"

namespace qrtplay {
namespace {

/// Settings in a folder of their own, never those of the user who runs the tests.
class KeptSettings : public ::testing::Test {
protected:
    KeptSettings() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_folder.path());
        QCoreApplication::setOrganizationName("qrt");
        QCoreApplication::setApplicationName("qrtplay");
    }
    ~KeptSettings() override {
        QCoreApplication::setOrganizationName(m_organization);
        QCoreApplication::setApplicationName(m_application);
    }

    [[nodiscard]] QString path() const { return m_folder.filePath("qrt/qrtplay.ini"); }

    /// What is read from a file with this text in it.
    [[nodiscard]] ViewerSettings loadedFrom(QByteArray const& text) const {
        QDir().mkpath(QFileInfo(path()).path());
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        return ViewerSettings::load();
    }

private:
    const QTemporaryDir m_folder;
    const QString m_organization = QCoreApplication::organizationName();
    const QString m_application = QCoreApplication::applicationName();
};

/// All that is kept, in the form of texts that tell which of it differs.
QStringList told(ViewerSettings const& settings) {
    PlaySettings const& play = settings.play;
    const auto number = [](auto const& value) { return value ? QString::number(*value) : QString("none"); };
    QStringList texts{
        "resolution " + (play.resolution ? QString::fromStdString(sizeText(*play.resolution)) : QString("none")),
        QString("depth %1").arg(static_cast<int>(play.depth)),
        QString("memory %1").arg(play.ramOutputs),
        QString("scaling %1").arg(static_cast<int>(play.scaling)),
        "ahead " + number(play.headFrames),
        "behind " + number(play.tailFrames),
        "decoded " + number(play.decodeCacheInMiB),
        QString("generated %1").arg(play.segmentCacheInMiB),
        QString::fromStdString("colour " + play.ocio.config + " " + play.ocio.display + " " + play.ocio.view),
        QString("policy %1").arg(static_cast<int>(settings.policy)),
        QString("mode %1").arg(settings.playMode),
        QString("numbering %1").arg(static_cast<int>(settings.numbering)),
        QString("drop frame %1").arg(settings.dropFrame),
        QString("overlay %1").arg(settings.overlay),
        QString("safe areas %1").arg(settings.safeAreas),
        "background " + settings.background.name(QColor::HexArgb),
        QString("volume %1").arg(settings.volume),
        QString("muted %1").arg(settings.muted),
        "geometry " + settings.geometry.toHex(),
        "layout " + settings.layout.toHex(),
        "recent " + settings.recentFiles.join("|"),
        "export to " + settings.exportFolder};
    for (auto each = settings.enginePreferences.begin(); each != settings.enginePreferences.end(); ++each)
        texts << each.key() + QString(" %1").arg(each.value());
    return texts;
}

ViewerSettings allDifferent() {
    ViewerSettings settings;
    settings.play.resolution = QSize(1280, 720);
    settings.play.depth = PixelFormat::rgba16f;
    settings.play.ramOutputs = true;
    settings.play.scaling = Scaling::one_to_one;
    settings.play.headFrames = 7;
    settings.play.tailFrames = 0;
    settings.play.decodeCacheInMiB = 300;
    settings.play.segmentCacheInMiB = 0;
    settings.play.ocio = {"/some where/config.ocio", "screen, wide", "film \"look\""};
    settings.enginePreferences = {{"QUALITY", -3}, {"deep/er name", 12}};
    settings.policy = PacePolicy::every_frame;
    settings.playMode = PlayParams::ping_pong;
    settings.numbering = Numbering::seconds;
    settings.dropFrame = settings.overlay = settings.safeAreas = settings.muted = true;
    settings.background = QColor(1, 200, 30);
    settings.volume = 0.25;
    settings.geometry = QByteArray("\0geo\xff", 5);
    settings.layout = QByteArray("lay\0out", 7);
    settings.recentFiles = QStringList{"/a,b/one.mov", "two.mov\nthree.mov", "@at;the=end"};
    settings.exportFolder = "/out, put";
    return settings;
}

TEST_F(KeptSettings, areReadAsTheyWereSaved) {
    allDifferent().save();
    EXPECT_TRUE(QFile::exists(path()));
    EXPECT_EQ(told(ViewerSettings::load()), told(allDifferent()));
}

TEST_F(KeptSettings, goBackToNoneWhereNothingIsChosenAnyMore) {
    allDifferent().save();
    ViewerSettings().save();
    EXPECT_EQ(told(ViewerSettings::load()), told(ViewerSettings()));
}

TEST_F(KeptSettings, haveTheirDefaultsWithoutAFile) {
    EXPECT_EQ(told(ViewerSettings::load()), told(ViewerSettings()));
}

TEST_F(KeptSettings, haveTheirDefaultsWhereTheFileIsGarbage) {
    QByteArray noise;
    for (int i = 0; i < 5000; ++i)
        noise.append(static_cast<char>(i * i * 31 + i / 7));
    EXPECT_EQ(told(loadedFrom(noise)), told(ViewerSettings()));
}

struct BadLine {
    char const* name;
    char const* text;
};

class KeptBadLine : public KeptSettings, public ::testing::WithParamInterface<BadLine> {};

TEST_P(KeptBadLine, isAsIfItWereNotThere) {
    EXPECT_EQ(told(loadedFrom(GetParam().text)), told(ViewerSettings()));
}

INSTANTIATE_TEST_SUITE_P(
    Settings, KeptBadLine,
    ::testing::Values(
        BadLine{"widthAlone", "[picture]\nwidth=1920\n"}, BadLine{"noWidth", "[picture]\nwidth=0\nheight=1080\n"},
        BadLine{"tooHigh", "[picture]\nwidth=1920\nheight=999999999\n"},
        BadLine{"widthBeyondNumbers", "[picture]\nwidth=99999999999999999999\nheight=1\n"},
        BadLine{"unknownDepth", "[picture]\ndepth=12\n"}, BadLine{"listForDepth", "[picture]\ndepth=8, 16\n"},
        BadLine{"memoryMaybe", "[picture]\nmemory=perhaps\n"},
        BadLine{"unknownScaling", "[picture]\nscaling=@Invalid()\n"},
        BadLine{"noColour", "[picture]\nbackground=quite dark\n"}, BadLine{"negativeAhead", "[cache]\nahead=-1\n"},
        BadLine{"endlessAhead", "[cache]\nahead=2000000000\n"}, BadLine{"halfBehind", "[cache]\nbehind=1.5\n"},
        BadLine{"negativeGenerated", "[cache]\ngenerated=-5\n"},
        BadLine{"endlessDecoded", "[cache]\ndecoded=2000000\n"}, BadLine{"unknownPolicy", "[playing]\npolicy=2\n"},
        BadLine{"unknownMode", "[playing]\nmode=3\n"}, BadLine{"tooLoud", "[sound]\nvolume=1.01\n"},
        BadLine{"noNumberForVolume", "[sound]\nvolume=nan\n"}, BadLine{"textForGeometry", "[window]\ngeometry=wide\n"},
        BadLine{"brokenVariant", "[window]\nlayout=@Variant(\\0\\0\\x7f\\xff)\n"},
        BadLine{"noNumberForPreference", "[engine]\nQUALITY=best\n"}),
    [](auto const& line) { return line.param.name; });

TEST_F(KeptSettings, takeAColourByItsNameAndWithoutItsTransparency) {
    EXPECT_EQ(loadedFrom("[picture]\nbackground=#80ff0000\n").background, QColor(255, 0, 0));
}

TEST_F(KeptSettings, cannotBeSavedIntoAFolderThatIsAFile) {
    ViewerSettings settings;
    QFile file(QFileInfo(path()).path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    settings.save();
    EXPECT_EQ(told(ViewerSettings::load()), told(ViewerSettings()));
}

TEST_F(KeptSettings, haveTheLatestFileFirstAndOnce) {
    ViewerSettings settings;
    settings.addRecent({"a.mov"});
    settings.addRecent({"b.mov", "c.mov"});
    settings.addRecent({"a.mov"});
    settings.addRecent({});
    EXPECT_EQ(settings.recentFiles, QStringList({"a.mov", "b.mov\nc.mov"}));
}

TEST_F(KeptSettings, haveNoMoreThanTenRecentFiles) {
    ViewerSettings settings;
    for (int i = 0; i < 15; ++i)
        settings.addRecent({QString::number(i)});
    EXPECT_EQ(settings.recentFiles.size(), 10);
    EXPECT_EQ(settings.recentFiles.first(), "14");
    EXPECT_EQ(settings.recentFiles.last(), "5");
}

TEST_F(KeptSettings, readNoMoreThanTenRecentFilesEachOnce) {
    const auto settings = loadedFrom("[files]\nrecent=1, 2, 2, , 3, 4, 5, 6, 7, 8, 9, 10, 11, 12\n");
    EXPECT_EQ(settings.recentFiles, QStringList({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}));
}

}  // namespace
}  // namespace qrtplay
