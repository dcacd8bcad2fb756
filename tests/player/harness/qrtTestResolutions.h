#pragma once

#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

/// Of no meaning but to be small and unlike each other.
inline constexpr VideoBufferResolution small(16, 8, 4, 8, false);
inline constexpr VideoBufferResolution twiceAsWide(32, 8, 4, 8, false);
inline constexpr size_t smallSize = 16 * 8 * 4;

}  // namespace QRT_0_81
