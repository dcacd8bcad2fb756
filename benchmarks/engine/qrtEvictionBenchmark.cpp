// One eviction among a thousand cached frames, of which a thousand are wanted. Processor time: nothing waits here.
#include "harness/qrtEvictionScene.h"
#include "qrtBenchmarkSupport.h"

namespace QRT_0_81 {

namespace {

void eviction(benchmark::State& state, EvictionScene::Evictable evictable) {
    EvictionScene scene(evictable);
    Samples us;
    for ([[maybe_unused]] auto _ : state) {
        const double before = secondsOf(CLOCK_THREAD_CPUTIME_ID);
        scene.evict();
        const double seconds = secondsOf(CLOCK_THREAD_CPUTIME_ID) - before;
        state.SetIterationTime(seconds);
        us.add(1e6 * seconds);
        scene.restore();
    }
    state.counters["us"] = us.median();
}

#define QRT_EVICTION(evictable)                                                 \
    BENCHMARK_CAPTURE(eviction, evictable, EvictionScene::Evictable::evictable) \
        ->UseManualTime()                                                       \
        ->Unit(benchmark::kMicrosecond)                                         \
        ->Iterations(numTurns(300))

QRT_EVICTION(oldest);
QRT_EVICTION(newest);
QRT_EVICTION(none);

}  // namespace

}  // namespace QRT_0_81
