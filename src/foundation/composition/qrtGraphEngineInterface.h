#pragma once

#include "foundation/composition/qrtComposition.h"
#include "foundation/core/qrtAudioFormatInterface.h"
#include "foundation/core/qrtCacheStats.h"
#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtList.h"
#include "foundation/core/qrtPrefs.h"
#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtTokenResolver.h"
#include "foundation/core/qrtVideoBufferResolution.h"

class QOpenGLContext;

namespace QRT_0_81 {

/// Renders a composition: supplied by the host, driven by the player.
///
/// Threading: everything but the following is called on the player thread while the player is initialized, with its
/// OpenGL context current. `fillAudio`, `getCacheStats`, `getTokenResolver`, `getPrefs` and, while the player is not
/// initialized, `setPref` and `getPref` are called on host threads, possibly while a frame is being rendered.
/// The engine is released on the player thread, its context still current, and made anew by the next initialization.
/// That of a player which was never initialized is released where the player ends, and has never seen a context.
/// Results: any `Status`; the player passes failures on as they are.
class QRT_COMPOSITION_EXPORT GraphEngineInterface : public Prefs, public RefCountedMT {
public:
    ~GraphEngineInterface() override;

    /// The context that rendering will happen in; not yet created when this is called. Owned by the player, valid until
    /// the engine is released.
    virtual Status setGLContext(QOpenGLContext* context) = 0;

    /// Replaces the composition. `segments` are those of its stretches that the host renders itself.
    /// `Status::composition_incomplete` (269): adopted although parts of it cannot be rendered.
    virtual Status setComposition(SharedPtr<Composition> const& composition,
                                  List<SharedPtr<ExternalSegment>> const& segments,
                                  VideoBufferResolution const& resolution,
                                  Rational const& defaultSourceVideoFrameRate) = 0;

    /// Tells that the composition has changed in place; `description` is between host and engine.
    virtual Status updateComposition(SharedPtr<Composition> const& composition, String const& description) = 0;

    /// Draws frame number `frame` (at the rate of `getVideoFrameRate`) into `texture`, a `GL_TEXTURE_RECTANGLE` texture
    /// of the format `resolution`, cleared to opaque green. Row 0 of the texture is the bottom of the picture, as a
    /// host that draws it with texture coordinates growing upwards expects.
    virtual Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) = 0;

    /// Fills `buffer` with `bytes` bytes of audio in `format`, from sample frame `position` of the composition on.
    virtual Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                             size_t position) = 0;

    /// Asks for an output frame rate; `getVideoFrameRate` reports what it became.
    virtual Status setVideoFrameRate(Rational const& rate) = 0;
    /// The output frame rate, which frame numbers count in. The player asks after every `setComposition`, and
    /// after each `setVideoFrameRate` that succeeds.
    [[nodiscard]] virtual Rational getVideoFrameRate() const = 0;

    /// What the host resolves tokens with, or an empty pointer.
    [[nodiscard]] virtual SharedPtr<TokenResolver> getTokenResolver() const = 0;

    /// Drops what the engine itself caches. For hosts that know their engine: the player does not call it.
    virtual Status clearCache() = 0;
    /// Reports what the engine itself caches; `type` is `CacheStats::CacheType::graph_engine`.
    virtual Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const = 0;

    /// The signed number of frames by which playback advances: a hint for decoding ahead.
    virtual Status setStep(int32 step) = 0;
    /// What `setStep` has set; the player sets it anew where it differs from the run's.
    [[nodiscard]] virtual int32 getStep() const = 0;
};

}  // namespace QRT_0_81
