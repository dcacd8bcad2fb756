#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

class Player;

/// What a host's own code may do wrong.
enum class StressFault {
    render_fails,
    render_throws,
    render_draws_nothing,
    render_leaves_state,
    render_calls_back,
    composition_fails,
    composition_throws,
    composition_is_incomplete,
    update_fails,
    step_fails,
    rate_fails,
    audio_fails,
    pref_fails,
    segment_fails,
    segment_throws,
    count
};

/// What a fault that answers answers with: no number of the player's own.
inline constexpr auto injectedFailure = static_cast<Status::Type>(4711);

/// What the threads of a run, its graph engine and its segments have in common: the faults, what frames may look like
/// at this moment, and what was counted and complained about.
///
/// Every composition has a generation, one more than the one before, and so has every update of one. Frames are painted
/// with it, in 16 bits, so that it is told which ones are of an old composition.
///
/// Threading: any thread may call anything.
class StressWorld final {
public:
    static constexpr int64 numFrames = 100;  // of a composition, at 24 frames per second

    explicit StressWorld(unsigned seed) : m_random(seed) {}

    /// Whether the fault happens now: in the long run one time in `odds`.
    [[nodiscard]] bool happens(StressFault fault, unsigned odds) {
        const std::lock_guard lock(m_mutex);
        if (m_random() % odds != 0) return false;
        ++m_numFaults[static_cast<size_t>(fault)];
        return true;
    }
    [[nodiscard]] uint64 numFaults(StressFault fault) const {
        const std::lock_guard lock(m_mutex);
        return m_numFaults[static_cast<size_t>(fault)];
    }

    /// Something that must never be was seen. The run ends.
    void complain(std::string const& what) {
        const std::lock_guard lock(m_mutex);
        constexpr size_t most = 20;
        if (m_complaints.size() < most) m_complaints.push_back(what);
        m_isSpoilt = true;
    }
    void require(bool holds, std::string const& what) {
        if (!holds) complain(what);
    }
    [[nodiscard]] bool isSpoilt() const { return m_isSpoilt; }
    [[nodiscard]] std::vector<std::string> complaints() const {
        const std::lock_guard lock(m_mutex);
        return m_complaints;
    }

    /// The generation that was last handed to the player, and the one that it has surely taken.
    std::atomic<uint32> announced{0};
    std::atomic<uint32> exchanged{0};
    std::mutex exchangeMutex;  ///< held from the announcement of a generation to its end

    /// Frames that were once left undrawn; they may show as solid green.
    [[nodiscard]] std::atomic<bool>& isUndrawn(int64 frame) {
        return m_undrawn[static_cast<size_t>(frame) % m_undrawn.size()];
    }

    std::atomic<Player*> player{nullptr};  ///< for a graph engine that calls back

    std::atomic<uint64> numCalls{0};
    std::atomic<uint64> numDelivered{0};
    std::atomic<uint64> numChecked{0};       ///< frames whose pixels were looked at
    std::atomic<uint64> numCacheChecked{0};  ///< cached frames whose pixels were looked at
    std::atomic<uint64> numPoolChecks{0};
    std::atomic<uint64> numNotifications{0};

private:
    mutable std::mutex m_mutex;
    std::mt19937 m_random;                                                      // under m_mutex
    std::array<uint64, static_cast<size_t>(StressFault::count)> m_numFaults{};  // under m_mutex
    std::vector<std::string> m_complaints;                                      // under m_mutex
    std::atomic<bool> m_isSpoilt{false};
    std::array<std::atomic<bool>, 1024> m_undrawn{};
};

/// The world of the run that is under way: a factory of graph engines is a plain function and knows no other way to it.
[[nodiscard]] inline StressWorld*& stressWorld() {
    static StressWorld* world = nullptr;
    return world;
}

}  // namespace QRT_0_81
