// What the engine costs beside the OpenGL work that it must do, and what a cached frame costs. See README.md.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/core/qrtList.h"
#include "foundation/logger/qrtLogMsg.h"
#include "player/qrtPlayer.h"
#include "qrtBenchmarkGraphEngine.h"

namespace QRT_0_81 {

namespace {

using Clock = std::chrono::steady_clock;

const VideoBufferResolution fullHdRgba8(1920, 1080, 4, 8, false);
constexpr int64 numFrames = 1'000'000;

/// A player that is ready to play the benchmark's composition.
class ReadyPlayer final {
public:
    explicit ReadyPlayer(VideoBufferResolution const& resolution)
        : m_player(Player::create(resolution, BenchmarkGraphEngine::create)) {
        check(m_player->initialize(nullptr, nullptr));
        check(m_player->setComposition(SharedPtr<Composition>(new BenchmarkComposition(numFrames)),
                                       List<SharedPtr<ExternalSegment>>()));
    }

    void startAt(int64 frame) {
        const Rational rate(24, 1);
        check(m_player->startProducing(PlayParams::create(Time(frame, rate), Time(0, rate), Time(numFrames, rate), rate,
                                                          1, PlayParams::single, PlayParams::video_only)));
    }
    void stop() { check(m_player->stopProducing()); }

    SharedPtr<VideoBuffer> fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        check(m_player->getVideoBuffer(frame, buffer));
        return buffer;
    }

private:
    static void check(Status const& status) {
        if (status.failure()) throw std::runtime_error(status.toString().c_str());
    }

    const SharedPtr<Player> m_player;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// One iteration plays a stretch of frames in order while producing and then lets the bare loop render as many: the two
/// take turns, so that both meet the same noise, and the median of the pairs' ratios is what counts.
void lookAheadAgainstBareLoop(benchmark::State& state) {
    ReadyPlayer player(fullHdRgba8);
    std::vector<double> engine;
    std::vector<double> bare;
    std::vector<double> ratios;
    int64 frame = 0;
    for ([[maybe_unused]] auto _ : state) {
        player.startAt(frame);
        player.fetch(frame);  // the run has begun: what follows is steady
        const auto begin = Clock::now();
        for (int i = 0; i < BenchmarkGraphEngine::bareLoopLength; ++i)
            player.fetch(++frame);
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        player.stop();
        ++frame;
        BenchmarkGraphEngine::bareSecondsPerFrame = 0.0;
        player.fetch(BenchmarkGraphEngine::bareLoopFrame);  // the stretch before has evicted it
        if (BenchmarkGraphEngine::bareSecondsPerFrame <= 0.0) throw std::logic_error("the bare loop did not run");
        state.SetIterationTime(seconds);
        engine.push_back(seconds / BenchmarkGraphEngine::bareLoopLength);
        bare.push_back(BenchmarkGraphEngine::bareSecondsPerFrame);
        ratios.push_back(engine.back() / bare.back());
        frame += 10;  // nothing of the last stretch is cached for the next
    }
    state.counters["engine_ms_per_frame"] = 1e3 * median(engine);
    state.counters["bare_ms_per_frame"] = 1e3 * median(bare);
    state.counters["ratio"] = median(ratios);
}
BENCHMARK(lookAheadAgainstBareLoop)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(150)->Repetitions(3);

/// A cached frame while nothing is produced.
void cachedFrame(benchmark::State& state) {
    ReadyPlayer player(VideoBufferResolution(16, 16, 4, 8, false));
    player.fetch(7);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(player.fetch(7));
}
BENCHMARK(cachedFrame)->Repetitions(3);

/// What a cached frame is measured against: a look-up under a mutex that copies a counted pointer.
void mutexGuardedLookUp(benchmark::State& state) {
    std::mutex mutex;
    std::unordered_map<std::string, std::shared_ptr<int>> map{{"7", std::make_shared<int>(7)}};
    const std::string key = "7";
    for ([[maybe_unused]] auto _ : state) {
        const std::lock_guard lock(mutex);
        std::shared_ptr<int> copy = map.find(key)->second;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(mutexGuardedLookUp)->Repetitions(3);

}  // namespace

}  // namespace QRT_0_81

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    // The engine says when look-ahead waits for a frame that the host still holds, which here is all the time.
    QRT_0_81::LogMsg::setSink([](QRT_0_81::LogMsg const&) {});
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
