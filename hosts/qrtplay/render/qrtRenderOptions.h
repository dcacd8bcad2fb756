#pragma once

#include <QStringList>

#include "base/qrtOutcome.h"
#include "render/qrtCommandLine.h"
#include "render/qrtOptions.h"

namespace qrtplay {

/// The command line of `render`.
Outcome parseRender(QStringList const& arguments, Options& options);

/// Of all commands that play something.
[[nodiscard]] CommandSyntax::Option allowPathOption();

}  // namespace qrtplay
