#pragma once

#include <string>

#include "base/qrtOutcome.h"

namespace qrtplay {

/// Lets the engine write a trace of this run into a file, in the place of what the environment asks for; an empty name
/// asks for none. Fails, naming the file, when it cannot be written.
///
/// To be called before any player is made and while there are no other threads: it changes the environment.
Outcome requestTrace(std::string const& file);

}  // namespace qrtplay
