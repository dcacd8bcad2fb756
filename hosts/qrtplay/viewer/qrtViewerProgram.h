#pragma once

#include <optional>

#include "base/qrtKit.h"
#include "input/qrtPlayInput.h"
#include "options/qrtOptions.h"
#include "playback/qrtPlaySettings.h"

namespace qrtplay {

/// Shows the window until it is closed; the result is what the program ends with.
///
/// Threading: the main thread, with the application object that `makeViewerApplication` makes.
int runViewer(ViewOptions const& options);

}  // namespace qrtplay
