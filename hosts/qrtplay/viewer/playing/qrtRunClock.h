#pragma once

#include <optional>

#include "base/qrtKit.h"
#include "playback/qrtMediaClock.h"
#include "playback/qrtSoundOutput.h"

namespace qrtplay {

/// The time of a run: that of the sound that is heard, else the machine's. Where the sound is lost time goes on evenly
/// from where it was.
///
/// Threading: one thread.
class RunClock final {
public:
    /// `wall` has to last longer than this.
    explicit RunClock(MediaClock const& wall) : m_wall(wall), m_setAt(wall.nanoseconds()) {}

    /// It is `time`, and goes on with the machine's clock.
    void set(int64 time) {
        m_sound = nullptr;
        m_time = time;
        m_setAt = m_wall.nanoseconds();
    }
    /// It is `time`, and goes on with what is heard of a feed that begins to be played now.
    void follow(SoundOutput const& sound, int64 time) {
        set(time);
        m_sound = &sound;
        m_soundBeganAt = time;
        m_heard = 0;
        m_heardMoreAt = m_setAt;
    }
    /// False from the reading on that found the sound lost.
    [[nodiscard]] bool followsSound() const noexcept { return m_sound != nullptr; }

    [[nodiscard]] int64 now() {
        const int64 wall = m_wall.nanoseconds();
        if (m_sound) readSound(wall);
        return m_sound ? m_time : m_time + (wall - m_setAt);
    }

private:
    // A device that is there but takes no more sound is as good as lost.
    static constexpr int64 longestStandstill = 2 * nanosecondsPerSecond;

    void readSound(int64 wall) {
        const std::optional<int64> heard = m_sound->heard();
        if (!heard) {
            m_sound = nullptr;
            return;
        }
        if (*heard > m_heard) {
            m_heard = *heard;
            m_heardMoreAt = wall;
        }
        m_time = m_soundBeganAt + m_heard;
        m_setAt = wall;
        if (wall - m_heardMoreAt >= longestStandstill) m_sound = nullptr;
    }

    MediaClock const& m_wall;
    SoundOutput const* m_sound = nullptr;
    int64 m_time = 0;   // when it was set or read last ...
    int64 m_setAt = 0;  // ... by the machine's clock
    int64 m_soundBeganAt = 0;
    int64 m_heard = 0;
    int64 m_heardMoreAt = 0;
};

}  // namespace qrtplay
