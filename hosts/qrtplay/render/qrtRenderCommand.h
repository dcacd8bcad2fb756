#pragma once

#include "render/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay render`; the result is the exit status of the program. Needs a `QGuiApplication`.
int runRender(RenderOptions const& options);

}  // namespace qrtplay
