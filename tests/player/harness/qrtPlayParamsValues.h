#pragma once

#include <limits>

#include "player/qrtPlayParams.h"

namespace QRT_0_81 {

inline constexpr int64 least64 = std::numeric_limits<int64>::min();
inline constexpr int64 most64 = std::numeric_limits<int64>::max();
inline constexpr int32 least32 = std::numeric_limits<int32>::min();
inline constexpr int32 most32 = std::numeric_limits<int32>::max();
inline constexpr Rational rate24(24, 1);
inline constexpr Rational rate1(1, 1);

/// Parameters with exactly these frames; they need not fit together.
[[nodiscard]] inline SharedPtr<PlayParams> make(int64 current, int64 start, int64 end, int step,
                                                PlayParams::PlayMode mode) {
    auto params = PlayParams::create(Time(), Time(), Time(), rate24, step, mode, PlayParams::all);
    params->setCurrentFrame(current);
    params->setStartFrame(start);
    params->setEndFrame(end);
    return params;
}

}  // namespace QRT_0_81
