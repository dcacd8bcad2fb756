#pragma once

#include "harness/qrtFakeGraphEngine.h"

namespace QRT_0_81 {

/// A graph engine that puts external segments into the picture as a real one would.
///
/// The picture is cut into equal upright stripes: the first shows what `FakeGraphEngine` paints, the next ones the
/// segments' pictures in the order of the list. Formats of four channels of 8 bits only. Everything but the segments is
/// `FakeGraphEngine`'s, its script and journal too.
class CompositingGraphEngine final : public GraphEngineInterface {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new CompositingGraphEngine);
    }

    // Prefs
    Status setPref(String const& name, int value) override { return m_base.setPref(name, value); }
    Status getPref(String const& name, int& value) const override { return m_base.getPref(name, value); }
    Status getPrefs(Vector<String>& names) const override { return m_base.getPrefs(names); }

    // GraphEngineInterface
    Status setGLContext(QOpenGLContext* context) override { return m_base.setGLContext(context); }
    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution,
                          Rational const& defaultSourceVideoFrameRate) override;
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description) override {
        return m_base.updateComposition(composition, description);
    }
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override {
        return m_base.fillAudio(format, buffer, bytes, position);
    }
    Status setVideoFrameRate(Rational const& rate) override { return m_base.setVideoFrameRate(rate); }
    [[nodiscard]] Rational getVideoFrameRate() const override { return m_base.getVideoFrameRate(); }
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override { return m_base.getTokenResolver(); }
    Status clearCache() override { return m_base.clearCache(); }
    Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const override {
        return m_base.getCacheStats(type, stats);
    }
    Status setStep(int32 step) override { return m_base.setStep(step); }
    [[nodiscard]] int32 getStep() const override { return m_base.getStep(); }

private:
    FakeGraphEngine m_base;
    List<SharedPtr<ExternalSegment>> m_segments;  // player thread
};

}  // namespace QRT_0_81
