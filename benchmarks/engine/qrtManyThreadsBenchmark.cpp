// Cached frames from many host threads at once.
#include <barrier>
#include <functional>
#include <thread>

#include "qrtReadyPlayer.h"

namespace QRT_0_81 {

namespace {

constexpr int numThreads = 8;

/// Fetches of a round, by all threads together: so many that waking the threads does not count, but while producing not
/// more than the player thread can follow.
constexpr int numFetchesIdle = 160'000;
constexpr int numFetchesProducing = 16'000;

/// Threads that do the same work at the same time whenever they are told to.
class Crew final {
public:
    explicit Crew(std::function<void(int thread)> const& work) {
        for (int thread = 0; thread < numThreads; ++thread) {
            m_threads.emplace_back([this, work, thread] {
                for (;;) {
                    m_begin.arrive_and_wait();
                    if (m_isDone) return;
                    work(thread);
                    m_end.arrive_and_wait();
                }
            });
        }
    }
    ~Crew() {
        m_isDone = true;
        m_begin.arrive_and_wait();
    }
    Crew(Crew const&) = delete;
    Crew& operator=(Crew const&) = delete;

    [[nodiscard]] double secondsOfRound() {
        m_begin.arrive_and_wait();
        const Stopwatch watch;
        m_end.arrive_and_wait();
        return watch.seconds();
    }

private:
    bool m_isDone = false;  // handed over by m_begin
    std::barrier<> m_begin{numThreads + 1};
    std::barrier<> m_end{numThreads + 1};
    std::vector<std::jthread> m_threads;
};

/// The total rate of eight threads by that of one: 1 or more when threads do not stand in each other's way.
void manyThreads(benchmark::State& state, bool isProducing, bool fetchesOwnFrame) {
    const int numFetches = isProducing ? numFetchesProducing : numFetchesIdle;
    ReadyPlayer player(tinyFrame, {.numHeadFrames = numThreads - 1});
    for (int64 frame = 0; frame < numThreads; ++frame)
        player.fetch(frame);
    if (isProducing) player.start(0, 0, numThreads, PlayParams::loop);
    Crew crew([&](int thread) {
        for (int i = 0; i < numFetches / numThreads; ++i)
            player.fetch(fetchesOwnFrame ? thread : 0);
    });
    Samples ratio;
    Samples oneUs;
    Samples manyUs;
    for ([[maybe_unused]] auto _ : state) {
        const Stopwatch watch;
        for (int i = 0; i < numFetches; ++i)
            player.fetch(fetchesOwnFrame ? i % numThreads : 0);
        const double one = watch.seconds();
        player.settle();
        const double many = crew.secondsOfRound();
        player.settle();
        state.SetIterationTime(many);
        ratio.add(one / many);
        oneUs.add(1e6 * one / numFetches);
        manyUs.add(1e6 * many / numFetches);
    }
    state.counters["one_thread_us"] = oneUs.median();
    state.counters["eight_threads_us"] = manyUs.median();
    state.counters["rate_ratio"] = ratio.median();
}

#define QRT_MANY_THREADS(name, isProducing, fetchesOwnFrame)           \
    BENCHMARK_CAPTURE(manyThreads, name, isProducing, fetchesOwnFrame) \
        ->UseManualTime()                                              \
        ->Unit(benchmark::kMillisecond)                                \
        ->Iterations(numTurns(60))

QRT_MANY_THREADS(ownFrames, false, true);
QRT_MANY_THREADS(sameFrame, false, false);
QRT_MANY_THREADS(ownFramesProducing, true, true);
QRT_MANY_THREADS(sameFrameProducing, true, false);

}  // namespace

}  // namespace QRT_0_81
