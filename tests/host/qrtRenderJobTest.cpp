#include "render/qrtRenderJob.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

#include "host/qrtDecodedFile.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int width = 32;
constexpr int height = 16;

/// A source that knows its frames by heart, and fails where it is told to.
class FakeSource final : public FrameSource {
public:
    int64 frameCount() const override { return 100; }
    Rational rate() const override { return Rational(24, 1); }
    QSize resolution() const override { return {width, height}; }
    ExactTime clockStart() const override { return ExactTime(3600, 1); }
    bool hasSound() const override { return true; }
    Counts counts() const override { return {delivered, 0, delivered}; }
    Outcome start(FrameRange const& range) override {
        return range.first == unplayable ? Outcome::failure("cannot be played") : Outcome();
    }
    void stop() override { ++stops; }
    Outcome fetch(int64 frame, PixelBlock& block) override {
        if (bad.count(frame) > 0) return Outcome::failure("clip.mp4: frame " + std::to_string(frame) + ": damaged");
        block = gradientBlock(width, height, PixelFormat::rgba8, static_cast<int>(frame));
        ++delivered;
        return Outcome();
    }
    Outcome readSound(int64 first, int64 count, std::vector<float>& samples) override {
        samples.clear();
        for (int64 i = 0; i < count; ++i)
            for (int channel = 0; channel < movieChannels; ++channel)
                samples.push_back(static_cast<float>(first + i) / 1e6F);
        return soundFailure;
    }
    std::vector<std::string> takeWarnings() override { return std::exchange(warnings, {}); }

    std::set<int64> bad;
    int64 unplayable = -1;
    Outcome soundFailure;
    std::vector<std::string> warnings;
    int64 delivered = 0;
    int stops = 0;
};

class RenderJobs : public ::testing::Test {
protected:
    /// Runs a job that writes JSON.
    ExitStatus run(FrameSink& sink, std::vector<FrameRange> const& ranges, int64 loops = 1, bool withSound = false) {
        RenderReport report({output, errors}, true);
        RunFacts facts;
        facts.inputs = {"clip.mp4"};
        facts.output = "out";
        facts.depth = "8";
        facts.size = {width, height};
        facts.frames = totalFrames(ranges) * loops;
        report.start(facts);
        RenderJob job(source, sink, report, [this] { return source.delivered >= interruptAfter; });
        const ExitStatus status = job.run(ranges, withSound, loops);
        if (status == exit_interrupted) report.interrupted("qrtplay render again");
        (void)report.finish(status, source.counts(), job.memory());
        readEvents();
        return status;
    }

    void readEvents() {
        std::istringstream lines(output.str());
        for (std::string line; std::getline(lines, line);) {
            events.emplace_back();
            ASSERT_FALSE(events.back().Parse(line.c_str()).HasParseError()) << line;
        }
    }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (auto const& event : events)
            names.emplace_back(event["event"].GetString());
        return names;
    }
    rapidjson::Document const& summary() const { return events.back(); }
    std::unique_ptr<FrameSink> images(std::string const& name) {
        OutputPattern pattern;
        EXPECT_TRUE(OutputPattern::parse(path(name), pattern).success());
        return makeImageSink(pattern, 90);
    }
    std::unique_ptr<FrameSink> movie(std::string const& name, bool hasSound) {
        MovieSettings settings;
        settings.format = {FileKind::mkv, VideoCodec::ffv1, PixelFormat::rgba8, 0};
        settings.width = width;
        settings.height = height;
        settings.hasSound = hasSound;
        std::unique_ptr<FrameSink> sink;
        EXPECT_TRUE(makeMovieSink(path(name), settings, sink).success());
        return sink;
    }
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    FakeSource source;
    int64 interruptAfter = INT64_MAX;
    QTemporaryDir folder;
    std::ostringstream output;
    std::ostringstream errors;
    std::vector<rapidjson::Document> events;
};

TEST_F(RenderJobs, tellEveryFrameAndASummaryAsJson) {
    EXPECT_EQ(run(*images("#.png"), {{2, 4, 1}}), exit_done);
    EXPECT_THAT(names(), ElementsAre("start", "frame", "frame", "frame", "summary"));
    rapidjson::Document const& start = events.front();
    EXPECT_EQ(start["frames"].GetInt(), 3);
    EXPECT_EQ(start["width"].GetInt(), width);
    EXPECT_STREQ(start["rate"].GetString(), "24/1");
    EXPECT_STREQ(start["inputs"][0].GetString(), "clip.mp4");
    EXPECT_TRUE(start["codec"].IsNull());
    std::set<int> frames;
    for (size_t i = 1; i <= 3; ++i) {
        frames.insert(events[i]["frame"].GetInt());
        EXPECT_EQ(events[i]["path"].GetString(), path(std::to_string(events[i]["frame"].GetInt()) + ".png"));
        EXPECT_EQ(events[i]["done"].GetInt(), static_cast<int>(i));
        EXPECT_EQ(events[i]["total"].GetInt(), 3);
        EXPECT_TRUE(events[i]["seconds"].IsNumber());
    }
    EXPECT_THAT(frames, ElementsAre(2, 3, 4));
    for (const char* const key : {"exit", "total", "written", "skipped", "failed", "seconds", "frames_per_second",
                                  "cache_hits", "on_demand", "output"})
        EXPECT_TRUE(summary().HasMember(key)) << key;
    EXPECT_EQ(summary()["written"].GetInt(), 3);
    EXPECT_EQ(files(), (QStringList{"2.png", "3.png", "4.png"}));
}

TEST_F(RenderJobs, goOnAfterFramesThatFailAndNameThem) {
    source.bad = {3, 4};
    EXPECT_EQ(run(*images("#.png"), {{2, 5, 1}}), exit_frames_failed);
    EXPECT_EQ(files(), (QStringList{"2.png", "5.png"}));
    EXPECT_EQ(summary()["exit"].GetInt(), 6);
    EXPECT_EQ(summary()["failed"].GetInt(), 2);
    EXPECT_EQ(summary()["written"].GetInt(), 2);
    EXPECT_THAT(output.str(), HasSubstr(R"({"event":"failed","frame":3,"message":"clip.mp4: frame 3: damaged"})"));
    EXPECT_THAT(errors.str(), HasSubstr("qrtplay: clip.mp4: frames 3-4: damaged\n"));
}

TEST_F(RenderJobs, keepTheTimeOfAMovieWhenAFrameFails) {
    source.bad = {0, 3};
    auto sink = movie("a.mkv", false);
    EXPECT_EQ(run(*sink, {{0, 5, 1}}), exit_frames_failed);
    const DecodedFile file(path("a.mkv"));
    ASSERT_EQ(file.pictures.size(), 6u);
    const auto shown = [&file](size_t at) { return blockOf(*file.pictures[at], PixelFormat::rgba8); };
    EXPECT_EQ(largestDifference(shown(3), gradientBlock(width, height, PixelFormat::rgba8, 2)), 0);
    EXPECT_EQ(largestDifference(shown(4), gradientBlock(width, height, PixelFormat::rgba8, 4)), 0);
    EXPECT_EQ(shown(0).row(0)[0], 0);
    EXPECT_EQ(summary()["written"].GetInt(), 4);
    EXPECT_THAT(errors.str(), HasSubstr("repeats the frame before it"));
}

TEST_F(RenderJobs, giveAMovieTheSoundOfItsRangesOneAfterTheOther) {
    auto sink = movie("a.mkv", true);
    EXPECT_EQ(run(*sink, {{10, 11, 1}, {50, 50, 1}}, 1, true), exit_done);
    const DecodedFile file(path("a.mkv"));
    ASSERT_EQ(file.left.size(), 6000u);
    constexpr float rounding = 2e-7F;
    EXPECT_NEAR(file.left[0], 20000 / 1e6F, rounding);
    EXPECT_NEAR(file.left[3999], 23999 / 1e6F, rounding);
    EXPECT_NEAR(file.left[4000], 100000 / 1e6F, rounding);
}

TEST_F(RenderJobs, warnOnceOfSoundThatCannotBeRead) {
    source.soundFailure = Outcome::failure("sound.wav: cannot be read");
    auto sink = movie("a.mkv", true);
    EXPECT_EQ(run(*sink, {{0, 3, 1}}, 1, true), exit_done);
    const std::vector<std::string> all = names();
    EXPECT_EQ(std::count(all.begin(), all.end(), "warning"), 1);
    EXPECT_THAT(errors.str(), HasSubstr("warning: sound.wav: cannot be read; silence takes its place"));
    EXPECT_EQ(DecodedFile(path("a.mkv")).left.size(), 8000u);
}

TEST_F(RenderJobs, leaveWholeImagesWhenTheyAreInterrupted) {
    interruptAfter = 2;
    EXPECT_EQ(run(*images("#.png"), {{0, 9, 1}}), exit_interrupted);
    EXPECT_EQ(files(), (QStringList{"0.png", "1.png"}));
    EXPECT_EQ(names()[names().size() - 2], "interrupted");
    EXPECT_STREQ(events[events.size() - 2]["resume"].GetString(), "qrtplay render again");
    EXPECT_EQ(summary()["exit"].GetInt(), 130);
    EXPECT_EQ(summary()["written"].GetInt(), 2);
    EXPECT_EQ(source.stops, 1);
}

TEST_F(RenderJobs, leaveNothingOfAMovieThatIsInterrupted) {
    interruptAfter = 2;
    {
        auto sink = movie("a.mkv", true);
        EXPECT_EQ(run(*sink, {{0, 9, 1}}, 1, true), exit_interrupted);
    }
    EXPECT_TRUE(files().isEmpty());
    EXPECT_EQ(summary()["written"].GetInt(), 0);
}

TEST_F(RenderJobs, measureTheMemoryOfLoops) {
    EXPECT_EQ(run(*makeNullSink(), {{0, 4, 1}}, 3), exit_done);
    EXPECT_EQ(source.delivered, 15);
    const std::vector<std::string> all = names();
    EXPECT_EQ(std::count(all.begin(), all.end(), "frame"), 15);
    EXPECT_EQ(std::count(all.begin(), all.end(), "loop"), 3);
    EXPECT_EQ(summary()["loops"].GetInt(), 3);
    EXPECT_GT(summary()["resident_bytes_first_loop"].GetInt64(), 1 << 20);
    EXPECT_GT(summary()["resident_bytes"].GetInt64(), 1 << 20);
}

TEST_F(RenderJobs, endWhereTheSourceCannotPlay) {
    source.unplayable = 5;
    EXPECT_EQ(run(*images("#.png"), {{0, 1, 1}, {5, 6, 1}, {8, 9, 1}}), exit_failed);
    EXPECT_EQ(files(), (QStringList{"0.png", "1.png"}));
    EXPECT_THAT(output.str(), HasSubstr(R"({"event":"error","message":"cannot be played"})"));
}

TEST_F(RenderJobs, passOnWhatTheSourceWarnsOf) {
    source.warnings = {"cut.otio: effect 'Glow' is left out"};
    EXPECT_EQ(run(*images("#.png"), {{0, 1, 1}}), exit_done);
    EXPECT_THAT(errors.str(), HasSubstr("qrtplay: warning: cut.otio: effect 'Glow' is left out\n"));
    EXPECT_THAT(output.str(), HasSubstr(R"("event":"warning")"));
}

}  // namespace
}  // namespace qrtplay
