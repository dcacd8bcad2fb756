// A cached frame against one look-up in a map.
#include "qrtReadyPlayer.h"
#include "qrtReferenceMap.h"

namespace QRT_0_81 {

namespace {

constexpr int64 numWindowFrames = 101;
constexpr int batch = 1010;  // ten times around the window

enum class Order { sameFrame, throughTheWindow };

template <class Fetch>
double secondsOfBatch(Order order, Fetch const& fetch) {
    const Stopwatch watch;
    for (int64 i = 0; i < batch; ++i)
        benchmark::DoNotOptimize(fetch(order == Order::sameFrame ? 7 : i % numWindowFrames));
    return watch.seconds();
}

/// A window of 101 frames is cached, and while producing all of them stay wanted: playback goes around in it.
void cachedFrame(benchmark::State& state, bool isProducing, Order order) {
    ReadyPlayer player(tinyFrame, {.numHeadFrames = numWindowFrames - 1});
    for (int64 frame = 0; frame < numWindowFrames; ++frame)
        player.fetch(frame);
    if (isProducing) player.start(0, 0, numWindowFrames, PlayParams::loop);
    ReferenceMap<std::string> texts(numWindowFrames);
    ReferenceMap<int64> numbers(numWindowFrames);
    Pairs pairs;
    Samples toNumbers;
    const auto fetchFromPlayer = [&] {
        const double seconds = secondsOfBatch(order, [&](int64 frame) { return player.fetch(frame); });
        player.settle();
        return seconds;
    };
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = pairs.takeTurn(
            fetchFromPlayer, [&] { return secondsOfBatch(order, [&](int64 frame) { return texts.fetch(frame); }); });
        toNumbers.add(seconds / secondsOfBatch(order, [&](int64 frame) { return numbers.fetch(frame); }));
        state.SetIterationTime(seconds);
    }
    pairs.report(state, batch);
    state.counters["ratio_to_int64_keys"] = toNumbers.median();
}

#define QRT_CACHED_FRAME(name, isProducing, order)           \
    BENCHMARK_CAPTURE(cachedFrame, name, isProducing, order) \
        ->UseManualTime()                                    \
        ->Unit(benchmark::kMicrosecond)                      \
        ->Iterations(numTurns(400))

QRT_CACHED_FRAME(sameFrame, false, Order::sameFrame);
QRT_CACHED_FRAME(throughTheWindow, false, Order::throughTheWindow);
QRT_CACHED_FRAME(sameFrameProducing, true, Order::sameFrame);
QRT_CACHED_FRAME(throughTheWindowProducing, true, Order::throughTheWindow);

}  // namespace

}  // namespace QRT_0_81
