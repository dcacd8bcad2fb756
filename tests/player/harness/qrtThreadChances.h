#pragma once

#include <atomic>
#include <thread>

namespace QRT_0_81 {

/// Gives the other threads many chances to set `flag`, which they should not; says whether they refrained.
/// A correct program always passes; a wrong one fails as soon as the scheduler lets it run once.
[[nodiscard]] inline bool staysFalse(std::atomic<bool> const& flag) {
    for (int chance = 0; chance < 20000; ++chance) {
        if (flag) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace QRT_0_81
