#pragma once

#include <string>

#include "base/qrtOutcome.h"

namespace qrtplay {

/// Makes sure that files can be made in a folder; makes the folder when it is missing. Failures name it.
Outcome prepareFolder(std::string const& folder);

}  // namespace qrtplay
