#pragma once

#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "foundation/core/qrtObserver.h"
#include "qrtStressFrame.h"
#include "qrtStressInspector.h"
#include "qrtStressSegment.h"

namespace QRT_0_81 {

/// An observer that must not be called while it is not registered; now and then it removes itself.
class StressObserver final : public Observer {
public:
    StressObserver(StressWorld& world, Player& player, unsigned seed)
        : m_world(world), m_player(player), m_seed(seed) {}
    ~StressObserver() override { stopObserving(); }

    void add() {
        m_isWanted = true;
        m_player.addObserver(this);
    }
    void remove() {
        m_player.removeObserver(this);
        m_isWanted = false;
    }
    void update(Subject*, NotificationHint const&) override {
        ++m_world.numNotifications;
        m_world.require(m_isWanted, "no notification comes after the removal of an observer");
        if (++m_numUpdates % 16 == m_seed % 16) m_player.removeObserver(this);
    }

private:
    StressWorld& m_world;
    Player& m_player;
    const unsigned m_seed;
    std::atomic<bool> m_isWanted{false};
    std::atomic<unsigned> m_numUpdates{0};
};

/// The calls of one host thread, drawn from a seeded generator, and what it keeps between them.
///
/// Threading: one thread at a time.
class StressHost final {
public:
    using Segments = List<SharedPtr<ExternalSegment>>;

    /// `context`: of a host that can look at textures, current on its thread; null for all others.
    StressHost(StressWorld& world, Player& player, Segments segments, HostContext const* context, unsigned seed);

    /// Makes `numCalls` calls of the player, or as many as there are before something is found.
    void call(int numCalls);

    /// The frames that it holds.
    [[nodiscard]] std::vector<SharedPtr<VideoBuffer>> heldBuffers() const;
    /// Looks again at what it holds: the pixels are those that were delivered.
    void checkHeld();
    void dropHeld() { m_held.clear(); }
    /// Ends what needs the player.
    void leave();

private:
    struct Held {
        SharedPtr<VideoBuffer> buffer;
        std::vector<unsigned char> bytes;  // as they were delivered; empty: they cannot be read here
    };

    void callOne();
    void fetch();
    void lookAtCache();
    void lookAtPools();
    void produce();
    void exchange();
    void update();
    void changeFormat();
    void changeSettings();
    void ask();
    void observe();
    void invalidate();

    [[nodiscard]] int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }
    /// Counts a call, and complains about an answer that it never gives.
    void expect(char const* call, Status status, std::initializer_list<int> answers);

    StressWorld& m_world;
    Player& m_player;
    const Segments m_segments;
    HostContext const* const m_context;
    const unsigned m_seed;
    std::mt19937 m_random;
    std::vector<Held> m_held;
    std::unique_ptr<StressObserver> m_observer;
    int m_numCalls = 0;
};

}  // namespace QRT_0_81
