#include "qrtHostCases.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <stdexcept>

namespace qrtplay {

namespace {

using Clock = std::chrono::steady_clock;
using Measures = std::vector<HostMeasure>;

double msSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Fetches a frame and returns the milliseconds that it took; a frame that is not the one asked for does not count.
double fetch(ClipPlayer& player, BenchmarkClip const& clip, int64 number) {
    const auto begin = Clock::now();
    const FrameView view = player.frame(number);
    const double ms = msSince(begin);
    if (const int64 shown = paintedNumber(view, clip.width); shown != number)
        throw std::runtime_error("frame " + std::to_string(shown) + " came for frame " + std::to_string(number));
    return ms;
}

double sum(std::vector<double> const& values) {
    double total = 0;
    for (const double value : values)
        total += value;
    return total;
}

double percentile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(part * static_cast<double>(values.size() - 1) + 0.5)];
}

double framesPerSecond(std::vector<double> const& ms) {
    return 1e3 * static_cast<double>(ms.size()) / sum(ms);
}

Measures forward(ClipPlayer& player, BenchmarkClip const& clip) {
    const int64 count = std::min<int64>(120, clip.frameCount);
    player.play(0, clip.frameCount - 1, ClipPlayer::Way::once);
    std::vector<double> ms;
    for (int64 number = 0; number < count; ++number)
        ms.push_back(fetch(player, clip, number));
    player.stop();
    return {{"forward", "frames/s", framesPerSecond(ms)}};
}

Measures randomFrames(ClipPlayer& player, BenchmarkClip const& clip) {
    constexpr int count = 60;
    std::minstd_rand random(20);  // the same for both
    std::vector<double> ms;
    for (int i = 0; i < count; ++i)
        ms.push_back(fetch(player, clip, static_cast<int64>(random()) % clip.frameCount));
    return {{"random, median", "ms", percentile(ms, 0.5)}, {"random, 95th percentile", "ms", percentile(ms, 0.95)}};
}

Measures backwards(ClipPlayer& player, BenchmarkClip const& clip) {
    const int64 count = player.isPlodding(clip) ? 12 : 120;
    const int64 last = clip.frameCount - 1;
    player.play(last, 0, ClipPlayer::Way::once);
    std::vector<double> ms;
    for (int64 number = last; number > last - count; --number)
        ms.push_back(fetch(player, clip, number));
    player.stop();
    return {{"backwards", "frames/s", framesPerSecond(ms)},
            {"backwards, first", "ms", ms.front()},
            {"backwards, longest wait after the first", "ms", *std::max_element(ms.begin() + 1, ms.end())}};
}

/// Where short loops lie: in the middle of a group.
int64 loopBegin(BenchmarkClip const& clip) {
    return clip.frameCount / 2 + clip.groupSize / 2;
}

Measures again(ClipPlayer& player, BenchmarkClip const& clip) {
    constexpr int64 length = 4;
    constexpr int rounds = 3;
    const int64 first = loopBegin(clip);
    player.play(first, first + length - 1, ClipPlayer::Way::over_and_over);
    for (int64 i = 0; i < length; ++i)
        fetch(player, clip, first + i);
    std::vector<double> ms;
    for (int round = 0; round < rounds; ++round)
        for (int64 i = 0; i < length; ++i)
            ms.push_back(fetch(player, clip, first + i));
    player.stop();
    return {{"the same 4 frames again", "ms a frame", percentile(ms, 0.5)}};
}

Measures pingPong(ClipPlayer& player, BenchmarkClip const& clip) {
    constexpr int rounds = 3;
    const int64 first = loopBegin(clip);
    player.play(first, first + 2, ClipPlayer::Way::to_and_fro);
    std::vector<double> ms;
    for (int round = -1; round < rounds; ++round) {
        for (const int64 step : {0, 1, 2, 1}) {
            const double took = fetch(player, clip, first + step);
            if (round >= 0) ms.push_back(took);
        }
    }
    player.stop();
    return {{"ping-pong over 3 frames", "frames/s", framesPerSecond(ms)}};
}

/// Loops of all lengths from short ones to those of several groups: the slowest shows whether there is one that does
/// not fit into what is kept and falls off.
Measures loops(ClipPlayer& player, BenchmarkClip const& clip) {
    const int64 first = loopBegin(clip);
    double slowest = 1e9;
    for (const int64 length : {2, 4, 5, 8, 33, 72}) {
        if (first + length > clip.frameCount) break;
        player.play(first, first + length - 1, ClipPlayer::Way::over_and_over);
        std::vector<double> ms;
        const int64 fetches = std::max<int64>(length, 16);
        for (int64 i = 0; i < length + fetches; ++i) {
            const double took = fetch(player, clip, first + i % length);
            if (i >= length) ms.push_back(took);
        }
        player.stop();
        slowest = std::min(slowest, framesPerSecond(ms));
    }
    return {{"loops, the slowest", "frames/s", slowest}};
}

}  // namespace

std::vector<HostCase> const& hostCases() {
    static const std::vector<HostCase> cases{{"forward", forward}, {"random", randomFrames}, {"backwards", backwards},
                                             {"again", again},     {"pingpong", pingPong},   {"loops", loops}};
    return cases;
}

bool HostGoal::isReached(double value, double ratio) const {
    switch (kind) {
        case Kind::ratio_at_least: return ratio >= bound;
        case Kind::ratio_at_most: return ratio <= bound;
        case Kind::value_at_least: return value >= bound;
        case Kind::value_at_most: return value <= bound;
        case Kind::none: break;
    }
    return true;
}

std::string HostGoal::text() const {
    char number[32];
    std::snprintf(number, sizeof(number), "%g", bound);
    switch (kind) {
        case Kind::ratio_at_least: return std::string("ratio >= ") + number;
        case Kind::ratio_at_most: return std::string("ratio <= ") + number;
        case Kind::value_at_least: return std::string(">= ") + number;
        case Kind::value_at_most: return std::string("<= ") + number;
        case Kind::none: break;
    }
    return "";
}

HostGoal hostGoal(std::string const& clip, std::string const& measure) {
    using Kind = HostGoal::Kind;
    const bool isIntra = clip == "prores";
    const bool isLong = clip == "h264-250";
    if (measure == "forward") return {Kind::ratio_at_least, isIntra ? 0.7 : 0.5};
    if (measure.starts_with("random")) return {Kind::ratio_at_most, isIntra ? 1.2 : 0.8};
    if (measure == "the same 4 frames again") return {Kind::value_at_most, 0.01};
    if (measure == "ping-pong over 3 frames") return {Kind::value_at_least, 20000};
    if (measure == "memory, forward") return {Kind::value_at_most, 250};
    if (isIntra) return {};
    if (measure == "backwards") return {Kind::value_at_least, isLong ? 80.0 : 150.0};
    if (measure == "backwards, longest wait after the first") return {Kind::value_at_most, 60};
    if (measure == "backwards, first" && isLong) return {Kind::ratio_at_most, 1.2};
    return {};
}

}  // namespace qrtplay
