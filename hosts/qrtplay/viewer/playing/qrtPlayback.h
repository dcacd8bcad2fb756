#pragma once

#include <QMetaType>
#include <QObject>
#include <QTimer>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "base/qrtKit.h"
#include "playback/qrtFrameFetcher.h"
#include "playback/qrtMediaClock.h"
#include "playback/qrtPacer.h"
#include "playback/qrtSoundFeed.h"
#include "playback/qrtSoundOutput.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/playing/qrtRunClock.h"

namespace qrtplay {

/// Frames from the first to the last one, both included.
struct FrameSpan {
    int64 first = 0;
    int64 last = 0;
    [[nodiscard]] bool operator==(FrameSpan const&) const noexcept = default;
};

/// Plays a timeline: which frame is shown, how it goes on from there, and what is heard.
///
/// Playing follows the sound where there is sound to hear (forwards at normal speed, with a device that works), else
/// the wall clock. Frames are fetched on another thread; a newer wish overtakes an older one, and the last one is
/// always fulfilled.
///
/// A run begins when its first picture has come and its sound can be heard, and ends a frame time after its last one.
/// What changes while playing (the range, the mode, the speed) takes effect with the next frame, on the tick that was
/// its own. Where every frame is shown and the pictures fall behind, the sound begins again at the picture; the second
/// time within five seconds the rest of the run is silent.
///
/// Threading: the GUI thread.
class Playback final : public QObject {
    Q_OBJECT

public:
    struct Statistics {
        Pacer::Counts counts;  ///< of the present run, or of the last one
        double rate = 0;       ///< frames shown per second, over the last second of playing
        int64 cacheHits = 0;   ///< since the timeline was set
        int64 onDemand = 0;    ///< since the timeline was set
        int64 fetchTime = 0;   ///< nanoseconds that the last frame took to fetch
    };

    /// `wallClock` and `sound` have to last longer than this; `sound` may be null, for silence.
    Playback(MediaClock const& wallClock, SoundOutput* sound, QObject* parent = nullptr);
    ~Playback() override;

    /// Ends what is under way and takes another timeline, or none. The player has to last until the next call; the
    /// position, the in and out points and the state are reset, mode and policies are kept. Frame `frame` is fetched.
    void setPlayer(TimelinePlayer* player, int64 frame = 0);
    [[nodiscard]] TimelinePlayer* player() const noexcept { return m_player; }

    [[nodiscard]] bool isPlaying() const noexcept { return m_pacer != nullptr; }
    /// How many frames a tick advances, negative backwards; what `togglePlay` begins with when nothing plays: normal
    /// speed in the direction of the last run. On its way back `ping_pong` keeps the step that it was begun with.
    [[nodiscard]] int step() const noexcept { return m_step; }
    /// The frame that is wanted: while playing the one shown last, else the one that was sought.
    [[nodiscard]] int64 frame() const noexcept { return m_frame; }
    [[nodiscard]] FrameSpan whole() const noexcept;  ///< the timeline; empty (0, -1) without one
    [[nodiscard]] FrameSpan range() const noexcept;  ///< from the in point to the out point
    [[nodiscard]] std::optional<int64> inPoint() const noexcept { return m_in; }
    [[nodiscard]] std::optional<int64> outPoint() const noexcept { return m_out; }
    [[nodiscard]] PlayParams::PlayMode mode() const noexcept { return m_mode; }
    [[nodiscard]] PacePolicy policy() const noexcept { return m_policy; }
    /// Whether the present run follows the sound.
    [[nodiscard]] bool followsSound() const noexcept { return m_followsSound; }
    [[nodiscard]] bool isMuted() const noexcept { return m_isMuted; }
    [[nodiscard]] Statistics statistics() const;

public slots:
    /// Plays on from the frame on show: at the start of the range when it lies outside or at the end that a run would
    /// reach. Playing with the step that plays already changes nothing.
    void play(int step);
    void pause();
    void togglePlay();
    /// J and L: as long as the key is pressed again in one direction the speed doubles, to 8; the other direction
    /// starts at normal speed.
    void shuttle(int direction);
    /// Shows a frame, clamped into the timeline; ends playing.
    void seek(int64 frame);
    /// A scrub: as `seek`, but playing goes on afterwards (`endScrub`) if it was under way.
    void scrub(int64 frame);
    void endScrub();
    /// Sets the in or out point, or removes it; a point that would pass the other one removes that.
    void setInPoint(std::optional<int64> frame);
    void setOutPoint(std::optional<int64> frame);
    void clearPoints();
    void setMode(PlayParams::PlayMode mode);
    void setPolicy(PacePolicy policy);
    /// Frames that a tick advances at normal speed: 1, or more to look through something quickly.
    void setStride(int frames);
    void setMuted(bool muted);
    void setVolume(double volume);
    /// Fetches the frame on show again, such as after another resolution was set.
    void refresh();

    /// What the timer calls: shows what is due. Public for clocks that are moved by hand.
    void onTick();

public:
    /// Runs `change` while nothing is fetched and nothing rendered ahead, then goes on rendering ahead and shows the
    /// frame again. While playing, `change` runs with the engine rendering ahead, whose refusal it will get.
    void reconfigure(std::function<void(TimelinePlayer&)> const& change);
    [[nodiscard]] int stride() const noexcept { return m_stride; }

signals:
    /// A frame is to be shown now. A failed one has a failure text instead of a buffer.
    void frameShown(qrtplay::FetchedFrame const& frame);
    /// Playing, pausing, another step, mode, policy, muting.
    void stateChanged();
    void rangeChanged();
    /// A run has reached its end.
    void ended();
    /// Something to tell the user, such as a lost sound device.
    void noticed(QString const& text);

private:
    void deliver(FetchedFrame fetched);
    Q_INVOKABLE void takeFetched();
    void accept(FetchedFrame frame);
    void show(FetchedFrame const& frame);

    // Standing still
    void goTo(int64 frame, bool wasPlaying);
    void fetchStill();
    void produceAround();

    // A run
    [[nodiscard]] SharedPtr<PlayParams> orderToPlay(int step) const;
    void startRun(SharedPtr<PlayParams> const& order, int64 at);
    void replan(int step);
    void replanWithHeading();
    bool begin();
    void fetchNext();
    void showDue(Pacer::Tick const& tick, int64 now);
    void wakeAt(int64 time, int64 now);
    void endRun();
    void stopRun();

    // Its sound
    void makeFeed();
    void startSound(int64 at);
    void silence();
    void tellFailureOf(SoundFeed const& feed);
    void loseSound(QString const& text);
    void waitForPictures(int64 now);

    void setPoints(std::optional<int64> in, std::optional<int64> out);
    [[nodiscard]] int64 clamped(int64 frame) const noexcept;

    MediaClock const& m_wallClock;
    SoundOutput* const m_sound;
    TimelinePlayer* m_player = nullptr;
    std::mutex m_fetchedMutex;
    std::deque<FetchedFrame> m_fetched;       // on its way from the fetcher's thread; under m_fetchedMutex
    std::unique_ptr<FrameFetcher> m_fetcher;  // while there is a player
    uint64 m_request = 0;                     // the newest
    uint64 m_shownRequest = 0;
    std::optional<int64> m_frameOnShow;

    int m_step = 1;
    int m_stride = 1;
    int m_heading = 1;  // in which frames are rendered ahead while nothing plays
    int64 m_frame = 0;
    std::optional<int64> m_in;
    std::optional<int64> m_out;
    PlayParams::PlayMode m_mode = PlayParams::single;
    PacePolicy m_policy = PacePolicy::real_time;

    bool m_isScrubbing = false;
    uint64 m_firstOnTheWay = 0;       // the first request whose frame may be shown in passing
    std::optional<int> m_resumeStep;  // what played before the scrub

    std::unique_ptr<Pacer> m_pacer;  // while playing
    RunClock m_clock;
    QTimer m_timer;
    bool m_isBegun = false;              // the first frame has been due
    bool m_hasShown = false;             // a frame, since playing began
    std::optional<FetchedFrame> m_kept;  // the pacer's next one
    int64 m_requestedAt = 0;
    int64 m_fetchTime = 0;
    int64 m_endAt = 0;  // when there is no next one

    std::unique_ptr<SoundFeed> m_feed;
    int64 m_feedMadeAt = 0;
    std::optional<int64> m_waitedAt;  // the sound for the pictures, last
    bool m_followsSound = false;
    bool m_isMuted = false;
    double m_volume = 1;
    bool m_saidNoDevice = false;
    std::string m_toldFailure;  // of the feed

    Statistics m_statistics;
    std::deque<int64> m_shownAt;  // over the last second of playing
};

}  // namespace qrtplay

Q_DECLARE_METATYPE(qrtplay::FetchedFrame)
