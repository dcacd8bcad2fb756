#pragma once

#include <atomic>

#include "playback/qrtMediaClock.h"

namespace qrtplay {

/// A clock that is moved by hand.
class HandClock final : public MediaClock {
public:
    [[nodiscard]] int64 nanoseconds() const override { return m_now; }
    void moveTo(int64 nanoseconds) { m_now = nanoseconds; }
    void moveBy(int64 nanoseconds) { m_now += nanoseconds; }

private:
    std::atomic<int64> m_now = 1000 * nanosecondsPerSecond;
};

}  // namespace qrtplay
