#pragma once

#include "foundation/composition/qrtComposition.h"
#include "foundation/composition/qrtGraphEngineInterface.h"
#include "foundation/core/qrtAudioFormatInterface.h"
#include "foundation/core/qrtCacheStats.h"
#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtList.h"
#include "foundation/core/qrtPrefs.h"
#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtResource.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtTokenResolver.h"
#include "foundation/core/qrtTypes.h"
#include "foundation/core/qrtVector.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "foundation/core/qrtVideoBufferResolution.h"
#include "player/qrtPlayParams.h"

namespace QRT_0_81 {

class Observer;
class PlayerImpl;

/// Turns a composition into video frames and audio samples, ahead of the host.
///
/// A player owns one thread with an OpenGL 3.2 core-profile context that shares objects with the host's. Set a
/// composition, start producing, and fetch frames by number: frames around the current one are rendered ahead and
/// cached, any other is produced while the caller waits.
///
/// Threading: every method may be called from any host thread at any time, except that `initialize` and `uninitialize`
/// run alone and on a thread that may create Qt surfaces (the GUI thread), and that no method that waits for the player
/// thread may be called on it (from inside an observer's update or the graph engine): such a call fails with
/// `Status::general_failure`. Methods marked "waits" return when the player thread has carried them out.
///
/// OpenGL: the host's current context and its state are never touched. A `QGuiApplication` must exist.
///
/// Frames: texture row 0 and the first row in memory are the bottom of the picture. The texture is a
/// `GL_TEXTURE_RECTANGLE` texture, complete when it is delivered.
///
/// Errors: every `Status` says why; `Status::toString` says it in words. No exception leaves the player: one that the
/// host's own objects throw when they are called, and the want of memory, become `Status::general_failure` and a
/// message in the log, and the player can be used as before. While producing, every setter but
/// `setDefaultSourceVideoFrameRate` answers `Status::not_while_producing` and changes nothing.
class QRT_PLAYER_EXPORT Player : public Prefs, public RefCountedMT {
public:
    /// Makes a player that produces frames in the format `resolution` and renders with what the factory makes.
    /// The factory is called here and again by every later `initialize`, on the calling thread.
    /// Empty, with a message, when the factory throws or there is no memory.
    [[nodiscard]] static SharedPtr<Player> create(VideoBufferResolution const& resolution,
                                                  SharedPtr<GraphEngineInterface> (*graphEngineFactory)());

    /// Uninitializes the player if need be. Frames that the host still holds stay valid memory. The last reference may
    /// also go on the player thread, inside an update or the graph engine: then the player ends on the GUI thread, the
    /// next time that its event loop runs.
    ~Player() override;

    /// Sets `Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES` or `Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES`, or a preference of the
    /// graph engine; waits. `Status::invalid_argument` for a negative frame count. A preference that the environment
    /// variable "QRT_PREF_" + name fixes is left alone, with success. Observers are notified in every case.
    Status setPref(String const& name, int value) override;
    Status getPref(String const& name, int& value) const override;  ///< Waits.
    /// Appends the graph engine's preferences and the player's two.
    Status getPrefs(Vector<String>& names) const override;

    /// Starts the player thread and returns when it is ready.
    ///
    /// `nativeContext`, `nativeWindow`: the host's OpenGL context to share objects with. Under GLX its `GLXContext` and
    /// its X window or null; under EGL its `EGLContext` and `EGLDisplay`; on Windows its `HGLRC` and `HWND`; on macOS
    /// its `NSOpenGLContext` and null. A null context shares with nobody. It must not be current on another thread
    /// while this runs, except on the calling one. Fails with `Status::already_initialized`; with
    /// `Status::general_failure` when there is no `QGuiApplication`, or no OpenGL context can be had; or with the
    /// resource pools' own failure. In the last two cases the player runs but cannot produce, and `uninitialize` must
    /// still be called.
    virtual Status initialize(void* nativeContext, void* nativeWindow);
    /// Ends the player thread once all earlier calls are done, and gives back every OpenGL object, those of frames that
    /// the host still holds included (their texture becomes 0; memory stays). `Status::not_initialized`.
    virtual Status uninitialize();

    /// Replaces the composition and drops all cached frames; waits. `Status::not_initialized`, or the graph engine's
    /// result; after a failure other than `Status::composition_incomplete` there is no composition.
    virtual Status setComposition(SharedPtr<Composition> const& composition,
                                  List<SharedPtr<ExternalSegment>> const& externalSegments);
    /// Tells that the composition has changed in place; drops all cached frames; waits.
    virtual Status updateComposition(SharedPtr<Composition> const& composition, String const& description);

    /// Whether the frame is cached at this moment. Never waits.
    [[nodiscard]] virtual bool isVideoBufferReady(int64 frame);
    /// Fetches a frame: from the cache, else by producing it before any other work, for which it waits.
    ///
    /// While producing, a frame within the play range becomes the current frame, around which frames are rendered
    /// ahead. `Status::not_initialized`, `Status::no_composition`, `Status::out_of_range` (frames from the
    /// composition's first to one past its last are in range), `Status::no_resource` when the host holds all frames, or
    /// what production reports. `buffer` is empty after a failure, except that a failure to move the current frame
    /// still sets it.
    virtual Status getVideoBuffer(int64 frame, SharedPtr<VideoBuffer>& buffer);
    /// Fills `size` bytes with audio from sample frame `position` of the composition on; the graph engine's result.
    virtual Status fillAudioBuffer(char* data, uint64 size, uint64 position);

    /// Starts rendering ahead; waits until it has been started. The parameters are copied.
    /// `Status::already_producing`, `Status::no_composition`, or `Status::invalid_play_params` when the range leaves
    /// the composition or the current frame leaves the range.
    virtual Status startProducing(SharedPtr<PlayParams> const& params);
    /// Stops rendering ahead; waits. Cached frames stay. `Status::not_producing`, `Status::not_initialized`.
    virtual Status stopProducing();

    /// Replaces the format of produced frames; waits. `Status::invalid_argument` for an invalid one.
    virtual Status setVideoResolution(VideoBufferResolution const& resolution);
    [[nodiscard]] virtual VideoBufferResolution getVideoResolution() const;
    /// Asks the graph engine for an output frame rate; waits. `getVideoFrameRate` tells what it became.
    virtual Status setVideoFrameRate(Rational const& rate);
    [[nodiscard]] virtual Rational getVideoFrameRate() const;
    /// The frame rate of sources that state none; takes effect with the next composition. Always succeeds.
    virtual Status setDefaultSourceVideoFrameRate(Rational const& rate);
    virtual Rational const getDefaultSourceVideoFrameRate() const;

    /// Budgets the cache of frames that external segments have rendered. `secondSize` is the budget in mebibytes, 0
    /// switches that kind of cache off; mode and `firstSize` are only stored. Always succeeds. Whether the segments of
    /// a composition are cached is decided when the composition is set.
    virtual Status setExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode,
                                                     uint64 firstSize, uint64 secondSize);
    virtual void getExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode,
                                                   uint64& firstSize, uint64& secondSize) const;

    /// Replaces the format of `fillAudioBuffer`, empty until set; waits.
    virtual Status setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format);
    [[nodiscard]] virtual ConstSharedPtr<AudioFormatInterface> getAudioFormat() const;

    /// Chooses what frames are delivered as: blocks of memory (true) or textures (false, the default); waits.
    virtual Status setRamOutputs(bool ramOutputs);
    [[nodiscard]] virtual bool getRamOutputs() const;

    /// Which frames are cached by the player or by its graph engine. `Status::invalid_query` for another type.
    virtual Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const;

    /// Observers are notified on the thread that causes the notification: a host thread or the player thread.
    virtual void addObserver(Observer* observer);
    virtual void removeObserver(Observer* observer);

    [[nodiscard]] virtual SharedPtr<TokenResolver> getTokenResolver() const;

protected:
    Player(VideoBufferResolution const& resolution, SharedPtr<GraphEngineInterface> (*graphEngineFactory)());

private:
    friend struct PlayerInspector;  // defined by whoever looks inside, e.g. a test

    Player(Player const&) = delete;
    Player& operator=(Player const&) = delete;

    [[nodiscard]] GraphEngineInterface const* getGraphEngine() const;

    PlayerImpl* m_impl;  // owned
};

}  // namespace QRT_0_81
