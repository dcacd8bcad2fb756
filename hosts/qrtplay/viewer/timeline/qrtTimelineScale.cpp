#include "viewer/timeline/qrtTimelineScale.h"

#include <algorithm>
#include <cmath>

namespace qrtplay {

void TimelineScale::setFrameCount(int64 frameCount) noexcept {
    m_frameCount = std::max<int64>(0, frameCount);
    fit();
}

void TimelineScale::setWidth(double width) noexcept {
    m_width = std::max(0.0, width);
    if (m_isFit || m_pixelsPerFrame <= fittingPixelsPerFrame()) return fit();
    setOffset(m_offset);
}

void TimelineScale::fit() noexcept {
    m_isFit = true;
    m_pixelsPerFrame = fittingPixelsPerFrame();
    m_offset = 0;
}

void TimelineScale::zoomBy(double factor, double anchor) noexcept {
    if (m_frameCount < 1 || !(factor > 0) || !std::isfinite(factor)) return;
    const double smallest = fittingPixelsPerFrame();
    const double wanted = std::min(m_pixelsPerFrame * factor, std::max(widestFrame, smallest));
    if (wanted <= smallest) return fit();
    const double anchored = (anchor - margin + m_offset) / m_pixelsPerFrame;
    m_isFit = false;
    m_pixelsPerFrame = wanted;
    setOffset(margin + anchored * wanted - anchor);
}

void TimelineScale::scrollBy(double pixels) noexcept {
    setOffset(m_offset + pixels);
}

bool TimelineScale::bringIntoView(int64 frame) noexcept {
    if (m_isFit) return false;
    const double begin = positionOf(frame);
    const double end = begin + std::max(1.0, m_pixelsPerFrame);
    if (begin >= 0 && end <= m_width) return false;
    const double before = m_offset;
    // A page leaves some of the last one in sight, for the eye to go on from.
    constexpr double kept = 0.1;
    setOffset(begin < 0 ? m_offset + end - m_width * (1 - kept) : m_offset + begin - m_width * kept);
    return m_offset != before;
}

double TimelineScale::contentWidth() const noexcept {
    return static_cast<double>(m_frameCount) * m_pixelsPerFrame + 2 * margin;
}

double TimelineScale::positionOf(int64 frame) const noexcept {
    return margin + static_cast<double>(frame) * m_pixelsPerFrame - m_offset;
}

int TimelineScale::columnOf(int64 frame) const noexcept {
    constexpr double farOutside = 1 << 20;
    return static_cast<int>(std::floor(std::clamp(positionOf(frame), -farOutside, farOutside)));
}

int64 TimelineScale::frameAt(double x) const noexcept {
    if (m_frameCount < 1 || std::isnan(x)) return 0;
    const double last = static_cast<double>(m_frameCount - 1);
    const double guess = std::floor((x - margin + m_offset) / m_pixelsPerFrame);
    auto frame = static_cast<int64>(std::clamp(guess, 0.0, last));
    // The division rounds, and a frame may begin later in the same column.
    while (frame > 0 && !beginsBefore(frame, x))
        --frame;
    while (frame + 1 < m_frameCount && beginsBefore(frame + 1, x))
        ++frame;
    return frame;
}

double TimelineScale::fittingPixelsPerFrame() const noexcept {
    return std::max(1.0, m_width - 2 * margin) / static_cast<double>(std::max<int64>(1, m_frameCount));
}

bool TimelineScale::beginsBefore(int64 frame, double x) const noexcept {
    const double position = positionOf(frame);
    return m_pixelsPerFrame < 1 ? position <= x : std::floor(position) <= std::floor(x);
}

void TimelineScale::setOffset(double offset) noexcept {
    m_offset = std::clamp(offset, 0.0, std::max(0.0, contentWidth() - m_width));
}

}  // namespace qrtplay
