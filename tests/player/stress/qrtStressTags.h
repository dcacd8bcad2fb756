#pragma once

#include <array>

#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// The segments of a composition: one that renders into textures, one that renders into memory; see `StressSegment`.
inline constexpr int numStressSegments = 2;
inline constexpr std::array<unsigned char, numStressSegments> stressTags{0x51, 0xA2};

/// Every other generation shows the segments that its composition has.
[[nodiscard]] constexpr bool showsStressSegments(uint32 generation) {
    return generation % 2 == 1;
}

}  // namespace QRT_0_81
