// Allocations, counted: a cached fetch, a missed frame, a frame rendered ahead, an eviction. Averages over many, beyond
// what the bare loop allocates; `host` is what the host's own thread asks for, `total` what all threads do.
#include "harness/qrtEvictionScene.h"
#include "qrtAllocationHook.h"
#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int numCalls = 1000;

/// Counts what happens in a stretch of calls, once the player thread has done its part of it.
template <class Work>
void count(benchmark::State& state, ReadyPlayer& player, Work const& work) {
    BenchmarkScript::allocationsOfThisThread = allocationsOfThisThread;
    player.settle();
    const long settlingBefore = allocationsOfAllThreads();
    player.settle();
    const long settling = allocationsOfAllThreads() - settlingBefore;
    for ([[maybe_unused]] auto _ : state) {
        player.settle();
        const long allBefore = allocationsOfAllThreads();
        const long hostBefore = allocationsOfThisThread();
        for (int i = 0; i < numCalls; ++i)
            work();
        const long host = allocationsOfThisThread() - hostBefore;
        player.settle();
        const long all = allocationsOfAllThreads() - allBefore - settling;
        state.counters["host"] = static_cast<double>(host) / numCalls;
        state.counters["total"] = static_cast<double>(all) / numCalls;
    }
}

void bareAllocations(benchmark::State& state, ReadyPlayer& player) {
    player.runBareLoop(numCalls);
    player.runBareLoop(numCalls);  // nothing is made for the first time any more
    state.counters["bare"] = static_cast<double>(BenchmarkScript::bareAllocationsPerLoop) / numCalls;
}

void allocationsOfCachedFetch(benchmark::State& state, bool isProducing) {
    ReadyPlayer player(tinyFrame, {});
    player.fetch(0);
    if (isProducing) player.start(0, 0, 1);
    count(state, player, [&] { player.fetch(0); });
}
BENCHMARK_CAPTURE(allocationsOfCachedFetch, idle, false)->Iterations(3);
BENCHMARK_CAPTURE(allocationsOfCachedFetch, producing, true)->Iterations(3);

void allocationsOfMiss(benchmark::State& state) {
    ReadyPlayer player(tinyFrame, {});
    int64 frame = 0;
    bareAllocations(state, player);
    count(state, player, [&] { player.fetch(frame += 2); });
}
BENCHMARK(allocationsOfMiss)->Iterations(3);

/// Including the fetch that calls for it: one cached fetch while producing.
void allocationsOfLookAheadFrame(benchmark::State& state) {
    ReadyPlayer player(tinyFrame, {});
    bareAllocations(state, player);
    int64 frame = 0;
    player.start(frame);
    while (BenchmarkScript::lastFrame != 2)
        std::this_thread::yield();
    count(state, player, [&] {
        ++frame;
        player.playTo(frame, frame + 2);
    });
}
BENCHMARK(allocationsOfLookAheadFrame)->Iterations(3);

void allocationsOfEviction(benchmark::State& state, EvictionScene::Evictable evictable) {
    EvictionScene scene(evictable);
    for ([[maybe_unused]] auto _ : state) {
        const long before = allocationsOfThisThread();
        scene.evict();
        state.counters["total"] = static_cast<double>(allocationsOfThisThread() - before);
        scene.restore();
    }
}
BENCHMARK_CAPTURE(allocationsOfEviction, oldest, EvictionScene::Evictable::oldest)->Iterations(3);
BENCHMARK_CAPTURE(allocationsOfEviction, newest, EvictionScene::Evictable::newest)->Iterations(3);
BENCHMARK_CAPTURE(allocationsOfEviction, none, EvictionScene::Evictable::none)->Iterations(3);

}  // namespace

}  // namespace QRT_0_81
