#pragma once

namespace qrtplay {

/// Keeps ALSA, through which Qt may play, from writing to standard error. A machine without a sound card would get some
/// twenty lines of it, although the window says in one that nothing can be heard. Nothing where there is no ALSA. Any
/// thread.
void silenceAlsa();

}  // namespace qrtplay
