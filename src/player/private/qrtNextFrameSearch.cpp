#include "qrtNextFrameSearch.h"

#include <algorithm>
#include <limits>

namespace QRT_0_81 {

void NextFrameSearch::noteUnwantedRemoved(PlayParamsPrivate const& params, uint64 count) {
    // What nobody wants here may be a frame that the last search walked over: playback may have moved since, and
    // be back there at the next one.
    follow(params, m_numRemoved);
    m_numRemoved += count;
}

void NextFrameSearch::follow(PlayParamsPrivate const& params, uint64 numRemoved) {
    if (numRemoved == m_numRemoved && params == m_params) return;

    const int32 steps = numRemoved == m_numRemoved ? stepsAheadTo(params) : 0;
    if (steps > 0) {
        // What was ahead is now current or behind, in the same order. The run behind may grow longer than what is
        // wanted of it; its far end, which may be gone from the cache, is then never looked at again.
        m_head.length -= steps;
        m_tail.length += std::min(steps, std::numeric_limits<int32>::max() - m_tail.length);
    }
    m_params = params;
    if (steps == 0) forget();
    m_numRemoved = numRemoved;
}

int32 NextFrameSearch::stepsAheadTo(PlayParamsPrivate const& params) const {
    PlayParamsPrivate moved = m_params;
    moved.currentFrame = params.currentFrame;
    if (!m_isCurrentCached || !(moved == params) || params.step == 0) return 0;
    // A run may begin outside of its range; the ways ahead and back are then not the same frames.
    const auto isInside = [&params](int64 frame) { return frame >= params.startFrame && frame <= params.endFrame; };
    if (!isInside(m_params.currentFrame) || !isInside(params.currentFrame)) return 0;

    // Unsigned, so that a distance the other way is too far to count.
    const auto from = static_cast<uint64>(m_params.currentFrame);
    const auto to = static_cast<uint64>(params.currentFrame);
    const uint64 distance = params.step > 0 ? to - from : from - to;
    const auto step = static_cast<uint64>(params.step > 0 ? int64{params.step} : -int64{params.step});
    const uint64 steps = distance / step;
    const bool isKnown = distance % step == 0 && steps <= static_cast<uint64>(m_head.length);
    return isKnown ? static_cast<int32>(steps) : 0;
}

void NextFrameSearch::forget() {
    m_isCurrentCached = false;
    m_head = {m_params, 0};
    m_tail = {m_params.reversed(), 0};
}

}  // namespace QRT_0_81
