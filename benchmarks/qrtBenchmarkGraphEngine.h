#pragma once

#include <atomic>
#include <memory>

#include "foundation/composition/qrtGraphEngineInterface.h"
#include "qrtBareLoop.h"

namespace QRT_0_81 {

/// A composition of so many frames at 24 frames per second.
class BenchmarkComposition final : public Composition {
public:
    explicit BenchmarkComposition(int64 numFrames) : m_numFrames(numFrames) {}
    Status getStartTime(Time& start) const override;
    Status getDuration(Time& duration) const override;

private:
    const int64 m_numFrames;
};

/// Draws a quad into every frame. Asked for `bareLoopFrame`, it runs the bare loop instead, so that the comparison
/// happens on the player thread and in its context.
class BenchmarkGraphEngine final : public GraphEngineInterface {
public:
    static constexpr int64 bareLoopFrame = 999'999;
    static constexpr int bareLoopLength = 12;
    /// Seconds a frame of the latest bare loop.
    static inline std::atomic<double> bareSecondsPerFrame{0.0};

    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();

    Status setPref(String const&, int) override { return Status::invalid_argument; }
    Status getPref(String const&, int&) const override { return Status::invalid_argument; }
    Status getPrefs(Vector<String>&) const override { return Status(); }
    Status setGLContext(QOpenGLContext*) override { return Status(); }
    Status setComposition(SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const&,
                          VideoBufferResolution const&, Rational const&) override {
        return Status();
    }
    Status updateComposition(SharedPtr<Composition> const&, String const&) override { return Status(); }
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char*, size_t, size_t) override { return Status(); }
    Status setVideoFrameRate(Rational const&) override { return Status(); }
    [[nodiscard]] Rational getVideoFrameRate() const override { return {24, 1}; }
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override { return nullptr; }
    Status clearCache() override { return Status(); }
    Status getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>&) const override { return Status(); }
    Status setStep(int32 step) override;
    [[nodiscard]] int32 getStep() const override { return m_step; }

private:
    void drawQuad(VideoBufferResolution const& resolution, int64 frame, uint32 texture);

    std::unique_ptr<QuadRenderer> m_quad;  // player thread
    std::unique_ptr<BareLoop> m_bareLoop;  // player thread
    VideoBufferResolution m_bareLoopResolution;
    std::atomic<int32> m_step{1};
};

}  // namespace QRT_0_81
