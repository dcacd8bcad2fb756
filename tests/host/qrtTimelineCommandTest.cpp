// Timelines, several files, scaling and colours through the program, on media whose pixels tell file and frame.
#include "host/qrtCommandFixture.h"
#include "host/qrtOtioText.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

/// Frame n of film.mkv is all of red n and green 20, of pal.mkv of red n and green 120.
class TimelineCommand : public Command {
protected:
    static QString painted(QString const& name) { return QString(QRT_PAINTED_MEDIA) + "/" + name; }
    QString put(QString const& name, std::string const& text) {
        writeText(folder.filePath(name).toStdString(), text);
        return folder.filePath(name);
    }
    QColor middleOf(QString const& name) {
        const QImage picture = image(name);
        return picture.pixelColor(picture.width() / 2, picture.height() / 2);
    }
};

TEST_F(TimelineCommand, playsSeveralFilesOneAfterTheOther) {
    const Result result =
        run({"render", painted("film.mkv"), painted("pal.mkv"), "--frames", "238-241", "--output", "###.png"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(middleOf("238.png"), QColor(238, 20, 0));
    EXPECT_EQ(middleOf("239.png"), QColor(239, 20, 0));
    EXPECT_EQ(middleOf("240.png"), QColor(0, 120, 0));
    EXPECT_EQ(middleOf("241.png"), QColor(1, 120, 0));
}

TEST_F(TimelineCommand, scalesAsItIsTold) {
    const QStringList render{"render", painted("film.mkv"), "--frames", "100", "--resolution", "100x100", "--output"};
    ASSERT_EQ(run(render + QStringList{"fit.png"}).status, 0);
    ASSERT_EQ(run(render + QStringList{"fill.png", "--scaling", "fill"}).status, 0);
    ASSERT_EQ(run(render + QStringList{"one.png", "--scaling", "1:1"}).status, 0);
    const QColor colour(100, 20, 0);
    for (const char* const name : {"fit.png", "fill.png", "one.png"})
        EXPECT_EQ(middleOf(name), colour) << name;
    EXPECT_EQ(image("fit.png").pixelColor(1, 50), colour);
    EXPECT_EQ(image("fit.png").pixelColor(50, 1), QColor(Qt::black));
    EXPECT_EQ(image("fill.png").pixelColor(50, 1), colour);
    EXPECT_EQ(image("one.png").pixelColor(50 - 17, 50), QColor(Qt::black)) << "32 pixels wide";
    EXPECT_EQ(image("one.png").pixelColor(50 - 15, 50), colour);
}

TEST_F(TimelineCommand, showsColoursAsTheConfigurationSays) {
    const QString config = put("exchange.ocio", R"(ocio_profile_version: 2
strictparsing: true
roles: {default: plain, scene_linear: plain}
file_rules:
  - !<Rule> {name: Default, colorspace: plain}
displays:
  screen:
    - !<View> {name: plain, colorspace: plain}
    - !<View> {name: exchanged, colorspace: exchanged}
colorspaces:
  - !<ColorSpace> {name: plain}
  - !<ColorSpace>
    name: exchanged
    from_scene_reference: !<MatrixTransform> {matrix: [0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]}
)");
    const QStringList render{"render", painted("film.mkv"), "--frames", "200", "--ocio", config, "--output"};
    ASSERT_EQ(run(render + QStringList{"plain.png"}).status, 0);
    ASSERT_EQ(run(render + QStringList{"exchanged.png", "--display", "screen", "--view", "exchanged"}).status, 0);
    EXPECT_EQ(middleOf("plain.png"), QColor(200, 20, 0));
    EXPECT_EQ(middleOf("exchanged.png"), QColor(20, 200, 0));
    EXPECT_THAT(failure(render + QStringList{"none.png", "--view", "sepia"}), HasSubstr("sepia"));
}

TEST_F(TimelineCommand, opensNothingThatATimelineNamesOutsideOfTheFoldersThatAreAllowed) {
    const QString file =
        put("cut.otio", otio::timeline({otio::track(
                            "Video", {otio::clip(otio::file(painted("film.mkv").toStdString()), {100, 2, 24})})}));
    const QStringList render{"render", file, "--frames", "0", "--resolution", "320x180", "--output"};
    const Result refused = run(render + QStringList{"refused.png", "--allow-path", folder.path()});
    EXPECT_THAT(refused.errors, HasSubstr("film.mkv' lies outside of the folders that --allow-path names"));
    const Result allowed = run(
        render + QStringList{"allowed.png", "--allow-path", folder.path(), "--allow-path", QString(QRT_PAINTED_MEDIA)});
    EXPECT_EQ(middleOf("allowed.png"), QColor(100, 20, 0)) << allowed.errors;
    put("cut.otio", otio::timeline({otio::track("Video", {otio::clip(otio::file("nowhere/film.mkv"), {100, 2, 24})})}));
    const Result missing = run(render + QStringList{"missing.png"});
    EXPECT_EQ(refused.status, missing.status) << "what is refused is missing";
    EXPECT_NE(image("refused.png"), image("allowed.png"));
}

TEST_F(TimelineCommand, followsNoLinkOutOfAFolderOfImages) {
    const QString plates = folder.filePath("plates");
    QDir().mkdir(plates);
    ASSERT_TRUE(QFile::copy(clip("stills/plate.0101.png"), plates + "/plate.1.png"));
    ASSERT_TRUE(QFile::link(clip("stills/plate.0102.png"), plates + "/plate.2.png"));
    const QStringList info{"info", plates + "/plate.#.png"};
    EXPECT_EQ(run(info).status, 0);
    EXPECT_EQ(run(info + QStringList{"--allow-path", clip("stills")}).status, 0);
    EXPECT_THAT(failure(info + QStringList{"--allow-path", plates}, 4), HasSubstr("--allow-path"));
}

TEST_F(TimelineCommand, letsNoNameControlTheTerminal) {
    const QString film = "fi\x1b[2J\nlm\u009b.mkv";
    ASSERT_TRUE(QFile::copy(painted("film.mkv"), folder.filePath(film)));
    const QString cut =
        put("cu\nt.otio",
            otio::timeline({otio::track("Video", {otio::clip(otio::file("gone\\u001b[2J\\n.mov"), {0, 2, 24})})}));
    const QString text = put("no\x1b[2J media.mov", "nothing");
    for (QStringList const& words : {QStringList{"info", film},
                                     {"info", cut},
                                     {"info", text},
                                     {"info", "x\x1b.mov"},
                                     {"render", film, "--frames", "0", "--output", "o\x1b[1m.png"},
                                     {"render", cut, "--frames", "0", "--output", "##.png"},
                                     {"render", cut, "--dry-run", "--output", "\x1b[1m##.png"},
                                     {"contact-sheet", film, "--output", "s\n.png", "--columns", "1", "--rows", "1"}}) {
        const Result result = run(words);
        for (const char sign : result.output + result.errors)
            ASSERT_TRUE(sign == '\n' || (sign >= ' ' && sign < '\x7f')) << result.output << result.errors;
        EXPECT_NE(result.output + result.errors, "");
    }
    EXPECT_EQ(failure({"info", text}, 4),
              "qrtplay: " + folder.path().toStdString() +
                  "/no?[2J media.mov: is no media file, or has lost the part that describes it\n");
}

TEST_F(TimelineCommand, drawsAContactSheetOfATimeline) {
    const QString file =
        put("cut.otio", otio::timeline({otio::track(
                            "Video", {otio::clip(otio::file(painted("film.mkv").toStdString()), {100, 12, 24}),
                                      otio::clip(otio::file(painted("pal.mkv").toStdString()), {50, 25, 25})})}));
    const Result result =
        run({"contact-sheet", file, "--output", "sheet.png", "--columns", "2", "--rows", "1", "--width", "640"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const QImage sheet = image("sheet.png");
    std::set<int> greens;
    for (int x = 0; x < sheet.width(); ++x)
        greens.insert(sheet.pixelColor(x, sheet.height() / 3).green());
    EXPECT_EQ(greens.count(20), 1u) << "a frame of film.mkv";
    EXPECT_EQ(greens.count(120), 1u) << "a frame of pal.mkv";
}

}  // namespace
}  // namespace qrtplay
