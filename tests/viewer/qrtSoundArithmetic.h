#pragma once

#include "playback/qrtTimelinePlayer.h"

namespace qrtplay {

inline constexpr int32 sampleRate = TimelinePlayer::soundRate;
/// In place of a sample of the timeline.
inline constexpr int64 silent = -1;

/// The first sample at the begin of a frame or later, by plain arithmetic.
[[nodiscard]] inline int64 sampleOf(int64 frame, Rational const& rate) {
    const int64 numerator = frame * sampleRate * rate.getDenominator();
    return (numerator + rate.getNumerator() - 1) / rate.getNumerator();
}

}  // namespace qrtplay
