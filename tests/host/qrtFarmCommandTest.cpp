// What render farms rely on: exit statuses, JSON, going on after an interruption, whole files only.
#include <rapidjson/document.h>

#include <sstream>

#include "host/qrtCommandFixture.h"
#include "host/qrtDecodedFile.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class FarmCommand : public Command {
protected:
    static std::vector<rapidjson::Document> eventsOf(std::string const& output) {
        std::vector<rapidjson::Document> events;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            events.emplace_back();
            EXPECT_FALSE(events.back().Parse(line.c_str()).HasParseError()) << line;
        }
        return events;
    }
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    void put(QString const& name, QByteArray const& bytes) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray bytesOf(QString const& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(FarmCommand, tellsEverythingAsJsonOnStandardOutput) {
    const Result result = run({"render", clip("bframes.mp4"), "--frames", "40-", "--output", "##.png", "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto events = eventsOf(result.output);
    ASSERT_EQ(events.size(), 10u);
    EXPECT_STREQ(events.front()["event"].GetString(), "start");
    EXPECT_STREQ(events.back()["event"].GetString(), "summary");
    EXPECT_EQ(events.back()["written"].GetInt(), 8);
    EXPECT_EQ(events.back()["exit"].GetInt(), 0);
    EXPECT_THAT(result.errors, HasSubstr("8 of 8 frames written"));
}

TEST_F(FarmCommand, endsJsonWithASummaryWhateverGoesWrong) {
    struct Case {
        QStringList words;
        int status;
    };
    for (Case const& wrong : {Case{{"render", "none.mp4", "--output", "#.png"}, 3},
                              Case{{"render", clip("text.mp4"), "--output", "#.png"}, 4},
                              Case{{"render", clip("bframes.mp4"), "--frames", "99", "--output", "#.png"}, 2},
                              Case{{"render", clip("bframes.mp4"), "--output", "/proc/none/#.png"}, 1},
                              Case{{"render", clip("truncated.mp4"), "--frames", "20-30", "--output", "#.png"}, 6}}) {
        const Result result = run(wrong.words + QStringList{"--json"});
        EXPECT_EQ(result.status, wrong.status) << result.errors;
        const auto events = eventsOf(result.output);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events.back()["exit"].GetInt(), wrong.status);
    }
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    const Result result = run({"render", clip("bframes.mp4"), "--output", "#.png", "--json"});
    EXPECT_EQ(result.status, 5);
    EXPECT_EQ(eventsOf(result.output).back()["exit"].GetInt(), 5);
}

TEST_F(FarmCommand, rendersOnlyWhatIsMissing) {
    put("41.png", "not ours");
    put("43.png", "");
    const QStringList words{"render", clip("bframes.mp4"), "--frames", "40-45", "--output",
                            "##.png", "--skip-existing"};
    const Result result = run(words);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("5 of 5 frames written to ##.png (1 more were there)"));
    EXPECT_EQ(bytesOf("41.png"), "not ours");
    EXPECT_EQ(image("43.png").size(), QSize(160, 96));
    const auto events = eventsOf(run(words + QStringList{"--json"}).output);
    EXPECT_EQ(events.back()["skipped"].GetInt(), 6);
    EXPECT_EQ(events.back()["written"].GetInt(), 0);
}

TEST_F(FarmCommand, leavesAMovieThatIsThereAlone) {
    put("a.mkv", "not ours");
    const QStringList words{"render", clip("bframes.mp4"), "--frames", "0-3", "--output", "a.mkv"};
    EXPECT_EQ(run(words + QStringList{"--skip-existing"}).status, 0);
    EXPECT_EQ(bytesOf("a.mkv"), "not ours");
    EXPECT_EQ(run(words).status, 0);
    EXPECT_EQ(DecodedFile(path("a.mkv")).pictures.size(), 4u);
}

TEST_F(FarmCommand, saysWhatItWouldWriteWithoutWritingAndWithoutADisplay) {
    put("41.png", "x");
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    const QStringList words{"render", clip("bframes.mp4"), "--frames", "40-42", "--output", "##.png", "--dry-run"};
    const Result result = run(words);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("write    40.png\nreplace  41.png\nwrite    42.png\n"));
    EXPECT_THAT(result.output, HasSubstr("dry run: 3 frames of 160 x 96, 24 frames/s, 8 bits"));
    const auto events = eventsOf(run(words + QStringList{"--json", "--skip-existing"}).output);
    ASSERT_EQ(events.size(), 4u);
    EXPECT_STREQ(events[0]["action"].GetString(), "skip");
    EXPECT_EQ(events[0]["frame"].GetInt(), 41);
    EXPECT_EQ(events[3]["to_write"].GetInt(), 2);
    EXPECT_EQ(files(), QStringList{"41.png"});
    EXPECT_EQ(run({"render", "none.mp4", "--output", "new/##.png", "--dry-run"}).status, 3);
    EXPECT_FALSE(QDir(folder.filePath("new")).exists());
}

TEST_F(FarmCommand, leavesWholeFilesWhenItIsInterruptedAndSaysHowToGoOn) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(QRT_PLAY_PROGRAM, {"render", clip("bframes.mp4"), "--frames", "0-47,0-47,0-47,0-47,0-47,0-47",
                                     "--resolution", "1280x720", "--output", "a ##.png", "--json"});
    QByteArray output;
    while (!output.contains("\"event\":\"frame\"") && process.waitForReadyRead(60000))
        output += process.readAllStandardOutput();
    ASSERT_TRUE(output.contains("\"event\":\"frame\""));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(60000));
    output += process.readAllStandardOutput();
    EXPECT_EQ(process.exitCode(), 130);
    const auto events = eventsOf(output.toStdString());
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events.back()["exit"].GetInt(), 130);
    rapidjson::Document const& interrupted = events[events.size() - 2];
    EXPECT_STREQ(interrupted["event"].GetString(), "interrupted");
    EXPECT_THAT(interrupted["resume"].GetString(), HasSubstr(" render --skip-existing "));
    EXPECT_THAT(interrupted["resume"].GetString(), HasSubstr("'a ##.png'"));
    EXPECT_FALSE(files().isEmpty());
    for (const QString& name : files())
        EXPECT_EQ(image(name).size(), QSize(1280, 720)) << name.toStdString();
}

TEST_F(FarmCommand, writesAMovieWithItsSound) {
    const Result result = run({"render", clip("bframes.mp4"), "--output", "a.mkv", "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(eventsOf(result.output).front()["sound"].GetBool());
    const DecodedFile file(path("a.mkv"));
    EXPECT_EQ(file.pictures.size(), 48u);
    EXPECT_EQ(file.left.size(), size_t{2 * 48000});
    ASSERT_EQ(run({"render", clip("bframes.mp4"), "--output", "b.mov", "--no-sound", "--frames", "0-5"}).status, 0);
    EXPECT_EQ(DecodedFile(path("b.mov")).stream(AVMEDIA_TYPE_AUDIO), nullptr);
}

TEST_F(FarmCommand, writesDeepImages) {
    ASSERT_EQ(run({"render", clip("bframes.mp4"), "--frames", "3", "--output", "a.exr"}).status, 0);
    ASSERT_EQ(run({"render", clip("bframes.mp4"), "--frames", "3", "--output", "a.tif", "--depth", "16"}).status, 0);
    EXPECT_EQ(DecodedFile(path("a.exr")).pictures.at(0)->format, AV_PIX_FMT_GBRPF32);
    EXPECT_EQ(DecodedFile(path("a.tif")).pictures.at(0)->format, AV_PIX_FMT_RGB48LE);
}

TEST_F(FarmCommand, playsLoopsAndTellsTheMemory) {
    const Result result = run({"render", clip("bframes.mp4"), "--loop", "2", "--no-output"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("96 of 96 frames played"));
    EXPECT_THAT(result.output, HasSubstr(" MiB at the end of the first loop, "));
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(FarmCommand, drawsNoBarWithoutATerminal) {
    const Result result = run({"render", clip("bframes.mp4"), "--output", "##.png", "--json"});
    EXPECT_THAT(result.errors, Not(HasSubstr("\r")));
    EXPECT_THAT(result.output, Not(HasSubstr("\r")));
}

TEST_F(FarmCommand, tellsWhatAMediaHoldsWithoutADisplay) {
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    const Result people = run({"info", clip("bframes.mp4")});
    EXPECT_EQ(people.status, 0) << people.errors;
    for (const char* const text :
         {"QuickTime / MOV", "h264, yuv420p", "160 x 96", "24 frames/s (24/1)", "48", "aac, 44100 Hz", "upright"})
        EXPECT_THAT(people.output, HasSubstr(text));
    const auto objects = eventsOf(run({"info", clip("bframes.mp4"), "--json"}).output);
    ASSERT_EQ(objects.size(), 1u);
    rapidjson::Document const& info = objects[0];
    EXPECT_STREQ(info["kind"].GetString(), "media");
    EXPECT_EQ(info["video"]["frames"].GetInt(), 48);
    EXPECT_STREQ(info["video"]["rate"].GetString(), "24/1");
    EXPECT_STREQ(info["sounds"][0]["codec"].GetString(), "aac");
    EXPECT_TRUE(info["timecode"].IsNull());
    EXPECT_EQ(run({"info", "none.mp4"}).status, 3);
    EXPECT_EQ(run({"info", clip("text.txt")}).status, 4);
}

TEST_F(FarmCommand, tellsWhatATimelineHoldsAndWhatIsMissing) {
    put("cut.otio", R"({"OTIO_SCHEMA": "Timeline.1", "name": "cut", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [
        {"OTIO_SCHEMA": "Track.1", "kind": "Video", "name": "V1", "children": [
            {"OTIO_SCHEMA": "Clip.1", "name": "shot",
             "source_range": {"OTIO_SCHEMA": "TimeRange.1",
                              "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 0},
                              "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 12}},
             "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "gone.mov"}}]}]}})");
    const Result people = run({"info", "cut.otio"});
    EXPECT_EQ(people.status, 0) << people.errors;
    EXPECT_THAT(people.output, HasSubstr("video track V1"));
    EXPECT_THAT(people.output, HasSubstr("clip shot"));
    EXPECT_THAT(people.output, HasSubstr("gone.mov"));
    const auto objects = eventsOf(run({"info", "cut.otio", "--json"}).output);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_STREQ(objects[0]["kind"].GetString(), "timeline");
    EXPECT_EQ(objects[0]["frames"].GetInt(), 12);
    EXPECT_STREQ(objects[0]["tracks"][0]["items"][0]["name"].GetString(), "shot");
    EXPECT_STRNE(objects[0]["media"][0]["problem"].GetString(), "");
    put("bad.otio", "{");
    EXPECT_EQ(run({"info", "bad.otio"}).status, 4);
}

TEST_F(FarmCommand, testsItself) {
    const Result result = run({"self-test"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    for (const char* const text : {"OpenGL    ", "decoders  h264", "passed    pixels through VRAM",
                                   "passed    pixels through RAM", "passed    sound"})
        EXPECT_THAT(result.output, HasSubstr(text));
    const auto objects = eventsOf(run({"self-test", "--json"}).output);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_TRUE(objects[0]["passed"].GetBool());
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    EXPECT_EQ(run({"self-test"}).status, 5);
}

}  // namespace
}  // namespace qrtplay
