#pragma once

#include <functional>
#include <string>

#include "harness/qrtFakeGraphEngine.h"

namespace QRT_0_81 {

/// A graph engine that does what a test tells it before and after each of its operations: throw, wait, spoil OpenGL's
/// state, call the player. Everything else is `FakeGraphEngine`'s, its script and journal too.
///
/// Threading: hooks are set on any thread and run on the one that calls the operation, with no lock held.
class FaultyGraphEngine final : public GraphEngineInterface {
public:
    using Hook = std::function<void()>;

    /// A factory as `Player::create` takes it; its own hook is that of "create".
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();

    /// What to do before (or after) every call of an operation from now on, e.g. "renderFrame".
    static void before(std::string const& operation, Hook hook);
    static void after(std::string const& operation, Hook hook);
    /// Forgets all hooks.
    static void behave();

    // Prefs
    Status setPref(String const& name, int value) override;
    Status getPref(String const& name, int& value) const override;
    Status getPrefs(Vector<String>& names) const override;

    // GraphEngineInterface
    Status setGLContext(QOpenGLContext* context) override;
    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution,
                          Rational const& defaultSourceVideoFrameRate) override;
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description) override;
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override;
    Status setVideoFrameRate(Rational const& rate) override;
    [[nodiscard]] Rational getVideoFrameRate() const override;
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override;
    Status clearCache() override;
    Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const override;
    Status setStep(int32 step) override;
    [[nodiscard]] int32 getStep() const override;

private:
    FakeGraphEngine m_base;
};

}  // namespace QRT_0_81
