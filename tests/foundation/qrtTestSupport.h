#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

#include "foundation/core/qrtRefCountedMT.h"

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

/// What a container holds, in order.
template <class Container>
[[nodiscard]] auto itemsOf(Container& container) {
    return std::vector(container.begin(), container.end());
}

/// A shared object that tells, in a counter of the test's, how many of its kind are alive.
class Tracked : public RefCountedMT {
public:
    explicit Tracked(std::atomic<int>& alive) : m_alive(alive) { ++m_alive; }
    Tracked(Tracked const& other) : RefCountedMT(other), m_alive(other.m_alive) { ++m_alive; }
    Tracked& operator=(Tracked const&) = delete;
    ~Tracked() override { --m_alive; }

private:
    std::atomic<int>& m_alive;
};

}  // namespace QRT_0_81
