// The program itself, run as a user runs it.
#include "host/qrtCommandFixture.h"

#include <QRegularExpression>

namespace qrtplay {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(Command, writesTheFramesOfARangeIntoAFolderThatItMakes) {
    const Result result =
        run({"render", clip("bframes.mp4"), "--frames", "8-16x4", "--output", "new/out/frame.####.png"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(files("new/out"), (QStringList{"frame.0008.png", "frame.0012.png", "frame.0016.png"}));
    EXPECT_EQ(image("new/out/frame.0012.png").size(), QSize(160, 96));
    EXPECT_THAT(result.output, StartsWith("3 of 3 frames written to new/out/frame.####.png: "));
    EXPECT_THAT(result.output, HasSubstr(" produced on demand, "));
    EXPECT_THAT(result.output, HasSubstr(" cache hits\n"));
}

TEST_F(Command, writesTheSamePicturesWhateverTheOrderAndTheOutput) {
    ASSERT_EQ(run({"render", clip("bframes.mp4"), "--output", "vram/%02d.png"}).status, 0);
    ASSERT_EQ(run({"render", clip("bframes.mp4"), "--frames", "47-0x-1", "--ram", "--head", "5", "--tail", "1",
                   "--output", "ram/##.png"})
                  .status,
              0);
    ASSERT_EQ(files("vram").size(), 48);
    ASSERT_EQ(files("ram"), files("vram"));
    for (const QString& name : files("ram"))
        EXPECT_EQ(image("ram/" + name), image("vram/" + name)) << name.toStdString();
    EXPECT_NE(image("vram/10.png"), image("vram/11.png"));
}

TEST_F(Command, writesASingleFrameWithoutAPlaceForItsNumber) {
    const Result result = run({"render", clip("a name with spaces, 100% and #.mp4"), "--frames", "7", "--output",
                               "a poster.png", "--resolution", "40x40"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(image("a poster.png").size(), QSize(40, 40));
    EXPECT_EQ(image("a poster.png").pixel(20, 1), qRgb(0, 0, 0));
}

TEST_F(Command, writesWhatATruncatedClipHoldsAndNamesTheRest) {
    const Result result = run({"render", clip("truncated.mp4"), "--frames", "20-40", "--output", "##.png"});
    EXPECT_EQ(result.status, 6);
    EXPECT_EQ(files(), (QStringList{"20.png", "21.png", "22.png", "23.png"}));
    EXPECT_THAT(result.errors, HasSubstr("qrtplay: " + clipPath("truncated.mp4") +
                                         ": frame 24: damaged, or depends on a damaged one\n"));
    EXPECT_THAT(result.errors,
                HasSubstr("qrtplay: " + clipPath("truncated.mp4") + ": frames 25-40: missing, the file is cut off\n"));
    EXPECT_THAT(result.output, StartsWith("4 of 21 frames written"));
}

TEST_F(Command, tellsProgressInPlainLinesWithoutATerminal) {
    const Result result = run({"render", clip("bframes.mp4"), "--output", "##.png"});
    EXPECT_THAT(result.errors, HasSubstr("qrtplay: 48 of 48 frames, "));
    EXPECT_THAT(result.errors, Not(HasSubstr("\r")));
    EXPECT_LE(std::count(result.errors.begin(), result.errors.end(), '\n'), 10);
}

TEST_F(Command, endsWithOneLineForBadClips) {
    for (const char* const name : {"text.mp4", "text.txt", "empty.mp4", "headless.mp4", "folder.mp4"})
        EXPECT_THAT(failure({"render", clip(name), "--output", "##.png"}, 4), HasSubstr(name));
    EXPECT_THAT(failure({"render", clip("no-such.mp4"), "--output", "##.png"}, 3), HasSubstr("no-such.mp4"));
    EXPECT_THAT(failure({"render", clip("no-such.####.exr"), "--output", "##.png"}, 3), HasSubstr("no-such.####.exr"));
    EXPECT_THAT(failure({"render", clip("no-such.otio"), "--output", "##.png"}, 3), HasSubstr("no-such.otio"));
    EXPECT_TRUE(files().empty());
}

TEST_F(Command, endsWithOneLineForFramesThatTheClipDoesNotHave) {
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--frames", "40-48", "--output", "##.png"}, 2),
                HasSubstr("frames '40-48': outside the clip, whose frames are 0-47"));
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--frames", "5..9", "--output", "##.png"}, 2),
                HasSubstr("'5..9'"));
    EXPECT_TRUE(files().empty());
}

TEST_F(Command, endsWithOneLineForAFolderThatCannotBeWrittenTo) {
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "/proc/none/##.png"}), HasSubstr("/proc/none"));
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "/proc/##.png"}), HasSubstr("/proc"));
    EXPECT_THAT(failure({"contact-sheet", clip("bframes.mp4"), "--output", "/proc/none/sheet.png"}),
                HasSubstr("/proc/none"));
}

TEST_F(Command, namesTheFrameThatCannotBeWritten) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("02.png"));
    const Result result = run({"render", clip("bframes.mp4"), "--frames", "1-3", "--output", "##.png"});
    EXPECT_EQ(result.status, 6);
    EXPECT_THAT(result.errors, HasSubstr("qrtplay: frame 2: 02.png: cannot be written"));
    EXPECT_EQ(files(), (QStringList{"01.png", "03.png"}));
}

TEST_F(Command, endsWithOneLineForAbsurdSizes) {
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "##.png", "--resolution", "100000x100000"}, 2),
                HasSubstr("100000x100000"));
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "##.png", "--resolution", "0x5"}, 2),
                HasSubstr("0x5"));
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "##.png", "--resolution", "16000x16000", "--head",
                         "10000"}),
                HasSubstr("16000x16000"));
}

TEST_F(Command, refusesSeveralFramesForOneName) {
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "one.png"}, 2), HasSubstr("'one.png'"));
    EXPECT_TRUE(files().empty());
}

TEST_F(Command, endsWithOneLineThatSaysHowToGetADisplay) {
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    const std::string none = failure({"render", clip("bframes.mp4"), "--output", "##.png"}, 5);
    EXPECT_THAT(none, HasSubstr("xvfb-run"));
    EXPECT_THAT(none, Not(HasSubstr("scripts/"))) << "they are not installed";
    environment.insert("DISPLAY", ":987654");
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "##.png"}, 5), HasSubstr("':987654'"));
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    // That plugin never frees its screen, which LeakSanitizer would tell in more lines than one.
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":detect_leaks=0");
    EXPECT_THAT(failure({"render", clip("bframes.mp4"), "--output", "##.png"}, 5), HasSubstr("'offscreen'"));
}

TEST_F(Command, putsWhatQtSaysBeforeItEndsTheProcessInOneLine) {
    environment.insert("QT_QPA_PLATFORM", "nonsense");
    const Result result = run({"self-test"}, QProcess::CrashExit);
    EXPECT_THAT(result.errors, StartsWith("qrtplay: This application failed to start because"));
    EXPECT_THAT(result.errors, HasSubstr(" Available platform plugins are: "));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_THAT(result.errors, Not(HasSubstr("?"))) << result.errors;
}

TEST_F(Command, explainsItselfWithoutADisplay) {
    environment.remove("DISPLAY");
    for (const QStringList& words : {QStringList{"--help"},
                                     {"render", "--help"},
                                     {"contact-sheet", "-h"},
                                     {"info", "--help"},
                                     {"self-test", "--help"},
                                     {"--version"}}) {
        const Result result = run(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_THAT(result.output, HasSubstr("qrtplay"));
    }
}

TEST_F(Command, leavesNoPartialFileWhenItIsInterrupted) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(QRT_PLAY_PROGRAM,
                  {"render", clip("bframes.mp4"), "--frames", "0-47,0-47,0-47,0-47,0-47,0-47,0-47,0-47", "--resolution",
                   "1280x720", "--output", "##.png"});
    while (files().filter(QRegularExpression("^[0-9]+\\.png$")).isEmpty() && process.state() != QProcess::NotRunning)
        process.waitForReadyRead(10);
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 130);
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("qrtplay: interrupted after "));
    for (const QString& name : files()) {
        EXPECT_TRUE(name.endsWith(".png")) << name.toStdString();
        EXPECT_EQ(image(name).size(), QSize(1280, 720)) << name.toStdString();
    }
}

TEST_F(Command, drawsAContactSheet) {
    const Result result = run({"contact-sheet", clip("bframes.mp4"), "--output", "sheets/sheet.png", "--columns", "3",
                               "--rows", "2", "--width", "600"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("6 of 48 frames on sheets/sheet.png"));
    EXPECT_EQ(image("sheets/sheet.png").width(), 600);
    EXPECT_EQ(files("sheets"), QStringList{"sheet.png"});
}

TEST_F(Command, drawsAContactSheetOfAClipWithFewFrames) {
    EXPECT_EQ(run({"contact-sheet", clip("cover.png"), "--output", "sheet.png"}).status, 0);
    EXPECT_FALSE(image("sheet.png").isNull());
}

TEST_F(Command, drawsAContactSheetOfWhatATruncatedClipHolds) {
    const Result result = run({"contact-sheet", clip("truncated.mp4"), "--output", "sheet.png"});
    EXPECT_EQ(result.status, 6);
    EXPECT_THAT(result.errors, HasSubstr("missing, the file is cut off"));
    EXPECT_FALSE(image("sheet.png").isNull());
}

}  // namespace
}  // namespace qrtplay
