#include "options/qrtOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

#include "base/qrtProgramVersion.h"
#include "options/qrtViewOptions.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

class CommandLines : public ::testing::Test {
protected:
    Outcome parse(QStringList const& words) { return parseOptions(QStringList("qrtplay") + words, options); }
    std::string failure(QStringList const& words) {
        const Outcome outcome = parse(words);
        EXPECT_TRUE(outcome.failed()) << words.join(' ').toStdString();
        EXPECT_EQ(outcome.message().find('\n'), std::string::npos);
        return outcome.message();
    }

    int count = 1;
    char name[8] = "qrtplay";
    char* names[2] = {name, nullptr};
    QCoreApplication application{count, names};
    Options options;
};

TEST_F(CommandLines, readEverythingOfRender) {
    const Outcome outcome = parse({"render", "my clip.mp4", "--frames", "99-0x-1", "--output", "out/f.####.png",
                                   "--ram", "--resolution", "1280x720", "--head", "8", "--tail=2"});
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(options.command, Options::Command::render);
    EXPECT_EQ(options.render.input.files, std::vector<std::string>{"my clip.mp4"});
    EXPECT_THAT(options.render.frames, ::testing::ElementsAre(FrameRange{99, 0, -1}));
    EXPECT_EQ(options.render.output.pathOf(3), "out/f.0003.png");
    EXPECT_TRUE(options.render.play.ramOutputs);
    EXPECT_EQ(options.render.play.resolution, QSize(1280, 720));
    EXPECT_EQ(options.render.play.headFrames, 8);
    EXPECT_EQ(options.render.play.tailFrames, 2);
}

TEST_F(CommandLines, renderAllFramesAsTexturesAtTheClipsSizeByDefault) {
    ASSERT_TRUE(parse({"render", "clip.mp4", "--output", "f.#.png"}).success());
    EXPECT_TRUE(options.render.frames.empty());
    EXPECT_FALSE(options.render.play.ramOutputs);
    EXPECT_FALSE(options.render.play.resolution.has_value());
    EXPECT_FALSE(options.render.play.headFrames.has_value());
}

TEST_F(CommandLines, readWhatIsWritten) {
    ASSERT_TRUE(parse({"render", "a.otio", "b.mp4", "--output", "x.####.exr", "--depth", "32f", "--skip-existing",
                       "--dry-run", "--json", "--no-sound", "--allow-path", "/a", "--allow-path", "/b"})
                    .success());
    RenderOptions const& render = options.render;
    EXPECT_THAT(render.input.files, ::testing::ElementsAre("a.otio", "b.mp4"));
    EXPECT_THAT(render.input.allowPaths, ::testing::ElementsAre("/a", "/b"));
    EXPECT_EQ(render.format, (OutputFormat{FileKind::exr, VideoCodec::h264, PixelFormat::rgba32f, 0}));
    EXPECT_EQ(render.play.depth, PixelFormat::rgba32f);
    EXPECT_TRUE(render.skipExisting && render.isDryRun && render.isJson && render.hasOutput);
    EXPECT_FALSE(render.withSound);
    EXPECT_EQ(render.words.front(), "qrtplay");
}

TEST_F(CommandLines, readHowItIsPlayed) {
    ASSERT_TRUE(parse({"render", "a.otio",    "--no-output", "--loop", "7",         "--scaling", "1:1",
                       "--fps",  "23.976",    "--cache",     "64",     "--convert", "cpu",       "--ocio",
                       "c.ocio", "--display", "D",           "--view", "V",         "--depth",   "16"})
                    .success());
    RenderOptions const& render = options.render;
    EXPECT_FALSE(render.hasOutput);
    EXPECT_EQ(render.loops, 7);
    EXPECT_EQ(render.play.scaling, Scaling::one_to_one);
    EXPECT_EQ(render.play.outputRate, Rational(24000, 1001));
    EXPECT_EQ(render.play.decodeCacheInMiB, 64);
    EXPECT_EQ(render.play.ocio.config + render.play.ocio.display + render.play.ocio.view, "c.ocioDV");
    EXPECT_EQ(render.play.depth, PixelFormat::rgba16);
    EXPECT_EQ(render.play.conversion, ConversionChoice::cpu);
}

TEST_F(CommandLines, refuseWhatDoesNotGoTogether) {
    const auto refusal = [this](QStringList const& words) { return failure(QStringList{"render", "a.mp4"} + words); };
    EXPECT_THAT(refusal({"--output", "x.#.png", "--no-output"}), HasSubstr("--output and --no-output"));
    EXPECT_THAT(refusal({"--no-output", "--dry-run"}), HasSubstr("--dry-run and --no-output"));
    EXPECT_THAT(refusal({"--output", "x.#.png", "--loop", "2"}), HasSubstr("--loop needs --no-output"));
    EXPECT_THAT(refusal({"--output", "x.#.mp4"}), HasSubstr("a movie has no place"));
    EXPECT_THAT(refusal({"--output", "x.mp4", "--codec", "av1"}), HasSubstr("--codec 'av1'"));
    EXPECT_THAT(refusal({"--output", "x.png", "--depth", "10"}), HasSubstr("--depth '10'"));
    EXPECT_THAT(refusal({"--output", "x.jpg", "--quality", "101"}), HasSubstr("--quality '101'"));
    EXPECT_THAT(refusal({"--output", "x.png", "--scaling", "big"}), HasSubstr("--scaling 'big'"));
    EXPECT_THAT(refusal({"--output", "x.png", "--fps", "fast"}), HasSubstr("rate 'fast'"));
    EXPECT_THAT(refusal({"--output", "x.png", "--cache", "0"}), HasSubstr("--cache '0'"));
    EXPECT_THAT(refusal({"--output", "x.png", "--convert", "dsp"}), HasSubstr("--convert 'dsp'"));
    EXPECT_THAT(failure({"contact-sheet", "a.mp4", "--output", "x.mov"}), HasSubstr("no movie"));
    EXPECT_THAT(failure({"contact-sheet", "a.mp4", "--output", "x.png", "--convert", "dsp"}), HasSubstr("--convert"));
}

TEST_F(CommandLines, areRefusedInOneLineWhateverTheWordsHold) {
    EXPECT_THAT(failure({"no\nfile"}), HasSubstr("'no?file': neither a file nor a command"));
    EXPECT_THAT(failure({"render", "a.mp4", "--output", "x\r\ny"}), HasSubstr("output 'x??y'"));
}

TEST_F(CommandLines, readEverythingOfContactSheet) {
    ASSERT_TRUE(
        parse({"contact-sheet", "clip.mp4", "--output", "s.png", "--columns", "6", "--rows", "5", "--width", "2400"})
            .success());
    EXPECT_EQ(options.command, Options::Command::contact_sheet);
    EXPECT_EQ(options.contactSheet.input.files, std::vector<std::string>{"clip.mp4"});
    EXPECT_EQ(options.contactSheet.output, "s.png");
    EXPECT_EQ(options.contactSheet.columns, 6);
    EXPECT_EQ(options.contactSheet.rows, 5);
    EXPECT_EQ(options.contactSheet.width, 2400);
}

TEST_F(CommandLines, nameAFileForTheTraceOfAllThatPlays) {
    for (QStringList const& words : {QStringList{"a.mp4"}, QStringList{"render", "a.mp4", "--output", "x.#.png"},
                                     QStringList{"contact-sheet", "a.mp4", "--output", "x.png"}}) {
        ASSERT_TRUE(parse(words).success());
        EXPECT_EQ(options.trace, "");
        ASSERT_TRUE(parse(words + QStringList{"--trace", "out.JSON"}).success());
        EXPECT_EQ(options.trace, "out.JSON");
        EXPECT_THAT(failure(words + QStringList{"--trace", "out.otio"}), HasSubstr("--trace 'out.otio'"));
    }
    EXPECT_THAT(failure({"render", "a.mp4", "--output", "x.#.png", "--dry-run", "--trace", "x.json"}),
                HasSubstr("--trace and --dry-run"));
    EXPECT_THAT(failure({"info", "a.mp4", "--trace", "x.json"}), HasSubstr("trace"));
}

TEST_F(CommandLines, openTheWindowForFilesWithoutACommand) {
    ASSERT_TRUE(parse({"a.mp4", "b.mp4", "--start", "7", "--play", "--ping-pong", "--full-screen", "--every-frame",
                       "--mute", "--fps", "25", "--allow-path", "/a"})
                    .success());
    EXPECT_EQ(options.command, Options::Command::view);
    ViewOptions const& view = options.view;
    EXPECT_THAT(view.input.files, ::testing::ElementsAre("a.mp4", "b.mp4"));
    EXPECT_THAT(view.input.allowPaths, ::testing::ElementsAre("/a"));
    EXPECT_TRUE(view.input.imageRate == Rational(25, 1));
    EXPECT_EQ(view.start, 7);
    EXPECT_EQ(view.mode, PlayParams::ping_pong);
    EXPECT_TRUE(view.isPlaying && view.isFullScreen && view.isEveryFrame && view.isMuted);
}

TEST_F(CommandLines, openAnEmptyWindowWithoutFiles) {
    for (QStringList const& words : {QStringList(), QStringList("view"), QStringList("--full-screen")}) {
        ASSERT_TRUE(parse(words).success()) << words.join(' ').toStdString();
        EXPECT_EQ(options.command, Options::Command::view);
        EXPECT_TRUE(options.view.input.files.empty());
    }
}

TEST_F(CommandLines, takeAFileForACommandsNameOnlyWhenItLooksLikeAFile) {
    for (const char* const file : {"clip.mp4", "./render", "shot####", "/tmp"})
        EXPECT_TRUE(parse({file}).success()) << file;
    EXPECT_THAT(failure({"rendre"}), HasSubstr("'rendre': neither a file nor a command"));
    EXPECT_TRUE(parse({"view", "rendre"}).success());
}

TEST_F(CommandLines, putTheWindowsOptionsInThePlaceOfWhatWasKept) {
    ASSERT_TRUE(parse({"clip.mp4", "--resolution", "640x360", "--vram", "--head", "5", "--scaling", "fill"}).success());
    PlaySettings kept;
    kept.ramOutputs = true;
    kept.tailFrames = 3;
    kept.ocio.config = "kept.ocio";
    overrideSettings(options.view, kept);
    EXPECT_EQ(kept.resolution, QSize(640, 360));
    EXPECT_FALSE(kept.ramOutputs);
    EXPECT_EQ(kept.headFrames, 5);
    EXPECT_EQ(kept.scaling, Scaling::fill);
    EXPECT_EQ(kept.tailFrames, 3) << "was not named";
    EXPECT_EQ(kept.ocio.config, "kept.ocio") << "was not named";
}

TEST_F(CommandLines, takeAClipWhoseNameBeginsWithADashAfterTwoDashes) {
    ASSERT_TRUE(parse({"render", "--output", "f.#.png", "--", "-odd.mp4"}).success());
    EXPECT_EQ(options.render.input.files, std::vector<std::string>{"-odd.mp4"});
}

TEST_F(CommandLines, failWithALineThatNamesTheWord) {
    EXPECT_THAT(failure({"play"}), HasSubstr("'play'"));
    EXPECT_THAT(failure({"clip.mp4", "--loop", "--ping-pong"}), HasSubstr("exclude"));
    EXPECT_THAT(failure({"clip.mp4", "--start", "-1"}), HasSubstr("--start '-1'"));
    EXPECT_THAT(failure({"clip.mp4", "--ful-screen"}), HasSubstr("ful-screen"));
    EXPECT_THAT(failure({"render"}), HasSubstr("no file is named"));
    EXPECT_THAT(failure({"contact-sheet", "a", "b", "--output", "f.png"}), HasSubstr("'b'"));
    EXPECT_THAT(failure({"self-test", "a"}), HasSubstr("'a'"));
    EXPECT_THAT(failure({"info"}), HasSubstr("no file is named"));
    EXPECT_THAT(failure({"render", "a"}), HasSubstr("--output"));
    EXPECT_THAT(failure({"render", "a", "--output"}), HasSubstr("output"));
    EXPECT_THAT(failure({"render", "a", "--outptu", "x.png"}), HasSubstr("outptu"));
    EXPECT_THAT(failure({"render", "a", "--output", "x.gif"}), HasSubstr("'x.gif'"));
    EXPECT_THAT(failure({"render", "a", "--output", "x.png", "--frames", "1..2"}), HasSubstr("'1..2'"));
    EXPECT_THAT(failure({"render", "a", "--output", "x.png", "--ram", "--vram"}), HasSubstr("exclude"));
    EXPECT_THAT(failure({"contact-sheet", "a", "--output", "x.png", "--columns", "0"}), HasSubstr("--columns '0'"));
    EXPECT_THAT(failure({"contact-sheet", "a", "--output", "x.png", "--width", "1e9"}), HasSubstr("--width '1e9'"));
}

TEST_F(CommandLines, refuseAbsurdNumbers) {
    for (const char* const size :
         {"0x0", "640", "x", "640x", "-1x5", "640x360x2", "16385x1", "1x999999999", "99999999999x1"}) {
        EXPECT_THAT(failure({"render", "a", "--output", "x.png", "--resolution", size}),
                    HasSubstr("resolution '" + std::string(size) + "'"));
    }
    for (const char* const number : {"-1", "10001", "x", "", "99999999999"}) {
        EXPECT_THAT(failure({"render", "a", "--output", "x.png", QString("--head=%1").arg(number)}),
                    HasSubstr("--head"));
        EXPECT_THAT(failure({"render", "a", "--output", "x.png", QString("--tail=%1").arg(number)}),
                    HasSubstr("--tail"));
    }
}

TEST_F(CommandLines, explainEveryCommandAndOption) {
    ASSERT_TRUE(parse({"--help"}).success());
    EXPECT_EQ(options.command, Options::Command::print);
    for (const char* const word :
         {"render",  "contact-sheet", "info",         "self-test",   "--version",     "xvfb-run",      "Exit status",
          "--start", "--play",        "--loop",       "--ping-pong", "--full-screen", "--every-frame", "--mute",
          "--fps",   "--allow-path",  "--resolution", "--scaling",   "--ocio",        "--display",     "--view",
          "--vram",  "--ram",         "--head",       "--tail",      "--cache",       "--convert",     "--trace"})
        EXPECT_THAT(options.text, HasSubstr(word));
    EXPECT_EQ(options.text.find("scripts/"), std::string::npos) << "they are not installed";
    ASSERT_TRUE(parse({"view", "--help"}).success());
    for (const char* const word : {"--start", "--full-screen", "Examples", "Exit status"})
        EXPECT_THAT(options.text, HasSubstr(word));
    ASSERT_TRUE(parse({"render", "--help"}).success());
    EXPECT_EQ(options.command, Options::Command::print);
    for (const char* const word :
         {"--frames",  "--output", "--vram",     "--ram",           "--resolution", "--head",      "--tail",
          "10-90x5",   "Examples", "--fps",      "--loop",          "--allow-path", "--no-output", "--depth",
          "--quality", "--codec",  "--no-sound", "--skip-existing", "--dry-run",    "--scaling",   "--ocio",
          "--display", "--view",   "--cache",    "--convert",       "--json",       "--trace",     "Exit status"})
        EXPECT_THAT(options.text, HasSubstr(word));
    ASSERT_TRUE(parse({"contact-sheet", "--help"}).success());
    for (const char* const word : {"--output", "--columns", "--rows", "--width", "--convert", "--trace", "Examples"})
        EXPECT_THAT(options.text, HasSubstr(word));
}

TEST_F(CommandLines, tellTheVersion) {
    ASSERT_TRUE(parse({"--version"}).success());
    EXPECT_EQ(options.text, "qrtplay " + std::string(versionNumber) + "\n");
}

}  // namespace
}  // namespace qrtplay
