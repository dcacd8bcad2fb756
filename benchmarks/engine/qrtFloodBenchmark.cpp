// A flood of fetches while producing: what piles up, how soon it is gone, and whether look-ahead gets its turn.
#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "harness/qrtFakeComposition.h"
#include "harness/qrtPlayerImplInspector.h"
#include "qrtBenchmarkGraphEngine.h"
#include "qrtBenchmarkSupport.h"

namespace QRT_0_81 {

namespace {

using Inspector = PlayerImplInspector;
using Script = BenchmarkScript;

constexpr int numThreads = 4;
constexpr int numFetchesPerThread = 50'000;

/// An engine with its thread, producing from frame 0 on with a hundred frames ahead.
class ProducingEngine final {
public:
    ProducingEngine() : m_engine(VideoBufferResolution(16, 16, 4, 8, false), BenchmarkGraphEngine::create) {
        Script::drawsQuad = false;
        Script::lastFrame = -1;
        check(m_engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 100));
        check(m_engine.initialize(nullptr, nullptr));
        check(m_engine.setComposition(FakeComposition::create(0, numFrames), {}));
        const Rational rate(24, 1);
        check(m_engine.startProducing(PlayParams::create(Time(0, rate), Time(0, rate), Time(numFrames, rate), rate, 1,
                                                         PlayParams::single, PlayParams::video_only)));
        fetch(0);
    }

    void fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        check(m_engine.getVideoBuffer(frame, buffer));
    }
    [[nodiscard]] size_t queueLength() { return Inspector::queue(m_engine).size(); }

private:
    static constexpr int64 numFrames = 10'000'000;

    PlayerImpl m_engine;
};

/// Raises `largest` to `value`.
template <class Value>
void raise(std::atomic<Value>& largest, Value value) {
    Value known = largest;
    while (known < value && !largest.compare_exchange_weak(known, value)) {
    }
}

struct FloodResult {
    std::atomic<size_t> longestQueue{0};
    std::atomic<double> largestGrowth{0.0};
    double seconds = 0.0;
    double drainSeconds = 0.0;
    double longestGapSeconds = 0.0;
    int64 numNewFrames = 0;
};

/// Every thread fetches the frame before the latest that was rendered, which is cached, so that there is always
/// something to be rendered ahead of it.
void flood(ProducingEngine& engine, FloodResult& result) {
    const int64 framesBefore = Script::numNewFrames;
    const double bytesBefore = bytesInUse();
    Script::newFrameAt = steadySeconds();
    Script::longestGapSeconds = 0.0;
    const Stopwatch watch;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < numThreads; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < numFetchesPerThread; ++i) {
                    engine.fetch(std::max<int64>(Script::lastFrame - 1, 0));
                    if (i % 64 == 0) raise(result.longestQueue, engine.queueLength());
                    if (i % 4096 == 0) raise(result.largestGrowth, bytesInUse() - bytesBefore);
                }
            });
        }
    }
    result.seconds = watch.seconds();
    result.longestGapSeconds = std::max<double>(Script::longestGapSeconds, steadySeconds() - Script::newFrameAt);
    raise(result.longestQueue, engine.queueLength());
    raise(result.largestGrowth, bytesInUse() - bytesBefore);
    result.numNewFrames = Script::numNewFrames - framesBefore;
    const Stopwatch drain;
    while (engine.queueLength() != 0)
        std::this_thread::yield();
    result.drainSeconds = drain.seconds();
}

void floodOfFetches(benchmark::State& state) {
    Samples longestQueue;
    Samples growth;
    Samples drainMs;
    Samples newFrames;
    Samples gapMs;
    for ([[maybe_unused]] auto _ : state) {
        ProducingEngine engine;
        FloodResult result;
        flood(engine, result);
        state.SetIterationTime(result.seconds);
        longestQueue.add(static_cast<double>(result.longestQueue));
        growth.add(result.largestGrowth);
        drainMs.add(1e3 * result.drainSeconds);
        newFrames.add(static_cast<double>(result.numNewFrames));
        gapMs.add(1e3 * result.longestGapSeconds);
    }
    state.counters["longest_queue"] = longestQueue.median();
    state.counters["grown_bytes"] = growth.median();
    state.counters["drain_ms"] = drainMs.median();
    state.counters["look_ahead_frames"] = newFrames.median();
    state.counters["look_ahead_gap_ms"] = gapMs.median();
}
BENCHMARK(floodOfFetches)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(numTurns(9));

}  // namespace

}  // namespace QRT_0_81
