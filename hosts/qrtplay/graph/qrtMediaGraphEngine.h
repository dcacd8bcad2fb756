#pragma once

#include <memory>
#include <mutex>

#include "foundation/composition/qrtGraphEngineInterface.h"
#include "graph/qrtPicturePainter.h"
#include "base/qrtKit.h"
#include "media/qrtVideoDecoder.h"
#include "timeline/qrtMediaComposition.h"

namespace qrtplay {

/// Renders a `MediaComposition`: decodes the frame and draws it, with black bars where its shape is not the output's.
///
/// Frames outside the clip are black. A frame that cannot be decoded or drawn fails with `Status::general_failure`, and the
/// composition is told why. At another output rate than the clip's, frames are repeated or left out.
/// Sound is not supported: `fillAudio` fails.
/// OpenGL: made at the first frame and deleted with the engine, the context given by `setGLContext` being current both times.
class MediaGraphEngine final : public GraphEngineInterface {
public:
    /// Preference: the memory, in mebibytes, that decoded frames may take up; at least one frame is always kept.
    /// The environment variable "QRT_PREF_" + its name sets where it starts.
    static const String DECODE_CACHE_MIB;  // "QRTPLAY_DECODE_CACHE_MIB"

    /// The factory for `Player::create`.
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();
    ~MediaGraphEngine() override;

    /// `Status::invalid_argument` for another name than `DECODE_CACHE_MIB` or a negative value.
    Status setPref(String const& name, int value) override;
    Status getPref(String const& name, int& value) const override;
    Status getPrefs(Vector<String>& names) const override;

    Status setGLContext(QOpenGLContext* context) override;
    /// `Status::no_composition` for an empty one, `Status::invalid_argument` for one of another kind,
    /// `Status::general_failure` when its file cannot be opened any more; there is none then.
    /// `Status::composition_incomplete` when there are segments, which are the host's to draw.
    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution,
                          Rational const& defaultSourceVideoFrameRate) override;
    /// Takes `composition` for the current one, as `setComposition` does, but keeps the output rate.
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description) override;
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override;
    /// `Status::invalid_argument` for a rate that is not positive.
    Status setVideoFrameRate(Rational const& rate) override;
    [[nodiscard]] Rational getVideoFrameRate() const override;
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override;
    Status clearCache() override;
    /// `CacheType::graph_engine`: the output frames whose decoded picture is kept. `Status::invalid_query` for others.
    Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const override;
    Status setStep(int32 step) override;
    [[nodiscard]] int32 getStep() const override;

private:
    /// What is being played; replaced as a whole, so that other threads can look at it while a frame renders.
    struct Source {
        SharedPtr<MediaComposition> composition;
        std::shared_ptr<VideoDecoder> decoder;
    };

    MediaGraphEngine();
    Status adopt(SharedPtr<Composition> const& composition, bool keepRate);
    [[nodiscard]] Source source() const;
    Outcome draw(Source const& source, int64 sourceFrame, PicturePainter::Target const& target);

    // Player thread only.
    QOpenGLContext* m_context = nullptr;
    PicturePainter m_painter;

    mutable std::mutex m_mutex;
    // Under m_mutex.
    Source m_source;
    Rational m_rate{24, 1};
    int32 m_step = 1;
    int m_cacheInMiB;
};

}  // namespace qrtplay
