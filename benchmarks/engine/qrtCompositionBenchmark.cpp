// Compositions set one after another: what setting one costs, and whether anything is left behind.
#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int numCompositions = 100;
constexpr int numWarmUps = 100;  // until every buffer has been touched and every table has its size

void setAndPlay(ReadyPlayer& player, Samples& setUs, Samples& startUs) {
    const auto composition = FakeComposition::create(0, 1'000'000);
    const Stopwatch set;
    check(player.player().setComposition(composition, {}));
    setUs.add(1e6 * (set.seconds() - BenchmarkScript::setCompositionSeconds));
    const Stopwatch start;
    player.start(0);
    startUs.add(1e6 * start.seconds());
    for (int64 frame = 0; frame < 10; ++frame)
        player.fetch(frame);
    player.stop();
}

void hundredCompositions(benchmark::State& state) {
    ReadyPlayer player(tinyFrame, {});
    Samples setUs;
    Samples startUs;
    Samples grownBytes;
    for (int i = 0; i < numWarmUps; ++i)
        setAndPlay(player, setUs, startUs);
    for ([[maybe_unused]] auto _ : state) {
        const double before = bytesInUse();
        for (int i = 0; i < numCompositions; ++i)
            setAndPlay(player, setUs, startUs);
        grownBytes.add(bytesInUse() - before);
    }
    state.counters["set_us"] = setUs.median();
    state.counters["start_us"] = startUs.median();
    state.counters["grown_bytes"] = grownBytes.median();
}
BENCHMARK(hundredCompositions)->Unit(benchmark::kMillisecond)->Iterations(numTurns(30));

}  // namespace

}  // namespace QRT_0_81
