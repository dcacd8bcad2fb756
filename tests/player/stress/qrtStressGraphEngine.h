#pragma once

#include <atomic>
#include <vector>

#include "foundation/composition/qrtComposition.h"
#include "harness/qrtIdleGraphEngine.h"
#include "qrtStressWorld.h"

namespace QRT_0_81 {

/// A composition that is nothing but its length and its generation.
class StressComposition final : public Composition {
public:
    explicit StressComposition(uint32 generation) : generation(generation) {}

    Status getStartTime(Time& start) const override {
        start = Time(0, Rational(24, 1));
        return Status();
    }
    Status getDuration(Time& duration) const override {
        duration = Time(StressWorld::numFrames, Rational(24, 1));
        return Status();
    }

    const uint32 generation;
};

/// A graph engine that paints frames with their number and the composition's generation, and makes every fault that a
/// host's own may make.
///
/// The picture: red and green hold the low and the high byte of the frame number, blue and alpha those of the
/// generation. Where the generation shows external segments the first columns, two for each, are theirs.
class StressGraphEngine final : public IdleGraphEngine {
public:
    static constexpr int segmentWidth = 2;

    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();
    /// Engines that exist at this moment.
    [[nodiscard]] static int numAlive();

    ~StressGraphEngine() override;

    Status setPref(String const& name, int value) override;
    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution,
                          Rational const& defaultSourceVideoFrameRate) override;
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description) override;
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override;
    Status setVideoFrameRate(Rational const& rate) override;
    [[nodiscard]] Rational getVideoFrameRate() const override;
    Status setStep(int32 step) override;

private:
    StressGraphEngine();

    void adopt(SharedPtr<Composition> const& composition);
    Status drawSegments(VideoBufferResolution const& resolution, int64 frame, uint32 texture);

    // Player thread
    uint32 m_generation = 0;
    List<SharedPtr<ExternalSegment>> m_segments;
    std::atomic<int32> m_framesPerSecond{24};
};

}  // namespace QRT_0_81
