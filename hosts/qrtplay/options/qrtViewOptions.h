#pragma once

#include <QStringList>
#include <string>

#include "base/qrtOutcome.h"
#include "options/qrtOptions.h"

namespace qrtplay {

/// The command line of the window, with or without the command's name "view".
Outcome parseView(QStringList const& arguments, Options& options);

/// Puts what its options say of picture and player in the place of what was kept from an earlier run.
void overrideSettings(ViewOptions const& options, PlaySettings& settings);

/// Its options, for the help of the whole program.
[[nodiscard]] std::string viewOptionsHelp();

}  // namespace qrtplay
