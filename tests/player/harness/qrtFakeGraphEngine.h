#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/composition/qrtGraphEngineInterface.h"
#include "harness/qrtFakeComposition.h"

namespace QRT_0_81 {

/// A graph engine that paints each frame with its number, so that pixels prove which frame arrived, keeps a journal of
/// what it was asked, and does as a test tells it.
///
/// The picture: red and green hold the low and high byte of the frame number, blue the composition's identity, alpha
/// is opaque; the bottom-left pixel is white, so that pixels also prove which way up the frame is.
class FakeGraphEngine final : public GraphEngineInterface {
public:
    /// What tests set before, and read after; shared by all engines of the process and reset by `resetScript`.
    struct Script {
        std::mutex mutex;
        // under mutex
        std::vector<std::string> journal;
        std::map<std::string, int> results;  ///< status type to answer with, by operation, e.g. "renderFrame"
        std::function<void(int64)> beforeRender;
        std::map<std::string, int> prefs{{"FAKE_QUALITY", 3}};
        Rational frameRateToReport{24, 1};
        // atomic
        std::atomic<bool> draws{true};
        std::atomic<int> numCreated{0};
        std::atomic<int> numDestroyed{0};
    };
    [[nodiscard]] static Script& script();
    static void resetScript();

    /// A factory as `Player::create` takes it.
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();
    [[nodiscard]] static SharedPtr<GraphEngineInterface> createNone() { return nullptr; }

    // What tests ask
    [[nodiscard]] static std::vector<std::string> journal();
    [[nodiscard]] static std::vector<int64> renderedFrames();
    [[nodiscard]] static int countOf(std::string const& entry);
    static void clearJournal();
    static void answer(std::string const& operation, int statusType);
    static void callBeforeRender(std::function<void(int64)> hook);

    FakeGraphEngine();
    ~FakeGraphEngine() override;

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
    /// Adds to the journal and gives the scripted result.
    static Status note(std::string const& operation, std::string const& details = "");

    std::atomic<int32> m_step{1};
    QOpenGLContext* m_context = nullptr;          // player thread
    SharedPtr<Composition> m_composition;         // player thread
    List<SharedPtr<ExternalSegment>> m_segments;  // player thread
    const SharedPtr<TokenResolver> m_tokenResolver;
};

/// The frame number painted into a pixel of four channels between 0 and 1, and the composition's identity.
[[nodiscard]] int64 paintedFrame(float const* pixel);
[[nodiscard]] int paintedIdentity(float const* pixel);

}  // namespace QRT_0_81
