#pragma once

#include <algorithm>

#include "common/clip.h"
#include "foundation/composition/qrtGraphEngineInterface.h"

namespace examples {

using namespace QRT_0_81;

/// What every graph engine has to answer, as one answers that can draw nothing, sounds silent and has nothing to tune.
/// The examples derive from it and add what they are about.
class GraphEngine : public GraphEngineInterface {
public:
    // Preferences: none.
    Status setPref(String const&, int) override { return Status::invalid_argument; }
    Status getPref(String const&, int&) const override { return Status::invalid_argument; }
    Status getPrefs(Vector<String>&) const override { return Status(); }

    Status setGLContext(QOpenGLContext*) override { return Status(); }

    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const&,
                          VideoBufferResolution const&, Rational const&) override {
        m_composition = composition;
        return Status();
    }
    Status updateComposition(SharedPtr<Composition> const& composition, String const&) override {
        m_composition = composition;
        return Status();
    }

    Status renderFrame(VideoBufferResolution const&, int64, uint32) override { return Status::general_failure; }
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char* buffer, size_t bytes, size_t) override {
        std::fill_n(buffer, bytes, char(0));
        return Status();
    }

    // The rate of the composition, and no other.
    Status setVideoFrameRate(Rational const& rate) override {
        return rate == frameRate ? Status() : Status(Status::invalid_argument);
    }
    [[nodiscard]] Rational getVideoFrameRate() const override { return frameRate; }

    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override { return nullptr; }

    // Nothing is cached here.
    Status clearCache() override { return Status(); }
    Status getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>& stats) const override {
        stats = CacheStats::create();
        return Status();
    }

    Status setStep(int32 step) override {
        m_step = step;
        return Status();
    }
    [[nodiscard]] int32 getStep() const override { return m_step; }

protected:
    SharedPtr<Composition> m_composition;  // player thread

private:
    int32 m_step = 1;  // player thread
};

}  // namespace examples
