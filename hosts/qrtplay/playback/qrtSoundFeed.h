#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"
#include "playback/qrtSoundOrder.h"
#include "player/qrtPlayParams.h"

namespace qrtplay {

class TimelinePlayer;

/// The sound of a run as one stream, read ahead on a thread of its own.
///
/// Sample s of the stream belongs to the tick of the run's grid that is on at s / 48000 seconds; what is heard then is
/// the sound of that tick's frame. Frames that follow each other are heard without a seam, sample by sample; where the
/// order jumps (a loop begins again) the sound jumps to the first sample of the new frame. Backwards and at any other
/// step than 1 there is silence, and after the end of a run that ends.
///
/// Threading: `read` and the rest may be called on two different threads.
class SoundFeed final {
public:
    static constexpr int channels = 2;
    static constexpr int64 samplesAhead = 24000;  ///< half a second

    /// `player` has to last longer than this; `order` is copied, its current frame is heard at sample 0.
    SoundFeed(TimelinePlayer& player, PlayParams& order, Rational const& rate);
    /// Waits for the portion of sound that is being read from the player, which is a small part of what is read ahead.
    ~SoundFeed();
    SoundFeed(SoundFeed const&) = delete;
    SoundFeed& operator=(SoundFeed const&) = delete;

    /// The next `count` samples of every channel, interleaved. Never waits nor allocates: what has not been read from
    /// the player yet is silence, is counted as missed and left out of the stream, so that what follows stays in step:
    /// the sound that comes later is that of its own time and not the sound that was missed.
    void read(float* samples, int64 count) noexcept;
    /// How many samples of the stream `read` has answered, silence and missed ones included.
    [[nodiscard]] int64 position() const noexcept { return m_position; }
    /// Waits until `count` samples (`samplesAhead` if that is less) can be read or the time is up, and says whether
    /// they can; for a start without a gap.
    bool waitFor(int64 count, int timeoutMs);
    [[nodiscard]] int64 missedSamples() const noexcept { return m_missed; }
    /// The first failure to read sound, for people; empty while there was none. The sound is silent where it happened.
    [[nodiscard]] std::string failure() const;

private:
    void run();
    bool fillNext();
    void readSound(int64 first, int64 count, float* samples);
    void wakeUp() noexcept;

    TimelinePlayer& m_player;
    SoundOrder m_order;         // feed's thread only
    std::vector<float> m_ring;  // position s of the stream lies at s modulo its length; see the .cpp for who owns what

    std::atomic<int64> m_position = 0;  // set by `read` alone
    std::atomic<int64> m_filledTo = 0;  // set by the feed's thread alone; below m_position after samples were missed
    std::atomic<int64> m_missed = 0;
    std::atomic<int> m_wakeUps = 0;  // changes whenever the feed's thread should look again
    std::atomic<bool> m_isEnding = false;

    mutable std::mutex m_mutex;  // never taken by `read`
    std::condition_variable m_filled;
    std::string m_failure;  // under m_mutex

    std::thread m_thread;
};

}  // namespace qrtplay
