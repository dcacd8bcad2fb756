#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "base/qrtKit.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "playback/qrtFramePuller.h"
#include "playback/qrtTimelinePlayer.h"

namespace qrtplay {

/// A frame that was asked for, or why it could not be had.
struct FetchedFrame {
    int64 frame = 0;
    uint64 request = 0;             ///< the number that it was asked for with
    SharedPtr<VideoBuffer> buffer;  ///< null after a failure
    std::string failure;            ///< for people; empty after a success
    bool wasReady = false;          ///< it was rendered ahead, be it while its turn was waited for
    int64 nanoseconds = 0;          ///< from asking the player to its answer
};

/// Asks a player for frames on a thread of its own, so that whoever wants them need not wait, and tells it on the same
/// thread what to render ahead.
///
/// Only the latest wish counts: one that has not been begun is overtaken by the next. Threading: one thread uses it.
class FrameFetcher final {
public:
    /// Called on the fetcher's thread for every frame that was begun.
    using Deliver = std::function<void(FetchedFrame)>;

    /// `player` has to last longer than this.
    FrameFetcher(TimelinePlayer& player, Deliver deliver);
    /// Waits for the frame that is under way, which is still delivered.
    ~FrameFetcher();
    FrameFetcher(FrameFetcher const&) = delete;
    FrameFetcher& operator=(FrameFetcher const&) = delete;

    /// Asks for a frame.
    void fetch(int64 frame, uint64 request);
    /// Has frames rendered ahead by these parameters from now on, before any later fetch. A refusal is delivered as a
    /// failure of the parameters' current frame with request 0.
    void produce(SharedPtr<PlayParams> const& params);
    /// Forgets what has not been begun, stops rendering ahead, and waits until both have been carried out.
    void stop();
    /// Waits until all that was asked for has been carried out and delivered. Until `stop`, the player may still be
    /// told once more which frame was delivered last.
    void finish();

private:
    struct Wish {
        int64 frame = 0;
        uint64 request = 0;
    };

    void run();
    [[nodiscard]] bool hasWork() const { return m_isStopping || m_params || m_wish; }
    void startProducing(SharedPtr<PlayParams> const& params);
    void fetchNow(Wish const& wish);

    TimelinePlayer& m_player;
    const Deliver m_deliver;
    FramePuller m_puller;  // fetcher's thread only

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::optional<Wish> m_wish;
    SharedPtr<PlayParams> m_params;
    bool m_isStopping = false;  // rendering ahead is to be stopped
    bool m_isEnding = false;
    bool m_isBusy = false;
    std::thread m_thread;
};

}  // namespace qrtplay
