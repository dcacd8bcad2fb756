#include "playback/qrtFramePuller.h"

#include <utility>

namespace qrtplay {

Status FramePuller::produce(SharedPtr<PlayParams> const& params) {
    stop();
    const Status status = m_player.player().startProducing(params);
    m_isProducing = status.success();
    m_step = params->getStep();
    m_turnsBack = params->getPlayMode() == PlayParams::ping_pong;
    m_lastFrame = params->getCurrentFrame() - m_step;
    m_hasJumped = false;
    m_place.reset();
    return status;
}

void FramePuller::stop() {
    if (std::exchange(m_isProducing, false)) (void)m_player.player().stopProducing();
}

Status FramePuller::fetch(int64 frame, SharedPtr<VideoBuffer>& buffer, bool& wasReady) {
    if (isNextInTurn(frame))
        awaitLookAhead(frame);
    else
        m_hasJumped = m_isProducing;
    m_lastFrame = frame;
    wasReady = m_player.player().isVideoBufferReady(frame);
    const Status status = m_player.player().getVideoBuffer(frame, buffer);
    if (buffer && m_hasJumped) m_place = frame;
    return status;
}

// Of the places that it was told of, the player takes note of the newest first. Once it has heard all of them, the last
// one again is the newest and the last.
void FramePuller::settle(std::function<bool()> const& isOvertaken) {
    if (!m_isProducing || !m_place) return;
    awaitTurn();
    if (isOvertaken()) return;
    m_hasJumped = false;
    SharedPtr<VideoBuffer> unused;
    (void)m_player.player().getVideoBuffer(*std::exchange(m_place, std::nullopt), unused);
}

// Whoever is late and leaves frames out needs one at once that is not being rendered ahead.
bool FramePuller::isNextInTurn(int64 frame) const {
    if (!m_isProducing) return false;
    return frame == m_lastFrame + m_step || (m_turnsBack && frame == m_lastFrame - m_step);
}

// The player answers questions in their turn, after the step of rendering ahead that waits before them. Where it had
// paused, the first question comes before that step.
void FramePuller::awaitLookAhead(int64 frame) {
    constexpr int mostTurns = 2;
    for (int turn = 0; turn < mostTurns && !m_player.player().isVideoBufferReady(frame); ++turn)
        awaitTurn();
}

// Waits until the player has carried out all that it was told before.
void FramePuller::awaitTurn() {
    int unused = 0;
    (void)m_player.player().getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, unused);
}

}  // namespace qrtplay
