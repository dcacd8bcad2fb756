// Look-ahead delivery against the bare loop.
#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int stretch = 12;

/// In each turn the engine plays a stretch of frames in order while producing, and the bare loop renders as many.
void lookAhead(benchmark::State& state, VideoBufferResolution const& resolution, bool isInMemory) {
    ReadyPlayer player(resolution, {.draws = true, .isInMemory = isInMemory});
    int64 frame = 0;
    const auto playStretch = [&] {
        player.start(frame);
        player.fetch(frame);  // the run has begun: what follows is steady
        const Stopwatch watch;
        for (int i = 0; i < stretch; ++i)
            player.fetchInTurn(++frame);
        const double seconds = watch.seconds();
        player.stop();
        frame += 10;  // nothing of this stretch is cached for the next
        return seconds / stretch;
    };
    const auto runBareLoop = [&]() -> double {
        player.runBareLoop(stretch);
        return BenchmarkScript::bareSecondsPerFrame;
    };
    Pairs pairs;
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(pairs.takeTurn(playStretch, runBareLoop));
    pairs.report(state);
}

const VideoBufferResolution fullHd8(1920, 1080, 4, 8, false);
const VideoBufferResolution fullHd16(1920, 1080, 4, 16, true);
const VideoBufferResolution ultraHd8(3840, 2160, 4, 8, false);
const VideoBufferResolution ultraHd16(3840, 2160, 4, 16, true);

#define QRT_LOOK_AHEAD(name, resolution, isInMemory, turns)    \
    BENCHMARK_CAPTURE(lookAhead, name, resolution, isInMemory) \
        ->UseManualTime()                                      \
        ->Unit(benchmark::kMillisecond)                        \
        ->Iterations(numTurns(turns))

QRT_LOOK_AHEAD(fullHd8, fullHd8, false, 120);
QRT_LOOK_AHEAD(fullHd16F, fullHd16, false, 60);
QRT_LOOK_AHEAD(ultraHd8, ultraHd8, false, 40);
QRT_LOOK_AHEAD(ultraHd16F, ultraHd16, false, 30);
QRT_LOOK_AHEAD(fullHd8InMemory, fullHd8, true, 90);
QRT_LOOK_AHEAD(fullHd16FInMemory, fullHd16, true, 45);
QRT_LOOK_AHEAD(ultraHd8InMemory, ultraHd8, true, 30);
QRT_LOOK_AHEAD(ultraHd16FInMemory, ultraHd16, true, 30);

}  // namespace

}  // namespace QRT_0_81
