#pragma once

#include <memory>
#include <mutex>

#include "base/qrtKit.h"
#include "foundation/composition/qrtGraphEngineInterface.h"
#include "generators/qrtSegmentRenderer.h"
#include "graph/qrtConversionChoice.h"
#include "graph/qrtFrameComposer.h"
#include "graph/qrtFrameCourse.h"
#include "graph/qrtPlannedFrames.h"
#include "graph/qrtReadyPictures.h"
#include "graph/qrtTimelineComposition.h"
#include "graph/qrtTimelineSound.h"
#include "media/qrtPictureStore.h"

namespace qrtplay {

/// Renders a `TimelineComposition`: decodes the pictures that a frame is made of, draws them over each other, and has
/// the host's segments draw theirs; decodes ahead in the direction of `setStep` on threads of its own; mixes sound.
///
/// Frames outside the timeline are black. Media that is missing or cannot be opened shows as a slate with its name, and
/// is silent; the composition is told. A frame that cannot be decoded or drawn fails with `Status::general_failure`,
/// and the composition is told why. OpenGL: made at the first frame and deleted with the engine, the context given by
/// `setGLContext` being current both times.
class MediaGraphEngine final : public GraphEngineInterface {
public:
    /// Preference: the memory, in mebibytes, that decoded pictures may take up; at least one is always kept.
    /// The environment variable "QRT_PREF_" + its name sets where it starts.
    static const String DECODE_CACHE_MIB;  // "QRTPLAY_DECODE_CACHE_MIB"
    /// Preference: where pictures are converted, a `ConversionChoice` as a number: 0 auto, 1 CPU, 2 GPU. The
    /// environment variable "QRT_PREF_" + its name sets where it starts. Takes effect at the next frame.
    static const String CONVERSION;  // "QRTPLAY_CONVERSION"

    /// The factory for `Player::create`.
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create();
    ~MediaGraphEngine() override;

    /// `Status::invalid_argument` for another name or a value that means nothing.
    Status setPref(String const& name, int value) override;
    Status getPref(String const& name, int& value) const override;
    Status getPrefs(Vector<String>& names) const override;

    Status setGLContext(QOpenGLContext* context) override;
    /// `Status::no_composition` for an empty one, `Status::invalid_argument` for one of another kind; there is none
    /// then. `segments`: those that draw the timeline's generators, found by their ids.
    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution,
                          Rational const& defaultSourceVideoFrameRate) override;
    /// Takes `composition` for the current one, as `setComposition` does, but keeps the output rate and the segments,
    /// and what has been decoded when its timeline is the same.
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description) override;
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override;
    /// `format` has to be a `HostAudioFormat`, else `Status::invalid_argument`. Sound that cannot be decoded is silent,
    /// and the composition is told. `Status::no_composition` without one.
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override;
    /// `Status::invalid_argument` for a rate that is not positive.
    Status setVideoFrameRate(Rational const& rate) override;
    [[nodiscard]] Rational getVideoFrameRate() const override;
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override;
    Status clearCache() override;
    /// `CacheType::graph_engine`: the output frames whose decoded pictures are kept. `Status::invalid_query` for
    /// others.
    Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const override;
    Status setStep(int32 step) override;
    [[nodiscard]] int32 getStep() const override;

private:
    class Layers;

    /// What is being played; replaced as a whole, so that other threads can look at it while a frame renders.
    struct Source {
        SharedPtr<TimelineComposition> composition;
        std::shared_ptr<PictureStore> pictures;
        std::shared_ptr<TimelineSound> sound;
    };

    MediaGraphEngine();
    Status adopt(SharedPtr<Composition> const& composition, bool isUpdate);
    [[nodiscard]] Source source() const;
    void prepareAhead(Source const& source, int64 frame);
    [[nodiscard]] std::shared_ptr<ReadyPictures> readyPictures(QOpenGLExtraFunctions& gl,
                                                               VideoBufferResolution const& resolution);
    void convertAhead(Source const& source, int64 frame, VideoBufferResolution const& resolution, ReadyPictures& ready);
    [[nodiscard]] std::vector<PictureStore::Wish> nextPictures(int64 frame) const;
    void shareBudget(PictureStore& pictures, size_t readyBytes);

    // Player thread only.
    QOpenGLContext* m_context = nullptr;
    FrameComposer m_composer;
    SegmentRenderer m_segments;

    mutable std::mutex m_mutex;
    // Under m_mutex.
    Source m_source;
    mutable PlannedFrames m_planned;  // asking for the frames forgets those whose pictures are gone
    FrameCourse m_course;
    Rational m_rate{24, 1};
    int32 m_step = 1;
    int m_cacheInMiB;
    size_t m_readyBytes = 0;  // which the budget of the decoded pictures goes without
    ConversionChoice m_conversion;
    std::shared_ptr<ReadyPictures> m_ready;  // while the CPU converts
};

}  // namespace qrtplay
