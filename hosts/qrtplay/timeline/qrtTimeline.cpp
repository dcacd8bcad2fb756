#include "timeline/qrtTimeline.h"

#include <algorithm>
#include <utility>

#include "timeline/qrtTimelineEvaluation.h"

namespace qrtplay {

Timeline::Timeline(Content content) : m_content(std::move(content)) {}

Timeline::~Timeline() = default;

int64 Timeline::frameCount() const noexcept {
    return m_content.duration.frameFrom(m_content.rate);
}

FrameNode Timeline::pictureAt(int64 frame, Rational const& outputRate) const {
    if (!m_content.root || outputRate.getNumerator() <= 0 || outputRate.getDenominator() == 0) return {};
    const ExactTime time = ExactTime::ofFrame(frame, outputRate);
    if (time < ExactTime() || time >= m_content.duration) return {};
    return pictureOf(*m_content.root, time, ExactTime::ofFrame(1, outputRate));
}

std::vector<SoundSpan> Timeline::soundAt(int64 firstSample, int64 sampleCount, int32 sampleRate) const {
    if (!m_content.root || sampleRate <= 0 || sampleCount <= 0) return {};
    const Rational rate(sampleRate, 1);
    const int64 timelineEnd = m_content.duration.frameFrom(rate);
    if (firstSample >= timelineEnd) return {};
    const int64 untilEnd = timelineEnd - std::max<int64>(firstSample, 0);
    // What lies before the timeline is silent, and what is left must not overflow on the way.
    const int64 count = firstSample < 0 ? sampleCount + firstSample : sampleCount;
    if (count <= 0) return {};
    const int64 first = std::max<int64>(firstSample, 0);
    return soundOf(*m_content.root, first, first + std::min(count, untilEnd), rate);
}

}  // namespace qrtplay
