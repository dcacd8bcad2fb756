#pragma once

#include <thread>

#include "foundation/core/qrtList.h"
#include "harness/qrtFakeComposition.h"
#include "player/qrtPlayer.h"
#include "qrtBenchmarkGraphEngine.h"
#include "qrtBenchmarkSupport.h"

namespace QRT_0_81 {

/// A player that is ready to play a composition of a million frames, as a host would use it.
class ReadyPlayer final {
public:
    struct Options {
        bool draws = false;       ///< a quad into every frame, or nothing
        bool isInMemory = false;  ///< frames are read back
        int32 numHeadFrames = 2;
    };

    ReadyPlayer(VideoBufferResolution const& resolution, Options const& options)
        : m_player(Player::create(resolution, BenchmarkGraphEngine::create)) {
        BenchmarkScript::drawsQuad = options.draws;
        BenchmarkScript::readsBack = options.isInMemory;
        BenchmarkScript::lastFrame = -1;
        check(m_player->setRamOutputs(options.isInMemory));
        check(m_player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, options.numHeadFrames));
        check(m_player->initialize(nullptr, nullptr));
        check(m_player->setComposition(FakeComposition::create(0, numFrames), {}));
        m_playerClock = BenchmarkScript::playerClock;
    }

    [[nodiscard]] Player& player() { return *m_player; }

    void start(int64 current, int64 first = 0, int64 count = numFrames,
               PlayParams::PlayMode mode = PlayParams::single) {
        const Rational rate(24, 1);
        check(m_player->startProducing(PlayParams::create(Time(current, rate), Time(first, rate), Time(count, rate),
                                                          rate, 1, mode, PlayParams::video_only)));
    }
    void stop() { check(m_player->stopProducing()); }

    SharedPtr<VideoBuffer> fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        check(m_player->getVideoBuffer(frame, buffer));
        return buffer;
    }
    /// Fetches the next frame as a host does that is quicker than the player and lets it render ahead: asked for at
    /// once, it would overtake the step of look-ahead that is about to render it.
    SharedPtr<VideoBuffer> fetchInTurn(int64 frame) {
        constexpr int mostTurns = 2;
        for (int turn = 0; turn < mostTurns && !m_player->isVideoBufferReady(frame); ++turn)
            settle();
        return fetch(frame);
    }
    /// Fetches a cached frame while producing, and waits until look-ahead has rendered the frame that this calls for.
    void playTo(int64 frame, int64 aheadFrame) {
        BenchmarkScript::lastFrame = -1;
        fetch(frame);
        while (BenchmarkScript::lastFrame != aheadFrame)
            std::this_thread::yield();
    }
    /// Waits until the player thread has done all that was asked of it before.
    void settle() {
        int value = 0;
        check(m_player->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value));
    }
    /// Runs the bare loop on the player thread, which is not producing.
    void runBareLoop(int numBareFrames) {
        BenchmarkScript::bareSecondsPerFrame = 0.0;
        BenchmarkScript::numBareFrames = numBareFrames;
        fetch(m_nextUncachedFrame++);
        if (BenchmarkScript::bareSecondsPerFrame <= 0.0) throw std::logic_error("the bare loop did not run");
    }

    /// Has the player thread, which is not producing, do `work`; it is given what runs one frame of the bare loop.
    void runWithBareFrame(std::function<void(std::function<void()> const& bareFrame)> const& work) {
        BenchmarkScript::withBareFrame = work;
        fetch(m_nextUncachedFrame++);
    }

    /// Processor seconds that the player thread has used; all its work is done when `settle` has returned.
    [[nodiscard]] double cpuSeconds() const { return secondsOf(m_playerClock); }

private:
    static constexpr int64 numFrames = 1'000'000;

    const SharedPtr<Player> m_player;
    int64 m_nextUncachedFrame = 900'000;
    clockid_t m_playerClock{};
};

inline const VideoBufferResolution tinyFrame(16, 16, 4, 8, false);

}  // namespace QRT_0_81
