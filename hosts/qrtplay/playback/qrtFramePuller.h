#pragma once

#include "base/qrtKit.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "playback/qrtTimelinePlayer.h"

namespace qrtplay {

/// Takes frames from a player, and lets it render ahead when they are taken one after another.
///
/// Asked for at once, a frame that is not there yet overtakes what is being rendered ahead; a host that is quicker than
/// the player would keep it from ever getting ahead, and what it was told of the host's place would reach it too late.
/// Threading: one thread at a time.
class FramePuller final {
public:
    /// `player` has to last longer than this.
    explicit FramePuller(TimelinePlayer& player) : m_player(player) {}

    /// Has frames rendered ahead by these parameters; what was rendered ahead before is stopped.
    [[nodiscard]] Status produce(SharedPtr<PlayParams> const& params);
    void stop();
    /// As `Player::getVideoBuffer`, but the next frame of those that are rendered ahead is given the time to be
    /// rendered. `wasReady`: the player had it.
    [[nodiscard]] Status fetch(int64 frame, SharedPtr<VideoBuffer>& buffer, bool& wasReady);

private:
    [[nodiscard]] bool isNextInTurn(int64 frame) const;
    void awaitLookAhead(int64 frame);

    TimelinePlayer& m_player;
    bool m_isProducing = false;
    int64 m_step = 0;
    int64 m_lastFrame = 0;
};

}  // namespace qrtplay
