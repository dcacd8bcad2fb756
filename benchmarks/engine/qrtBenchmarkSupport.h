#pragma once

#include <malloc.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <vector>

#include "foundation/core/qrtStatus.h"

namespace QRT_0_81 {

// What the benchmarks share. A figure that counts is a ratio (or a difference) between two sides that take turns within
// one run, so that both meet the same noise; the median over all turns is what is reported.

inline void check(Status const& status) {
    if (status.failure()) throw std::runtime_error(status.toString().c_str());
}

/// How often the sides take turns: a sixth as often, but at least five times, when QRT_BENCHMARK_QUICK is set.
[[nodiscard]] inline int numTurns(int full) {
    static const bool isQuick = std::getenv("QRT_BENCHMARK_QUICK") != nullptr;
    return isQuick ? std::max(full / 6, 5) : full;
}

/// A clock that only goes forward.
[[nodiscard]] inline double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds since a moment.
class Stopwatch final {
public:
    [[nodiscard]] double seconds() const { return steadySeconds() - m_begin; }

private:
    const double m_begin = steadySeconds();
};

/// The seconds that a clock of POSIX shows, e.g. the processor time of a thread.
[[nodiscard]] inline double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Bytes that this process has allocated and not freed.
[[nodiscard]] inline double bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// Measured values of one kind.
class Samples final {
public:
    void add(double value) { m_values.push_back(value); }
    /// The value that `share` of all values lie below; `share` in [0, 1).
    [[nodiscard]] double quantile(double share) const {
        if (m_values.empty()) throw std::logic_error("nothing was measured");
        std::vector<double> sorted = m_values;
        std::sort(sorted.begin(), sorted.end());
        return sorted[static_cast<size_t>(share * static_cast<double>(sorted.size()))];
    }
    [[nodiscard]] double median() const { return quantile(0.5); }

private:
    std::vector<double> m_values;
};

/// The two sides of a comparison. Who begins changes with every turn: on a busy machine the one that comes after a
/// pause is served first.
class Pairs final {
public:
    /// Lets each side do its work once. Both return the seconds that it took; those of the engine are returned.
    template <class Engine, class Bare>
    double takeTurn(Engine const& engine, Bare const& bare) {
        m_engineBegins = !m_engineBegins;
        const double first = m_engineBegins ? engine() : bare();
        const double second = m_engineBegins ? bare() : engine();
        const double engineSeconds = m_engineBegins ? first : second;
        const double bareSeconds = m_engineBegins ? second : first;
        m_engine.add(engineSeconds);
        m_bare.add(bareSeconds);
        m_ratio.add(engineSeconds / bareSeconds);
        return engineSeconds;
    }
    /// Reports what one unit of work took, of which each side did `unitsPerTurn` a turn, and the ratio.
    void report(benchmark::State& state, double unitsPerTurn = 1.0) const {
        state.counters["engine_us"] = 1e6 * m_engine.median() / unitsPerTurn;
        state.counters["bare_us"] = 1e6 * m_bare.median() / unitsPerTurn;
        state.counters["ratio"] = m_ratio.median();
    }

private:
    bool m_engineBegins = false;
    Samples m_engine;
    Samples m_bare;
    Samples m_ratio;
};

}  // namespace QRT_0_81
