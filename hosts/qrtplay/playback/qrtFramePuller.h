#pragma once

#include <functional>
#include <optional>

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
    /// rendered. `wasReady`: it was rendered ahead, be it in that time.
    [[nodiscard]] Status fetch(int64 frame, SharedPtr<VideoBuffer>& buffer, bool& wasReady);
    /// Has rendering ahead go on from the last frame that could be had. To be called when nothing is fetched for a
    /// while: after a jump the player may have carried out last what it was told before it. `isOvertaken`, asked after
    /// a wait: another frame is wanted by now, so that this is left for later.
    void settle(std::function<bool()> const& isOvertaken);

private:
    [[nodiscard]] bool isNextInTurn(int64 frame) const;
    void awaitLookAhead(int64 frame);
    void awaitTurn();

    TimelinePlayer& m_player;
    bool m_isProducing = false;
    int64 m_step = 0;
    bool m_turnsBack = false;      // plays to and fro
    int64 m_lastFrame = 0;         // that was asked for
    bool m_hasJumped = false;      // since the player was last known to be where the host is
    std::optional<int64> m_place;  // that it was last told of since the jump: what cannot be had tells it nothing
};

}  // namespace qrtplay
