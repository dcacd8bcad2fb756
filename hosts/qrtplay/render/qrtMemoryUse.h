#pragma once

#include "base/qrtKit.h"

namespace qrtplay {

/// How much memory of the machine this process occupies at the moment, in bytes; 0 when the system does not tell.
[[nodiscard]] int64 residentBytes();

}  // namespace qrtplay
