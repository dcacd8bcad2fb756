#pragma once

#include <QStringList>

#include "base/qrtOutcome.h"
#include "options/qrtOptions.h"

namespace qrtplay {

/// The command line of `render`.
Outcome parseRender(QStringList const& arguments, Options& options);

}  // namespace qrtplay
