#pragma once

#include <string>

#include "base/qrtOutcome.h"

namespace qrtplay {

/// Whether a path names a regular file: no folder, no pipe, no device. Failures name it.
Outcome checkRegularFile(std::string const& path);

}  // namespace qrtplay
