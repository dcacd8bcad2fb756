#include "playback/qrtFramePuller.h"

#include <cstdlib>
#include <utility>

namespace qrtplay {

Status FramePuller::produce(SharedPtr<PlayParams> const& params) {
    stop();
    const Status status = m_player.player().startProducing(params);
    m_isProducing = status.success();
    m_step = params->getStep();
    m_lastFrame = params->getCurrentFrame() - m_step;
    return status;
}

void FramePuller::stop() {
    if (std::exchange(m_isProducing, false)) (void)m_player.player().stopProducing();
}

Status FramePuller::fetch(int64 frame, SharedPtr<VideoBuffer>& buffer, bool& wasReady) {
    if (isNextInTurn(frame)) awaitLookAhead(frame);
    m_lastFrame = frame;
    wasReady = m_player.player().isVideoBufferReady(frame);
    return m_player.player().getVideoBuffer(frame, buffer);
}

// Either way, as there are plays to and fro. Whoever is late and leaves frames out needs one at once that is not being
// rendered ahead.
bool FramePuller::isNextInTurn(int64 frame) const {
    return m_isProducing && std::abs(frame - m_lastFrame) == std::abs(m_step);
}

// The player answers questions in their turn, after the step of rendering ahead that waits before them. Where it had
// paused, the first question comes before that step.
void FramePuller::awaitLookAhead(int64 frame) {
    constexpr int mostTurns = 2;
    int unused = 0;
    for (int turn = 0; turn < mostTurns && !m_player.player().isVideoBufferReady(frame); ++turn)
        (void)m_player.player().getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, unused);
}

}  // namespace qrtplay
