#include "viewer/playing/qrtCutPoints.h"

#include <algorithm>

namespace qrtplay {

CutPoints::CutPoints(Timeline const& timeline, Rational const& rate, int64 frameCount) {
    if (frameCount <= 0) return;
    m_frames = {0, frameCount - 1};
    const auto add = [&](ExactTime const& time) {
        m_frames.push_back(std::clamp<int64>(time.frameFrom(rate), 0, frameCount - 1));
    };
    for (TrackView const& track : timeline.tracks()) {
        for (TrackItem const& item : track.items) {
            if (item.kind == TrackItem::Kind::transition) continue;
            add(item.start);
            add(item.start + item.duration);
        }
    }
    std::sort(m_frames.begin(), m_frames.end());
    m_frames.erase(std::unique(m_frames.begin(), m_frames.end()), m_frames.end());
}

std::optional<int64> CutPoints::before(int64 frame) const {
    const auto found = std::lower_bound(m_frames.begin(), m_frames.end(), frame);
    if (found == m_frames.begin()) return std::nullopt;
    return *std::prev(found);
}

std::optional<int64> CutPoints::after(int64 frame) const {
    const auto found = std::upper_bound(m_frames.begin(), m_frames.end(), frame);
    if (found == m_frames.end()) return std::nullopt;
    return *found;
}

}  // namespace qrtplay
