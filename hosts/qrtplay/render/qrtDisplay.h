#pragma once

#include "base/qrtOutcome.h"

namespace qrtplay {

/// Whether there is a display that Qt can be started on. Qt itself ends the process when there is none, so this has to
/// be asked before the application object is made.
Outcome checkDisplay();

/// Whether the platform that Qt has started on can share OpenGL objects between threads, as a player needs it.
Outcome checkPlatform();

}  // namespace qrtplay
