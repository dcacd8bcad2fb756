#pragma once

#include "base/qrtKit.h"

namespace qrtplay {

inline constexpr Rational ntsc(30000, 1001);

}  // namespace qrtplay
