// qrtplay's pipeline against a plain loop on FFmpeg's libraries, in one run and taking turns. See ../README.md.
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QProcess>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>

#include "foundation/logger/qrtLogMsg.h"
#include "playback/qrtSurfaceFormat.h"
#include "qrtDecodingUnderTest.h"
#include "qrtHostCases.h"
#include "qrtPlainLoop.h"
#include "qrtPlayerUnderTest.h"
#include "render/qrtDisplay.h"
#include "render/qrtJsonText.h"

namespace qrtplay {

namespace {

struct Options {
    QStringList clips;
    QStringList cases;
    int rounds = 3;
    std::string folder;
    std::string output;
    PlaySettings settings;
    bool onlyDecoding = false;
};

struct Row {
    std::string clip;
    HostMeasure measure;  // of the loop; the value is the median of the rounds
    double played = 0;
    double ratio = 0;  // the median of the rounds' own
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// In megabytes, the most that this process has occupied so far.
double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::atof(line.c_str() + 6) * 1024 / 1e6;
    }
    return 0;
}

/// The peak of a process of its own, so that nothing else is in it: this program runs itself with one case and side.
double peakMemoryOf(QString const& side, std::string const& clip, std::string const& caseName, Options const& options) {
    QStringList arguments = QCoreApplication::arguments().mid(1);
    arguments << "--clips" << QString::fromStdString(clip) << "--cases" << QString::fromStdString(caseName)
              << "--folder" << QString::fromStdString(options.folder) << "--peak-memory-of" << side;
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForFinished(-1) || child.exitCode() != 0) throw std::runtime_error("the memory cannot be measured");
    return child.readAllStandardOutput().toDouble();
}

void print(Row const& row) {
    const HostGoal goal = hostGoal(row.clip, row.measure.name);
    std::printf("%-9s %-40s %-10s %10.4g %10.4g %7.3f  %-14s %s\n", row.clip.c_str(), row.measure.name.c_str(),
                row.measure.unit.c_str(), row.measure.value, row.played, row.ratio, goal.text().c_str(),
                goal.kind == HostGoal::Kind::none       ? ""
                : goal.isReached(row.played, row.ratio) ? "reached"
                                                        : "MISSED");
    std::fflush(stdout);
}

std::unique_ptr<ClipPlayer> makePlayer(std::string const& path, Options const& options) {
    if (!options.onlyDecoding) return std::make_unique<PlayerUnderTest>(path, options.settings);
    constexpr size_t usual = PictureStore::defaultBudgetInBytes;
    auto const& mebibytes = options.settings.decodeCacheInMiB;
    return std::make_unique<DecodingUnderTest>(path, mebibytes ? static_cast<size_t>(*mebibytes) << 20 : usual);
}

std::vector<Row> measureCase(BenchmarkClip const& clip, std::string const& path, HostCase const& work,
                             Options const& options) {
    PlainLoop loop(path);
    const std::unique_ptr<ClipPlayer> player = makePlayer(path, options);
    std::vector<HostMeasure> last;
    std::map<std::string, std::vector<double>> looped, played, ratios;
    for (int round = 0; round < options.rounds; ++round) {
        last = work.run(loop, clip);
        const std::vector<HostMeasure> own = work.run(*player, clip);
        for (size_t i = 0; i < own.size(); ++i) {
            looped[own[i].name].push_back(last[i].value);
            played[own[i].name].push_back(own[i].value);
            ratios[own[i].name].push_back(own[i].value / last[i].value);
        }
    }
    std::vector<Row> rows;
    for (HostMeasure measure : last) {
        measure.value = median(looped[measure.name]);
        rows.push_back({clip.name, measure, median(played[measure.name]), median(ratios[measure.name])});
    }
    return rows;
}

Row measureMemory(BenchmarkClip const& clip, std::string const& caseName, Options const& options) {
    const double loop = peakMemoryOf("loop", clip.name, caseName, options);
    const double player = peakMemoryOf("qrtplay", clip.name, caseName, options);
    return {clip.name, {"memory, " + caseName, "MB", loop}, player, player / loop};
}

void write(std::vector<Row> const& rows, std::string const& path) {
    JsonText json;
    json.beginObject().beginArray("measures");
    for (Row const& row : rows) {
        const HostGoal goal = hostGoal(row.clip, row.measure.name);
        json.beginObject().add("clip", row.clip).add("case", row.measure.name).add("unit", row.measure.unit);
        json.add("loop", row.measure.value).add("qrtplay", row.played).add("ratio", row.ratio);
        json.add("goal", goal.text()).add("reached", goal.isReached(row.played, row.ratio)).endObject();
    }
    json.endArray().endObject();
    std::ofstream(path) << json.text() << '\n';
}

void runAll(Options const& options) {
    std::printf("%-9s %-40s %-10s %10s %10s %7s  %s\n", "clip", "case", "unit", "loop", "qrtplay", "ratio", "goal");
    std::vector<Row> rows;
    const auto add = [&rows](Row const& row) {
        print(row);
        rows.push_back(row);
    };
    for (QString const& name : options.clips) {
        BenchmarkClip const* const clip = benchmarkClip(name.toStdString());
        if (!clip) throw std::runtime_error("there is no clip " + name.toStdString());
        std::string path;
        if (Outcome outcome = makeClip(*clip, options.folder, path); outcome.failed())
            throw std::runtime_error(outcome.message());
        for (HostCase const& work : hostCases()) {
            if (!options.cases.contains(QString::fromStdString(work.name))) continue;
            for (Row const& row : measureCase(*clip, path, work, options))
                add(row);
        }
        if (!options.cases.contains("memory")) continue;
        add(measureMemory(*clip, "forward", options));
        add(measureMemory(*clip, "backwards", options));
    }
    if (!options.output.empty()) write(rows, options.output);
}

void printPeakMemory(Options const& options, bool ofLoop) {
    BenchmarkClip const& clip = *benchmarkClip(options.clips.front().toStdString());
    std::string path;
    if (Outcome outcome = makeClip(clip, options.folder, path); outcome.failed())
        throw std::runtime_error(outcome.message());
    std::unique_ptr<ClipPlayer> player;
    if (ofLoop)
        player = std::make_unique<PlainLoop>(path);
    else
        player = makePlayer(path, options);
    for (HostCase const& work : hostCases()) {
        if (options.cases.contains(QString::fromStdString(work.name))) work.run(*player, clip);
    }
    std::cout << peakMemory() << std::endl;
}

int run(QGuiApplication const& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Measures qrtplay's pipeline against a plain loop on FFmpeg's libraries.");
    parser.addHelpOption();
    parser.addOptions({{"clips", "Some of h264-24,h264-250,prores.", "names", "h264-24,h264-250,prores"},
                       {"cases", "Some of forward,random,backwards,again,pingpong,loops,memory.", "names",
                        "forward,random,backwards,again,pingpong,loops,memory"},
                       {"rounds", "How often the two take turns.", "number", "3"},
                       {"folder", "Where the clips are made and kept.", "path",
                        QCoreApplication::applicationDirPath() + "/../benchmark-clips"},
                       {"cache", "Memory for decoded pictures, in MiB, instead of the usual.", "mebibytes"},
                       {"decoding", "Decodes and converts only, without textures, rendering and read-back."},
                       {"output", "A file for the figures, as JSON.", "path"},
                       {"peak-memory-of",
                        "Runs the cases once on \"loop\" or \"qrtplay\" and prints the peak of "
                        "its memory, in MB.",
                        "side"}});
    parser.process(application);
    Options options;
    options.clips = parser.value("clips").split(',');
    options.cases = parser.value("cases").split(',');
    options.rounds = std::max(1, parser.value("rounds").toInt());
    options.folder = parser.value("folder").toStdString();
    options.output = parser.value("output").toStdString();
    if (parser.isSet("cache")) options.settings.decodeCacheInMiB = parser.value("cache").toInt();
    options.onlyDecoding = parser.isSet("decoding");
    try {
        if (parser.isSet("peak-memory-of"))
            printPeakMemory(options, parser.value("peak-memory-of") == "loop");
        else
            runAll(options);
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << std::endl;
        return 1;
    }
    return 0;
}

}  // namespace

}  // namespace qrtplay

int main(int argc, char** argv) {
    if (const qrtplay::Outcome outcome = qrtplay::checkDisplay(); outcome.failed()) {
        std::cerr << outcome.message() << std::endl;
        return 1;
    }
    const QGuiApplication application(argc, argv);
    // The engine says when it waits for a frame that is still lent, which here is all the time.
    QRT_0_81::LogMsg::setSink([](QRT_0_81::LogMsg const&) {});
    return qrtplay::run(application);
}
