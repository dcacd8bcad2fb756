// What a host waits for a frame that is not cached, beyond the OpenGL work that the frame needs.
#include <condition_variable>
#include <mutex>
#include <thread>

#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int stretch = 12;

/// What handing something to another thread and waiting for its answer costs on this machine at this moment, for scale:
/// no missed frame can take less.
class HandOver final {
public:
    ~HandOver() { pass(Turn::over); }

    void roundTrip() {
        pass(Turn::answerer);
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_turn == Turn::asker; });
    }

private:
    enum class Turn { asker, answerer, over };

    void pass(Turn turn) {
        const std::lock_guard lock(m_mutex);
        m_turn = turn;
        m_changed.notify_one();
    }
    void answer() {
        for (std::unique_lock lock(m_mutex);;) {
            m_changed.wait(lock, [this] { return m_turn != Turn::asker; });
            if (m_turn == Turn::over) return;
            m_turn = Turn::asker;
            m_changed.notify_one();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Turn m_turn = Turn::asker;  // under m_mutex
    std::jthread m_answerer{[this] { answer(); }};
};

void missedFrame(benchmark::State& state) {
    ReadyPlayer player(tinyFrame, {});
    HandOver handOver;
    Samples overUs;
    Samples handOverUs;
    Samples bareUs;
    int64 frame = 0;
    for ([[maybe_unused]] auto _ : state) {
        player.runBareLoop(stretch);
        const double bareSeconds = BenchmarkScript::bareSecondsPerFrame;
        bareUs.add(1e6 * bareSeconds);
        for (int i = 0; i < stretch; ++i) {
            const Stopwatch watch;
            player.fetch(frame += 2);
            overUs.add(1e6 * (watch.seconds() - bareSeconds));
            const Stopwatch handOverWatch;
            handOver.roundTrip();
            handOverUs.add(1e6 * handOverWatch.seconds());
        }
        if (frame > 800'000) frame = 0;
    }
    state.counters["bare_us"] = bareUs.median();
    state.counters["hand_over_us_median"] = handOverUs.median();
    state.counters["hand_over_us_p99"] = handOverUs.quantile(0.99);
    state.counters["over_us_median"] = overUs.median();
    state.counters["over_us_p99"] = overUs.quantile(0.99);
}
BENCHMARK(missedFrame)->Unit(benchmark::kMicrosecond)->Iterations(numTurns(1000));

}  // namespace

}  // namespace QRT_0_81
