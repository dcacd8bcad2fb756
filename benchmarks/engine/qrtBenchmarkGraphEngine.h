#pragma once

#include <ctime>

#include <atomic>
#include <functional>
#include <memory>

#include "harness/qrtIdleGraphEngine.h"
#include "qrtBareLoop.h"

namespace QRT_0_81 {

/// What benchmarks tell the graph engines of this process, and what those tell them. A graph engine is made by a plain
/// function, so there is no other way to reach it.
struct BenchmarkScript {
    // Set by benchmarks.
    static inline std::atomic<bool> drawsQuad{true};   ///< else frames stay as they were cleared
    static inline std::atomic<bool> readsBack{false};  ///< whether the bare loop does
    /// So many frames of the bare loop are run by the next `renderFrame`, before it draws: on the player thread and in
    /// its context, where the engine itself works.
    static inline std::atomic<int> numBareFrames{0};
    /// Called once by the next `renderFrame`, on the player thread, with what runs one frame of the bare loop. To be
    /// set while the player thread has nothing to do.
    static inline std::function<void(std::function<void()> const& bareFrame)> withBareFrame;

    // Set by graph engines.
    static inline std::atomic<double> bareSecondsPerFrame{0.0};
    static inline std::atomic<double> bareCpuSecondsPerFrame{0.0};  ///< processor time of the player thread
    static inline std::atomic<long> bareAllocationsPerLoop{0};      ///< see allocationsOfThisThread
    static inline std::atomic<int64> lastFrame{-1};                 ///< the latest frame that was rendered
    static inline std::atomic<int64> numNewFrames{0};               ///< frames beyond all that were rendered before
    static inline std::atomic<double> newFrameAt{0.0};             ///< when the latest of those was, on `steadySeconds`
    static inline std::atomic<double> longestGapSeconds{0.0};      ///< between two of those
    static inline std::atomic<double> setCompositionSeconds{0.0};  ///< inside the latest `setComposition`
    static inline std::atomic<clockid_t> playerClock{};            ///< processor time of the player thread

    /// Set by programs that count allocations: how many the calling thread has made.
    static inline long (*allocationsOfThisThread)() = nullptr;
};

/// Draws a quad into every frame, or nothing, as `BenchmarkScript` says.
class BenchmarkGraphEngine final : public IdleGraphEngine {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();

    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution, Rational const& sourceRate) override;
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;

private:
    void runBareLoop(VideoBufferResolution const& resolution, int numFrames);
    void draw(VideoBufferResolution const& resolution, int64 frame, uint32 texture);

    std::unique_ptr<QuadRenderer> m_quad;  // player thread
    std::unique_ptr<BareLoop> m_bareLoop;  // player thread
};

}  // namespace QRT_0_81
