#pragma once

#include <algorithm>

#include "base/qrtKit.h"

namespace qrtplay {

/// Says evenly how much a sound device has played, from the steps in which the device reports it.
///
/// The device has played at least what it last reported, and reports are noticed late rather than early. So the report
/// that is furthest ahead of an even course is the most exact one, and the clock follows those; between them it runs
/// with the machine's clock. It never goes back, and never gets further ahead of the last report than one interval of
/// reports.
///
/// All in nanoseconds; `now` is a clock that never goes back. Threading: one thread at a time.
class DeviceClock final {
public:
    /// A device that has not gone on for so long is as good as lost.
    static constexpr int64 patience = 2'000'000'000;

    /// `interval`: the time between two reports as far as it is known. Reports that are further apart make it longer.
    DeviceClock(int64 interval, int64 now) noexcept : m_interval(interval), m_progressAt(now) {}

    /// At `now` the device said that it has played `played`. The same number again is no progress.
    void report(int64 played, int64 now) noexcept {
        const int64 lead = played - now;
        if (played <= m_played) {
            m_isStalled = now - m_progressAt > patience;
            // It waits for samples: the course begins anew when it goes on.
            if (now - m_progressAt > m_interval) m_lead = lead;
            return;
        }
        if (m_played > 0) m_interval = std::max(m_interval, std::min(played - m_played, longestInterval));
        // Fades by more than two clocks ever differ, so that an old report does not rule for good.
        const int64 faded = m_lead - (now - m_progressAt) / 2000;
        m_lead = m_played > 0 ? std::max(faded, lead) : lead;
        m_played = played;
        m_progressAt = now;
        m_isStalled = false;
    }

    /// What has been played by `now`; 0 until the first report of progress.
    [[nodiscard]] int64 playedBy(int64 now) noexcept {
        if (m_played == 0) return 0;
        m_answered = std::max(m_answered, std::clamp(now + m_lead, m_played, m_played + m_interval));
        return m_answered;
    }
    [[nodiscard]] bool isStalled() const noexcept { return m_isStalled; }

private:
    static constexpr int64 longestInterval = 100'000'000;

    int64 m_interval;
    int64 m_progressAt;  // when the last report of progress came
    int64 m_played = 0;  // by that report
    int64 m_lead = 0;    // of the device over the machine's clock
    int64 m_answered = 0;
    bool m_isStalled = false;
};

}  // namespace qrtplay
