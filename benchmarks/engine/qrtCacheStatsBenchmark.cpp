// Which of ten thousand cached frames there are. Processor time: nothing waits here.
#include "harness/qrtThreadlessEngine.h"
#include "qrtBenchmarkSupport.h"

namespace QRT_0_81 {

namespace {

constexpr int64 numFrames = 10'000;

/// `spacing` 1: one range of frames; 2: as many ranges as frames.
void cacheStats(benchmark::State& state, int64 spacing) {
    ThreadlessEngine engine(2, numFrames);
    for (int64 i = 0; i < numFrames; ++i)
        engine.put(i * 7919 % numFrames * spacing);  // in no order; the factor is prime
    Samples ms;
    for ([[maybe_unused]] auto _ : state) {
        const double before = secondsOf(CLOCK_THREAD_CPUTIME_ID);
        ConstSharedPtr<CacheStats> stats;
        check(engine.engine().getCacheStats(CacheStats::CacheType::producer, stats));
        ms.add(1e3 * (secondsOf(CLOCK_THREAD_CPUTIME_ID) - before));
        const size_t numRanges = stats->getFrameRanges().size();
        if (numRanges != (spacing == 1 ? 1u : size_t{numFrames}))
            throw std::logic_error("not the frames that are cached");
    }
    state.counters["ms"] = ms.median();
}
BENCHMARK_CAPTURE(cacheStats, oneRange, 1)->Unit(benchmark::kMillisecond)->Iterations(numTurns(300));
BENCHMARK_CAPTURE(cacheStats, everySecondFrame, 2)->Unit(benchmark::kMillisecond)->Iterations(numTurns(300));

}  // namespace

}  // namespace QRT_0_81
