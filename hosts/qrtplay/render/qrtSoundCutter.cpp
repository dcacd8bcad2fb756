#include "render/qrtSoundCutter.h"

#include <algorithm>

#include "base/qrtExactTime.h"
#include "encode/qrtMovieSettings.h"

namespace qrtplay {

bool SoundCutter::canFollow(std::vector<FrameRange> const& ranges) noexcept {
    return std::all_of(ranges.begin(), ranges.end(),
                       [](FrameRange const& range) { return range.step == 1 || range.first == range.last; });
}

int64 SoundCutter::sampleOf(int64 frame) const {
    return ExactTime::ofFrame(frame, m_rate).nearestFrame(Rational(movieSampleRate, 1));
}

void SoundCutter::begin(int64 frame) {
    m_rangeBegin = sampleOf(frame);
    m_movieBegin = sampleOf(m_position);
}

SoundCutter::Part SoundCutter::next() {
    const int64 first = sampleOf(m_position);
    const int64 end = sampleOf(++m_position);
    return {m_rangeBegin + first - m_movieBegin, end - first};
}

}  // namespace qrtplay
