// What a host waits for a frame that is not cached, beyond the OpenGL work that the frame needs.
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int stretch = 12;

/// Hands something to another thread and waits for its answer.
class HandOver final {
public:
    void roundTrip() {
        pass(Turn::answerer);
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_turn == Turn::asker; });
    }
    /// The other thread: does the work for every round trip until it is over.
    void answer(std::function<void()> const& work) {
        for (std::unique_lock lock(m_mutex);;) {
            m_changed.wait(lock, [this] { return m_turn != Turn::asker; });
            if (m_turn == Turn::over) return;
            work();
            m_turn = Turn::asker;
            m_changed.notify_one();
        }
    }
    void end() { pass(Turn::over); }

private:
    enum class Turn { asker, answerer, over };

    void pass(Turn turn) {
        const std::lock_guard lock(m_mutex);
        m_turn = turn;
        m_changed.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Turn m_turn = Turn::asker;  // under m_mutex
};

/// Two yardsticks on this machine at this moment, in what they take beyond the bare work: a thread that answers at
/// once, which no missed frame can beat, and the player thread that does a frame of the bare loop whenever it is asked
/// to.
void measureHandOvers(ReadyPlayer& player, double bareSeconds, Samples& answerUs, Samples& askedBareUs) {
    const auto measure = [](HandOver& handOver, double offset, Samples& samples) {
        handOver.roundTrip();  // the other one may only just have come
        for (int i = 0; i < stretch; ++i) {
            const Stopwatch watch;
            handOver.roundTrip();
            samples.add(1e6 * (watch.seconds() - offset));
        }
        handOver.end();
    };
    HandOver toNobody;
    std::jthread answerer([&] { toNobody.answer([] {}); });
    measure(toNobody, 0.0, answerUs);
    HandOver toBare;
    std::jthread waiting([&] { player.runWithBareFrame([&](auto const& bareFrame) { toBare.answer(bareFrame); }); });
    measure(toBare, bareSeconds, askedBareUs);
}

void missedFrame(benchmark::State& state) {
    ReadyPlayer player(tinyFrame, {});
    Samples overUs;
    Samples handOverUs;
    Samples askedBareUs;
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
        }
        measureHandOvers(player, bareSeconds, handOverUs, askedBareUs);
        if (frame > 800'000) frame = 0;
    }
    state.counters["bare_us"] = bareUs.median();
    state.counters["hand_over_us_median"] = handOverUs.median();
    state.counters["hand_over_us_p99"] = handOverUs.quantile(0.99);
    state.counters["asked_bare_us_median"] = askedBareUs.median();
    state.counters["asked_bare_us_p99"] = askedBareUs.quantile(0.99);
    state.counters["over_us_median"] = overUs.median();
    state.counters["over_us_p99"] = overUs.quantile(0.99);
}
BENCHMARK(missedFrame)->Unit(benchmark::kMicrosecond)->Iterations(numTurns(1000));

}  // namespace

}  // namespace QRT_0_81
