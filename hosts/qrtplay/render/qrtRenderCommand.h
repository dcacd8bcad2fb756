#pragma once

#include "options/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay render`; the result is the exit status of the program. Needs a `QGuiApplication`.
int runRender(RenderOptions const& options);

/// Ends it before it has begun: there is no display to run it on.
int reportNoOpenGl(RenderOptions const& options, std::string const& why);

}  // namespace qrtplay
