#pragma once

#include <atomic>

#include "foundation/composition/qrtGraphEngineInterface.h"

namespace QRT_0_81 {

/// A graph engine that succeeds in everything and does nothing: frames stay as they were cleared, 24 a second.
class IdleGraphEngine : public GraphEngineInterface {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new IdleGraphEngine);
    }

    // Prefs
    Status setPref(String const&, int) override { return Status::invalid_argument; }
    Status getPref(String const&, int&) const override { return Status::invalid_argument; }
    Status getPrefs(Vector<String>&) const override { return Status(); }

    // GraphEngineInterface
    Status setGLContext(QOpenGLContext*) override { return Status(); }
    Status setComposition(SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const&,
                          VideoBufferResolution const&, Rational const&) override {
        return Status();
    }
    Status updateComposition(SharedPtr<Composition> const&, String const&) override { return Status(); }
    Status renderFrame(VideoBufferResolution const&, int64, uint32) override { return Status(); }
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char*, size_t, size_t) override { return Status(); }
    Status setVideoFrameRate(Rational const&) override { return Status(); }
    [[nodiscard]] Rational getVideoFrameRate() const override { return {24, 1}; }
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override { return nullptr; }
    Status clearCache() override { return Status(); }
    Status getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>&) const override { return Status(); }
    Status setStep(int32 step) override {
        m_step = step;
        return Status();
    }
    [[nodiscard]] int32 getStep() const override { return m_step; }

protected:
    IdleGraphEngine() = default;

private:
    std::atomic<int32> m_step{1};
};

}  // namespace QRT_0_81
