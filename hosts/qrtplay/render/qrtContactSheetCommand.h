#pragma once

#include "options/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay contact-sheet`; the result is the exit status of the program. Needs a `QGuiApplication`.
int runContactSheet(ContactSheetOptions const& options);

}  // namespace qrtplay
