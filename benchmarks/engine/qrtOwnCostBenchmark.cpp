// What the engine itself costs a frame, by the number of frames that it looks ahead.
#include <memory>

#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int stretch = 48;

/// Plays frame by frame, each one asked for when the window ahead is full, and adds up what the player thread uses.
class WindowedPlayback final {
public:
    explicit WindowedPlayback(int32 numHeadFrames)
        : m_numHeadFrames(numHeadFrames), m_player(tinyFrame, {.numHeadFrames = numHeadFrames}) {
        m_player.start(0);
        while (BenchmarkScript::lastFrame != numHeadFrames)
            std::this_thread::yield();
    }

    /// Processor and wall seconds of the player thread a frame beyond those of the bare loop.
    void playStretch() {
        m_player.settle();
        const double cpuBefore = m_player.cpuSeconds();
        for (int i = 0; i < stretch; ++i)
            playOne();
        m_player.settle();
        const double cpuSeconds = (m_player.cpuSeconds() - cpuBefore) / stretch;
        BenchmarkScript::numBareFrames = stretch;
        playOne();
        m_player.settle();
        const double bareSeconds = BenchmarkScript::bareCpuSecondsPerFrame;
        m_bareUs.add(1e6 * bareSeconds);
        m_ownUs.add(1e6 * (cpuSeconds - bareSeconds));
    }

    [[nodiscard]] double ownUs() const { return m_ownUs.median(); }
    [[nodiscard]] double bareUs() const { return m_bareUs.median(); }

private:
    void playOne() {
        ++m_frame;
        m_player.playTo(m_frame, m_frame + m_numHeadFrames);
    }

    const int64 m_numHeadFrames;
    ReadyPlayer m_player;
    int64 m_frame = 0;
    Samples m_ownUs;
    Samples m_bareUs;
};

/// Nothing is drawn into frames of 16 x 16. Processor time of the player thread: waiting for the host is no cost.
void ownCost(benchmark::State& state) {
    WindowedPlayback two(2);
    WindowedPlayback hundred(100);
    WindowedPlayback thousand(1000);
    for ([[maybe_unused]] auto _ : state) {
        two.playStretch();
        hundred.playStretch();
        thousand.playStretch();
    }
    state.counters["bare_us"] = two.bareUs();
    state.counters["own_us_2"] = two.ownUs();
    state.counters["own_us_100"] = hundred.ownUs();
    state.counters["own_us_1000"] = thousand.ownUs();
    state.counters["ratio_1000_to_2"] = thousand.ownUs() / two.ownUs();
}
BENCHMARK(ownCost)->Unit(benchmark::kMillisecond)->Iterations(numTurns(150));

}  // namespace

}  // namespace QRT_0_81
