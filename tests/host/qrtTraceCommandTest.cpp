// What a run leaves in its trace.
#include "host/qrtCommandFixture.h"
#include "player/harness/qrtTraceDocument.h"

namespace qrtplay {
namespace {

using QRT_0_81::TraceDocument;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class TraceCommand : public Command {
protected:
    QStringList render(QStringList const& more) {
        return QStringList{"render", clip("bframes.mp4"), "--frames", "8-16x4", "--output", "##.png"} + more;
    }
    [[nodiscard]] std::string textOf(QString const& name) const {
        return TraceDocument::textOf(folder.filePath(name).toStdString());
    }
    static std::vector<int64_t> framesOf(TraceDocument::Events const& spans) {
        std::vector<int64_t> frames;
        for (auto const& span : spans)
            frames.push_back(span.number("frame"));
        return frames;
    }
};

TEST_F(TraceCommand, writesTheRendersOfARun) {
    const Result result = run(render({"--ram", "--trace", "run.json"}));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(files(), (QStringList{"08.png", "12.png", "16.png", "run.json"}));
    const TraceDocument trace(textOf("run.json"));
    EXPECT_THAT(framesOf(trace.spans("render")), ElementsAre(8, 12, 16));
    EXPECT_THAT(framesOf(trace.spans("getVideoBuffer")), ElementsAre(8, 12, 16));
    EXPECT_THAT(trace.spans("read back"), SizeIs(3));
    EXPECT_THAT(trace.spans("CmdStartProducing"), SizeIs(1));
    EXPECT_THAT(trace.threads("QRT-PLAYER 1"), SizeIs(1));
    EXPECT_EQ(trace.counts("cached frames of player 1").front().number("frames"), 0);
}

TEST_F(TraceCommand, writesNoneUnasked) {
    EXPECT_EQ(run(render({})).status, 0);
    EXPECT_THAT(files().filter("json"), IsEmpty());
}

TEST_F(TraceCommand, writesWhatTheEnvironmentAsksForUnlessAnOptionDoes) {
    environment.insert("QRT_TRACE_PLAYER", folder.filePath("environment.json"));
    EXPECT_EQ(run(render({})).status, 0);
    EXPECT_THAT(TraceDocument(textOf("environment.json")).spans("render"), SizeIs(3));
    ASSERT_TRUE(QFile::remove(folder.filePath("environment.json")));
    EXPECT_EQ(run(render({"--trace", "option.json"})).status, 0);
    EXPECT_THAT(TraceDocument(textOf("option.json")).spans("render"), SizeIs(3));
    EXPECT_THAT(files().filter("environment"), IsEmpty());
}

TEST_F(TraceCommand, writesThoseOfContactSheets) {
    const QStringList words{
        "contact-sheet", clip("bframes.mp4"), "--output", "sheet.png", "--columns", "2", "--rows", "2",
        "--trace",       "run.json"};
    EXPECT_EQ(run(words).status, 0);
    EXPECT_THAT(TraceDocument(textOf("run.json")).spans("render"), SizeIs(4));
}

TEST_F(TraceCommand, namesAFileThatCannotBeWrittenBeforeAnythingElse) {
    EXPECT_THAT(failure(render({"--trace", "/proc/none/run.json"}), 2),
                HasSubstr("--trace '/proc/none/run.json': cannot be written: No such file"));
    ASSERT_TRUE(QDir(folder.path()).mkdir("folder.json"));
    EXPECT_THAT(failure(render({"--trace", "folder.json"}), 2), HasSubstr("--trace 'folder.json': is no file"));
    EXPECT_THAT(failure(render({"--trace", "run.txt"}), 2), HasSubstr("--trace 'run.txt': has to end with .json"));
    EXPECT_THAT(failure(render({"--dry-run", "--trace", "run.json"}), 2), HasSubstr("--trace and --dry-run"));
    EXPECT_TRUE(files().empty());
}

TEST_F(TraceCommand, leavesNoTraceOfWhatDoesNotBegin) {
    EXPECT_THAT(failure({"render", "none.mp4", "--output", "##.png", "--trace", "run.json"}, 3), HasSubstr("none.mp4"));
    EXPECT_TRUE(files().empty());
}

TEST_F(TraceCommand, leavesATraceThatCanBeReadWhenItIsKilled) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(QRT_PLAY_PROGRAM,
                  {"render", clip("bframes.mp4"), "--no-output", "--loop", "100000", "--trace", "run.json"});
    while (textOf("run.json").find("\"name\":\"render\"") == std::string::npos &&
           process.state() != QProcess::NotRunning)
        process.waitForReadyRead(10);
    const Result second = run(render({"--trace", "run.json"}));
    EXPECT_EQ(second.status, 2);
    EXPECT_THAT(second.errors, HasSubstr("--trace 'run.json': another process is writing to it"));
    process.kill();
    ASSERT_TRUE(process.waitForFinished(60000));
    const std::string text = textOf("run.json");
    const TraceDocument trace(text.substr(0, text.rfind(",\n")) + "]");  // it may have been writing the last line
    EXPECT_FALSE(trace.spans("render").empty());
}

}  // namespace
}  // namespace qrtplay
