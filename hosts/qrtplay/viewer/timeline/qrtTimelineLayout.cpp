#include "viewer/timeline/qrtTimelineLayout.h"

#include <algorithm>

namespace qrtplay {

namespace {

constexpr int spaceAroundBars = 2;

}  // namespace

void TimelineLayout::setSize(QSize size) noexcept {
    m_size = size;
    arrange();
}

void TimelineLayout::setTracks(size_t video, size_t audio, bool hasMarkers) noexcept {
    m_video = video;
    m_audio = audio;
    m_hasMarkers = hasMarkers;
    m_scrolled = 0;
    arrange();
}

bool TimelineLayout::scrollBy(int pixels) noexcept {
    const int before = m_scrolled;
    const int most = std::max(0, tracksHeight() - tracks().height());
    m_scrolled = static_cast<int>(std::clamp<int64>(int64{m_scrolled} + pixels, 0, most));
    return m_scrolled != before;
}

void TimelineLayout::arrange() noexcept {
    const int count = static_cast<int>(m_video + m_audio);
    const int between = m_video > 0 && m_audio > 0 ? mediumSpace : 0;
    const int each = count > 0 ? (tracks().height() - between) / count - trackSpace : highestTrack;
    m_trackHeight = std::clamp(each, lowestTrack, highestTrack);
    scrollBy(0);
}

QRect TimelineLayout::ruler() const noexcept {
    return {0, 0, m_size.width(), rulerHeight};
}

QRect TimelineLayout::renderedBar() const noexcept {
    return {0, rulerHeight + spaceAroundBars, m_size.width(), barHeight};
}

QRect TimelineLayout::decodedBar() const noexcept {
    return renderedBar().translated(0, barHeight + 1);
}

QRect TimelineLayout::markers() const noexcept {
    return {0, decodedBar().bottom() + 1 + spaceAroundBars, m_size.width(), m_hasMarkers ? markerHeight : 0};
}

QRect TimelineLayout::tracks() const noexcept {
    const int top = markers().top() + markers().height() + spaceAroundBars;
    return {0, top, m_size.width(), std::max(0, m_size.height() - top)};
}

QRect TimelineLayout::track(size_t index) const noexcept {
    const int between = m_video > 0 && index >= m_video ? mediumSpace : 0;
    const int top = tracks().top() + static_cast<int>(index) * (m_trackHeight + trackSpace) + between - m_scrolled;
    return {0, top, m_size.width(), m_trackHeight};
}

std::pair<size_t, size_t> TimelineLayout::visibleTracks() const noexcept {
    const QRect seen = tracks();
    const size_t count = m_video + m_audio;
    size_t first = 0;
    while (first < count && track(first).bottom() < seen.top())
        ++first;
    size_t end = first;
    while (end < count && track(end).top() <= seen.bottom())
        ++end;
    return {first, end};
}

int TimelineLayout::tracksHeight() const noexcept {
    const int count = static_cast<int>(m_video + m_audio);
    return count * (m_trackHeight + trackSpace) + (m_video > 0 && m_audio > 0 ? mediumSpace : 0);
}

}  // namespace qrtplay
