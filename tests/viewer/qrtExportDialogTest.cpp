#include "viewer/export/qrtExportDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "host/qrtTestClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int longestMs = 120000;

class ExportDialogs : public ::testing::Test {
protected:
    static QString clip(std::string const& name) { return QString::fromStdString(clipPath(name)); }
    QString path(QString const& name) const { return folder.filePath(name); }
    QStringList files(QString const& pattern = "*") const {
        return QDir(folder.path()).entryList({pattern}, QDir::Files | QDir::Hidden, QDir::Name);
    }
    void put(QString const& name, QByteArray const& bytes = "old") const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray bytesOf(QString const& name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// A program of a shell's lines in the place of qrtplay.
    QString script(QByteArray const& lines) const {
        put("program", "#!/bin/sh\n" + lines + "\n");
        QFile::setPermissions(path("program"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path("program");
    }

    void make(ExportJob const& job, QString const& program = QRT_PLAY_PROGRAM) {
        dialog = std::make_unique<ExportDialog>(job, program, folder.path());
        dialog->show();
        spy = std::make_unique<QSignalSpy>(dialog.get(), &ExportDialog::finished);
    }
    template <class Control>
    Control* control(char const* name) const {
        return dialog->findChild<Control*>(name);
    }
    QPushButton* button(char const* name) const { return control<QPushButton>(name); }
    std::string message() const { return control<QLabel>("exportMessage")->text().toStdString(); }
    std::string result() const { return dialog->result().toStdString(); }
    void click(char const* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    bool waitUntil(std::function<bool()> const& condition) { return QTest::qWaitFor(condition, longestMs); }
    bool waitForEnd() {
        return waitUntil([this] { return !dialog->isRunning(); });
    }
    bool success() const { return spy->count() > 0 && spy->last().front().toBool(); }

    ExportJob shortJob() const { return {{clip("bframes.mp4")}, {}, {10, 15}, {}}; }
    /// Large pictures, so that there is time to stop it.
    ExportJob longJob() const {
        ExportJob job{{clip("longgroup.mp4"), clip("longgroup.mp4")}, {}, {0, 519}, {}};
        job.play.resolution = QSize(1280, 720);
        return job;
    }

    QTemporaryDir folder;
    std::unique_ptr<ExportDialog> dialog;
    std::unique_ptr<QSignalSpy> spy;
};

TEST_F(ExportDialogs, exportsImages) {
    make(shortJob());
    dialog->setOutput("frame.####.png");
    EXPECT_EQ(control<QLabel>("exportRange")->text(), "Frames 10 to 15, 6 frames");
    EXPECT_EQ(dialog->result(), "");
    click("exportStart");
    EXPECT_TRUE(dialog->isRunning());
    EXPECT_FALSE(control<QLineEdit>("exportOutput")->isEnabled());
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(success());
    EXPECT_THAT(result(), StartsWith("6 frames exported to " + path("frame.####.png").toStdString() + " in "));
    EXPECT_EQ(message(), result());
    EXPECT_EQ(files(), (QStringList{"frame.0010.png", "frame.0011.png", "frame.0012.png", "frame.0013.png",
                                    "frame.0014.png", "frame.0015.png"}));
    EXPECT_EQ(QImage(path("frame.0015.png")).size(), QSize(160, 96));
    EXPECT_TRUE(button("exportOpenFolder")->isVisible());
    EXPECT_TRUE(control<QLineEdit>("exportOutput")->isEnabled());
}

TEST_F(ExportDialogs, exportsAMovie) {
    make(shortJob());
    dialog->setOutput(path("cut.mov"));
    control<QCheckBox>("exportSound")->click();
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(success()) << result();
    EXPECT_EQ(files(), QStringList("cut.mov"));
    const OpenClip movie = OpenClip::at(path("cut.mov").toStdString());
    ASSERT_TRUE(movie.file);
    EXPECT_EQ(movie.facts().frameCount, 6);
}

TEST_F(ExportDialogs, leavesOnlyWholeImagesWhenCancelledAndGoesOnFromThere) {
    ExportJob job = longJob();
    make(job);
    dialog->setOutput("frame.####.png");
    dialog->start();
    ASSERT_TRUE(waitUntil([this] { return control<QProgressBar>("exportProgress")->value() > 0; }));
    click("exportCancel");
    EXPECT_THAT(message(), StartsWith("Cancelling"));
    EXPECT_FALSE(button("exportCancel")->isEnabled());
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(success());
    const QStringList written = files();
    ASSERT_FALSE(written.isEmpty());
    ASSERT_LT(written.size(), 520);
    EXPECT_EQ(result(), "Cancelled. " + std::to_string(written.size()) +
                            (written.size() == 1 ? " of 520 frames is" : " of 520 frames are") +
                            " there, each of them whole. Export with \"Only missing frames\" to do the others.");
    for (QString const& name : written)
        EXPECT_EQ(QImage(path(name)).size(), QSize(1280, 720)) << name.toStdString();
    EXPECT_TRUE(control<QCheckBox>("exportOnlyMissing")->isChecked());

    // Few enough that the test does not take long.
    job.range.last = written.size() + 1;
    make(job);
    dialog->setOutput("frame.####.png");
    control<QCheckBox>("exportOnlyMissing")->setChecked(true);
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(success()) << result();
    EXPECT_EQ(files().size(), job.frameCount());
    EXPECT_THAT(result(), HasSubstr(" had been there already."));
}

TEST_F(ExportDialogs, keepsTheOldMovieWhenCancelled) {
    put("cut.mp4", "old movie");
    make(longJob());
    dialog->setOutput("cut.mp4");
    click("exportStart");
    click("exportStart");
    ASSERT_TRUE(waitUntil([this] { return control<QProgressBar>("exportProgress")->value() > 0; }));
    dialog->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(result(), "Cancelled. No movie was written; it has to be exported from its start again.");
    EXPECT_EQ(files(), QStringList("cut.mp4"));
    EXPECT_EQ(bytesOf("cut.mp4"), "old movie");
}

TEST_F(ExportDialogs, asksBeforeItReplacesAMovie) {
    put("cut.mkv");
    make(shortJob());
    dialog->setOutput("cut.mkv");
    EXPECT_EQ(button("exportStart")->text(), "Export");
    click("exportStart");
    EXPECT_FALSE(dialog->isRunning());
    EXPECT_EQ(button("exportStart")->text(), "Replace");
    EXPECT_EQ(message(), "cut.mkv is there already. \"Replace\" writes it anew.");
    dialog->setOutput("other.mkv");
    EXPECT_EQ(button("exportStart")->text(), "Export") << "another name is another question";
    EXPECT_EQ(message(), "");
    dialog->setOutput("cut.mkv");
    click("exportStart");
    click("exportStart");
    EXPECT_TRUE(dialog->isRunning());
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(success()) << result();
    EXPECT_NE(bytesOf("cut.mkv"), "old");
}

TEST_F(ExportDialogs, asksBeforeItReplacesImagesUnlessItKeepsThem) {
    put("frame.0012.png");
    put("frame.0099.png");
    make(shortJob());
    dialog->setOutput("frame.####.png");
    dialog->start();
    EXPECT_FALSE(dialog->isRunning());
    EXPECT_THAT(message(), StartsWith("1 of the 6 frames is there already."));
    control<QCheckBox>("exportOnlyMissing")->click();
    EXPECT_EQ(button("exportStart")->text(), "Export");
    dialog->start();
    EXPECT_TRUE(dialog->isRunning());
    ASSERT_TRUE(waitForEnd());
    EXPECT_THAT(result(), StartsWith("5 frames exported to "));
    EXPECT_EQ(bytesOf("frame.0012.png"), "old");
}

TEST_F(ExportDialogs, listsFramesThatFail) {
    make({{clip("truncated.mp4")}, {}, {20, 30}, {}});
    dialog->setOutput("frame.####.png");
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(success());
    const QStringList lines = control<QPlainTextEdit>("exportFailures")->toPlainText().split('\n');
    EXPECT_TRUE(control<QPlainTextEdit>("exportFailures")->isVisible());
    EXPECT_THAT(lines.front().toStdString(), ::testing::MatchesRegex("Frame 2[0-9]: .*truncated.mp4.*"));
    EXPECT_EQ(files().size() + lines.size(), 11);
    EXPECT_THAT(result(), HasSubstr(" " + std::to_string(lines.size()) + " frames could not be had."));
    EXPECT_TRUE(button("exportOpenFolder")->isVisible());
}

TEST_F(ExportDialogs, saysWhenTheProgramIsMissing) {
    make(shortJob(), path("none"));
    dialog->setOutput("cut.mp4");
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(result(), "The export could not begin: the program " + path("none").toStdString() +
                            " is missing or may not be run.");
    EXPECT_EQ(spy->count(), 1);
    EXPECT_FALSE(button("exportOpenFolder")->isVisible());
}

TEST_F(ExportDialogs, saysWhenTheFolderCannotBeWrittenTo) {
    put("file");
    make(shortJob());
    dialog->setOutput("file/cut.mp4");
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(result(), "The export failed: " + path("file").toStdString() + ": the output folder cannot be made");
}

TEST_F(ExportDialogs, saysWhenAnInputIsMissing) {
    make({{path("none.mp4")}, {}, {0, 9}, {}});
    dialog->setOutput("cut.mp4");
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_THAT(result(), StartsWith("Something to export from is missing: " + path("none.mp4").toStdString()));
}

TEST_F(ExportDialogs, saysWhatTheProgramSaidLastWhenItBreaksOff) {
    make(shortJob(), script("echo 'qrtplay: out of luck' >&2; kill -SEGV $$"));
    dialog->setOutput("cut.mp4");
    dialog->start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(result(), "The export broke off unexpectedly: out of luck");
}

TEST_F(ExportDialogs, stopsAProgramThatDoesNotAnswer) {
    make(shortJob(), script("trap '' TERM INT; echo '{\"event\":\"start\",\"frames\":6}'; exec tail -f /dev/null"));
    dialog->setOutput("frame.####.png");
    dialog->setPatience(std::chrono::milliseconds(50));
    dialog->start();
    ASSERT_TRUE(waitUntil([this] { return control<QLabel>("exportProgressText")->text() == "0 of 6 frames"; }));
    dialog->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_THAT(result(), StartsWith("Cancelled. The export did not answer and was stopped."));
    EXPECT_THAT(result(), ::testing::EndsWith("No frame was written."));
}

TEST_F(ExportDialogs, asksBeforeItClosesWhileItRuns) {
    make(shortJob(), script("echo '{\"event\":\"start\",\"frames\":6}'; exec tail -f /dev/null"));
    dialog->setOutput("frame.####.png");
    dialog->start();
    ASSERT_TRUE(waitUntil([this] { return control<QLabel>("exportProgressText")->text() == "0 of 6 frames"; }));
    EXPECT_FALSE(dialog->close());
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(dialog->isRunning());
    EXPECT_EQ(button("exportClose")->text(), "Cancel and close");
    EXPECT_THAT(message(), StartsWith("The export still runs."));
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_THAT(result(), StartsWith("Cancelled."));
}

TEST_F(ExportDialogs, endsTheProgramWhenItGoes) {
    make(shortJob(), script("trap 'rm \"$0.runs\"; exit 130' TERM; : >\"$0.runs\"\n"
                            "echo '{\"event\":\"start\",\"frames\":6}'; tail -f /dev/null & wait; kill $!"));
    dialog->setOutput("frame.####.png");
    dialog->start();
    ASSERT_TRUE(waitUntil([this] { return control<QLabel>("exportProgressText")->text() == "0 of 6 frames"; }));
    ASSERT_EQ(files("*.runs").size(), 1);
    spy.reset();
    dialog.reset();
    EXPECT_EQ(files("*.runs").size(), 0);
}

TEST_F(ExportDialogs, tellsHowFarItIs) {
    make(shortJob(), script("echo '{\"event\":\"start\",\"frames\":6}'\n"
                            "echo 'something that is no JSON'\n"
                            "echo '{\"event\":\"frame\",\"frame\":10,\"seconds\":1.5}'\n"
                            "printf '{\"event\":\"frame\",'\n"
                            "echo '\"frame\":11,\"seconds\":3.0}'\n"
                            "exec tail -f /dev/null"));
    dialog->setOutput("frame.####.png");
    dialog->start();
    ASSERT_TRUE(waitUntil([this] { return control<QProgressBar>("exportProgress")->value() == 2; }));
    EXPECT_EQ(control<QProgressBar>("exportProgress")->maximum(), 6);
    EXPECT_EQ(control<QLabel>("exportProgressText")->text(), "2 of 6 frames, 6.0 s left");
}

TEST_F(ExportDialogs, changesTheEndingWithTheFormat) {
    make(shortJob());
    const auto choose = [this](QString const& ending) {
        auto* const format = control<QComboBox>("exportFormat");
        format->setCurrentIndex(format->findData(ending));
        emit format->activated(format->currentIndex());
        return control<QLineEdit>("exportOutput")->text();
    };
    dialog->setOutput("cut.mp4");
    EXPECT_EQ(choose(".png"), "cut.####.png");
    EXPECT_FALSE(control<QCheckBox>("exportSound")->isEnabled());
    EXPECT_TRUE(control<QCheckBox>("exportOnlyMissing")->isEnabled());
    EXPECT_EQ(choose(".exr"), "cut.####.exr");
    EXPECT_EQ(control<QComboBox>("exportDepth")->currentText(), "16 bits, floating point");
    EXPECT_EQ(choose(".mov"), "cut.mov");
    EXPECT_TRUE(control<QCheckBox>("exportSound")->isEnabled());
    EXPECT_FALSE(control<QCheckBox>("exportOnlyMissing")->isEnabled());
    dialog->setOutput("frame_%04d.TIFF");
    EXPECT_EQ(control<QComboBox>("exportFormat")->currentData().toString(), ".tif");
    EXPECT_EQ(control<QLineEdit>("exportOutput")->text(), "frame_%04d.TIFF") << "the name is the user's";
    EXPECT_EQ(choose(".mkv"), "frame.mkv");
}

TEST_F(ExportDialogs, proposesAnotherNameThanTheOneThatIsPlayed) {
    make({{clip("bframes.mp4")}, {}, {0, 9}, {}});
    EXPECT_EQ(dialog->output(), path("bframes-export.mp4"));
    make({{"plates/shot.####.exr"}, {}, {7, 7}, {}});
    EXPECT_EQ(dialog->output(), path("shot-export.png"));
    EXPECT_EQ(control<QLabel>("exportRange")->text(), "Frame 7, 1 frame");
}

TEST_F(ExportDialogs, saysWhatIsWrongWithTheName) {
    struct Case {
        QString output;
        char const* message;
    };
    make(shortJob());
    for (Case const& wrong :
         {Case{"", "Name the file"}, Case{folder.path(), "This is a folder."},
          Case{"cut.avi", "The ending of the name says what is written. It has to be one of .png,"},
          Case{"frame.png", "Every frame becomes a file of its own"},
          Case{"#-#.png", "The name has more than one place"}, Case{"cut.####.mp4", "A movie is one file"},
          Case{clip("bframes.mp4"), "This file is what is being exported."}}) {
        dialog->setOutput(wrong.output);
        EXPECT_THAT(message(), StartsWith(wrong.message));
        EXPECT_FALSE(button("exportStart")->isEnabled());
        dialog->start();
        EXPECT_FALSE(dialog->isRunning());
        EXPECT_THAT(result(), StartsWith(wrong.message));
    }
}

TEST_F(ExportDialogs, namesEveryControl) {
    make(shortJob());
    for (QWidget* const widget : dialog->findChildren<QWidget*>(QRegularExpression("^export"))) {
        EXPECT_NE(widget->accessibleName(), "") << widget->objectName().toStdString();
        if (widget->objectName() != "exportMessage") {
            EXPECT_NE(widget->toolTip(), "") << widget->objectName().toStdString();
        }
    }
}

TEST(ExportArguments, holdOnlyWhatIsNeededForAnEasyJob) {
    const ExportJob job{{"clip.mp4"}, {}, {0, 47}, {}};
    ExportTarget target;
    target.output = "/out/cut.mp4";
    EXPECT_EQ(renderArguments(job, target),
              (QStringList{"render", "--frames", "0-47", "--output", "/out/cut.mp4", "--depth", "8", "--json",
                           "--scaling", "fit", "--", "clip.mp4"}));
}

TEST(ExportArguments, holdEverySetting) {
    ExportJob job{{"a b.mp4", "-b.otio"}, {"/media/one", "/media/two"}, {10, 57}, {}};
    job.play.resolution = QSize(1920, 1080);
    job.play.scaling = Scaling::one_to_one;
    job.play.outputRate = Rational(24000, 1001);
    job.play.ocio = {"show.ocio", "sRGB", "Film Look"};
    job.play.ramOutputs = true;
    job.play.headFrames = 8;
    job.play.tailFrames = 2;
    job.play.decodeCacheInMiB = 512;
    ExportTarget target;
    target.output = "/out/frame.####.tif";
    target.depth = PixelFormat::rgba16;
    target.onlyMissing = true;
    EXPECT_EQ(renderArguments(job, target), (QStringList{"render",
                                                         "--frames",
                                                         "10-57",
                                                         "--output",
                                                         "/out/frame.####.tif",
                                                         "--depth",
                                                         "16",
                                                         "--json",
                                                         "--skip-existing",
                                                         "--resolution",
                                                         "1920x1080",
                                                         "--scaling",
                                                         "1:1",
                                                         "--fps",
                                                         "24000/1001",
                                                         "--ocio",
                                                         "show.ocio",
                                                         "--display",
                                                         "sRGB",
                                                         "--view",
                                                         "Film Look",
                                                         "--ram",
                                                         "--head",
                                                         "8",
                                                         "--tail",
                                                         "2",
                                                         "--cache",
                                                         "512",
                                                         "--allow-path",
                                                         "/media/one",
                                                         "--allow-path",
                                                         "/media/two",
                                                         "--",
                                                         "a b.mp4",
                                                         "-b.otio"}));
}

TEST(ExportArguments, leaveTheSoundOutOfMoviesOnly) {
    ExportTarget target;
    target.withSound = false;
    target.onlyMissing = true;
    target.output = "/out/cut.mov";
    EXPECT_TRUE(renderArguments({}, target).contains("--no-sound"));
    EXPECT_FALSE(renderArguments({}, target).contains("--skip-existing"));
    target.output = "/out/#.jpg";
    EXPECT_FALSE(renderArguments({}, target).contains("--no-sound"));
}

TEST(ExportDepths, loseNothingThatTheFilesCanHold) {
    struct Case {
        char const* output;
        PixelFormat shown;
        PixelFormat expected;
    };
    for (Case const& row : {Case{"a.png", PixelFormat::rgba8, PixelFormat::rgba8},
                            Case{"a.png", PixelFormat::rgba16f, PixelFormat::rgba16},
                            Case{"a.jpg", PixelFormat::rgba32f, PixelFormat::rgba8},
                            Case{"a.exr", PixelFormat::rgba8, PixelFormat::rgba16f},
                            Case{"a.exr", PixelFormat::rgba32f, PixelFormat::rgba32f},
                            Case{"a.mov", PixelFormat::rgba8, PixelFormat::rgba16}})
        EXPECT_EQ(suitableDepth(row.output, row.shown), row.expected) << row.output;
}

}  // namespace
}  // namespace qrtplay
