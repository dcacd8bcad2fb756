#include "graph/qrtFrameCourse.h"

#include <algorithm>
#include <cstdlib>

namespace qrtplay {

namespace {

// Far enough for what takes turns to be evened out.
constexpr int64 farthestForward = 32;

/// Frame numbers may be any, so that their distance needs a bit more than they do.
uint64 distanceOf(int64 a, int64 b) {
    const auto [less, more] = std::minmax(a, b);
    return static_cast<uint64>(more) - static_cast<uint64>(less);
}

}  // namespace

void FrameCourse::note(int64 frame, int64 step) {
    if (step != m_step) m_timesJumped = 0;
    const bool isAgainst = step > 0 ? frame < m_frame : frame > m_frame;
    const bool isJump = step == m_step && isAgainst;
    if (isJump) {
        const Jump jump{m_frame, frame};
        m_timesJumped = jump == m_jump ? m_timesJumped + 1 : 1;
        m_jump = jump;
    }
    // Whoever takes a step back takes more of them.
    const auto stride = static_cast<uint64>(std::abs(step));
    const bool isStepBack = step == m_step && isAgainst && distanceOf(frame, m_frame) == stride;
    m_advance = isStepBack ? -step : step;
    // Who is late leaves frames out, but plays on.
    const bool isNear = distanceOf(frame, m_frame) <= static_cast<uint64>(farthestForward * std::abs(step));
    m_isElsewhere = step == m_step && !isStepBack && (isJump || !isNear);
    m_frame = frame;
    m_step = step;
}

// One jump back may lead anywhere; the second one from and to the same frames is that of a loop.
bool FrameCourse::isInLoop() const {
    const auto [first, last] = std::minmax(m_jump.from, m_jump.to);
    return m_timesJumped >= 2 && m_frame >= first && m_frame <= last;
}

int64 FrameCourse::next(int64 frame) const {
    if (!isInLoop()) return frame + m_advance;
    return frame == m_jump.from ? m_jump.to : frame + m_step;
}

int64 FrameCourse::framesAhead() const {
    // Backwards whole groups of frames have to be decoded, long before the first of their frames is needed.
    constexpr int64 backward = 512;
    constexpr int64 most = 1024;
    if (isInLoop()) {
        const uint64 steps = distanceOf(m_jump.from, m_jump.to) / static_cast<uint64>(std::abs(m_step));
        return static_cast<int64>(std::min<uint64>(most - 1, steps)) + 1;
    }
    if (m_advance < 0) return backward;
    return m_isElsewhere ? 1 : farthestForward;
}

}  // namespace qrtplay
