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
/// `Status::general_failure`. Methods marked "waits" return when the player thread has carried them out; before
/// `initialize`, those that do not need it are carried out on the calling thread.
///
/// OpenGL: the host's current context and its state are never touched. A `QGuiApplication` must exist.
///
/// Frames: texture row 0 and the first row in memory are the bottom of the picture. The texture is a
/// `GL_TEXTURE_RECTANGLE` texture, complete when it is delivered.
///
/// Errors: every `Status` says why; `Status::toString` says it in words. No exception leaves the player: one that the
/// host's own objects throw when they are called, and the want of memory, become `Status::general_failure` and a
/// message in the log, and the player can be used as before.
///
/// While producing, a setter that would change something answers `Status::not_while_producing` and leaves its setting
/// as it was; `setComposition`, `updateComposition` and `setAudioFormat` drop the cached frames even then. Two setters
/// are carried out at any time: `setDefaultSourceVideoFrameRate` and `setExternalSegmentCacheConstraint`.
///
/// Notifications: observers hear a plain `NotificationHint` after every setter that "notifies", also when it was
/// refused while producing, and whatever the subjects of the composition's external segments notify; an
/// `InvalidationHint` of theirs drops all cached frames before.
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
    /// variable "QRT_PREF_" + name fixes is left alone, with success. Notifies, whatever the result.
    Status setPref(String const& name, int value) override;
    /// Sets `value` to that of one of the player's two preferences, or of the graph engine's; waits.
    Status getPref(String const& name, int& value) const override;
    /// Appends the names of the graph engine's preferences and of the player's two. `Status::general_failure` while
    /// there is no graph engine.
    Status getPrefs(Vector<String>& names) const override;

    /// Starts the player thread and returns when it is ready.
    ///
    /// `nativeContext`, `nativeWindow`: the host's OpenGL context to share objects with. Under GLX its `GLXContext` and
    /// its X window or null; under EGL its `EGLContext` and `EGLDisplay`; on Windows its `HGLRC` and `HWND`; on macOS
    /// its `NSOpenGLContext` and null. A null context shares with nobody. It must not be current on another thread
    /// while this runs, except on the calling one.
    ///
    /// Fails with `Status::already_initialized`; with `Status::general_failure` when there is no `QGuiApplication`, the
    /// thread cannot be started, or no OpenGL context can be had; or with the resource pools' own failure. In the last
    /// two cases the player runs but cannot produce, and `uninitialize` must still be called.
    virtual Status initialize(void* nativeContext, void* nativeWindow);
    /// Ends the player thread once all earlier calls are done, waiting for it, and gives back every OpenGL object,
    /// those of frames that the host still holds included (their texture becomes 0; memory stays). The composition and
    /// the graph engine are let go of; settings stay. `Status::not_initialized`.
    virtual Status uninitialize();

    /// Replaces the composition and drops all cached frames; waits, and notifies. The composition and the segments are
    /// held until the next one or `uninitialize`.
    /// `Status::not_initialized`, or the graph engine's result; after a failure of its own other than
    /// `Status::composition_incomplete` there is no composition.
    virtual Status setComposition(SharedPtr<Composition> const& composition,
                                  List<SharedPtr<ExternalSegment>> const& externalSegments);
    /// Tells that the composition has changed in place; drops all cached frames; waits, and notifies. The graph engine
    /// gets both arguments as they are; the player goes on with the composition that was set.
    /// `Status::not_initialized`, `Status::no_composition_to_update`, or the graph engine's result.
    virtual Status updateComposition(SharedPtr<Composition> const& composition, String const& description);

    /// Whether the frame is cached at this moment. Never waits for the player thread.
    [[nodiscard]] virtual bool isVideoBufferReady(int64 frame);
    /// Fetches a frame: from the cache, else by producing it before any other work, for which it waits.
    ///
    /// While producing, a frame within the play range becomes the current frame, around which frames are rendered
    /// ahead. `Status::not_initialized`, `Status::no_composition`, `Status::out_of_range` (frames from the
    /// composition's first to one past its last are in range), `Status::no_resource` when the host holds all frames, or
    /// what production reports. `buffer` is empty after a failure, except that a failure to move the current frame
    /// still sets it.
    virtual Status getVideoBuffer(int64 frame, SharedPtr<VideoBuffer>& buffer);
    /// Fills `size` bytes at `data` with audio in the format of `setAudioFormat`, from sample frame `position` on,
    /// counted from the composition's time 0. Whether or not a run is under way; on the calling thread, which does not
    /// wait for pictures. The graph engine's result; `Status::general_failure` when there is none.
    virtual Status fillAudioBuffer(char* data, uint64 size, uint64 position);

    /// Starts rendering ahead; waits until it has been started. The parameters are copied.
    /// `Status::not_initialized`, `Status::already_producing`, `Status::no_composition`, or
    /// `Status::invalid_play_params` for none, or when the range leaves the composition, or the current frame leaves
    /// the range. A failure of looking ahead itself is no failure of this call: the run pauses, with a message, until a
    /// frame comes back or the current one moves.
    virtual Status startProducing(SharedPtr<PlayParams> const& params);
    /// Stops rendering ahead; waits. Cached frames stay. `Status::not_producing`, `Status::not_initialized`.
    virtual Status stopProducing();

    /// Replaces the format of produced frames and drops all cached ones; waits, and notifies. What equals the present
    /// format is success without effect. `Status::invalid_argument` for an invalid one, or the resource pools' failure.
    virtual Status setVideoResolution(VideoBufferResolution const& resolution);
    /// The format of produced frames.
    [[nodiscard]] virtual VideoBufferResolution getVideoResolution() const;
    /// Asks the graph engine for an output frame rate and drops all cached frames; waits, and notifies.
    /// `getVideoFrameRate` tells what it became. `Status::not_initialized`, `Status::no_composition`, or the graph
    /// engine's result.
    virtual Status setVideoFrameRate(Rational const& rate);
    /// The output frame rate, which frame numbers count in; 24/1 until a composition has been set.
    [[nodiscard]] virtual Rational getVideoFrameRate() const;
    /// The frame rate of sources that state none; takes effect with the next composition. Always succeeds.
    virtual Status setDefaultSourceVideoFrameRate(Rational const& rate);
    /// What `setDefaultSourceVideoFrameRate` has set; 24/1 until then.
    virtual Rational const getDefaultSourceVideoFrameRate() const;

    /// Budgets the cache of frames that external segments have rendered. `secondSize` is the budget in mebibytes, 0
    /// switches that kind of cache off; mode and `firstSize` are only stored. A change drops that kind's cached frames.
    /// Always succeeds, while producing too. Whether the segments of a composition are cached is decided when the
    /// composition is set.
    virtual Status setExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode,
                                                     uint64 firstSize, uint64 secondSize);
    /// Sets the last three arguments to what was stored for that kind.
    virtual void getExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode,
                                                   uint64& firstSize, uint64& secondSize) const;

    /// Replaces the format of `fillAudioBuffer`, empty until set, and drops all cached frames; waits, and notifies
    /// unless it comes before `initialize`.
    virtual Status setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format);
    /// The format of `fillAudioBuffer`, or an empty pointer.
    [[nodiscard]] virtual ConstSharedPtr<AudioFormatInterface> getAudioFormat() const;

    /// Chooses what frames are delivered as: blocks of memory (true) or textures (false, the default). A change drops
    /// all cached frames; waits, and notifies. What equals the present choice is success; else the resource pools'
    /// failure.
    virtual Status setRamOutputs(bool ramOutputs);
    /// Whether frames are delivered as blocks of memory.
    [[nodiscard]] virtual bool getRamOutputs() const;

    /// Sets `stats` to which frames are cached by the player or by its graph engine at this moment. Does not wait for
    /// the player thread. The graph engine's result, `Status::general_failure` when there is none, and
    /// `Status::invalid_query` for another type.
    virtual Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const;

    /// Registers `observer`, which is not owned; a null or an already registered one changes nothing. Observers are
    /// notified on the thread that causes the notification: a host thread or the player thread.
    virtual void addObserver(Observer* observer);
    /// Unregisters `observer`. When it returns, no call into that observer is under way or will come, but for a removal
    /// from inside its own update; so it may wait for an update on another thread.
    virtual void removeObserver(Observer* observer);

    /// The graph engine's; empty when it has none, and while there is no graph engine.
    [[nodiscard]] virtual SharedPtr<TokenResolver> getTokenResolver() const;

protected:
    /// For `create`, and for classes of a host that derive from this one.
    Player(VideoBufferResolution const& resolution, SharedPtr<GraphEngineInterface> (*graphEngineFactory)());

private:
    friend struct PlayerInspector;  // defined by whoever looks inside, e.g. a test

    Player(Player const&) = delete;
    Player& operator=(Player const&) = delete;

    [[nodiscard]] GraphEngineInterface const* getGraphEngine() const;

    PlayerImpl* m_impl;  // owned
};

}  // namespace QRT_0_81
