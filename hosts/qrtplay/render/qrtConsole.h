#pragma once

#include <string>

namespace qrtplay {

/// Exit statuses of the program.
enum ExitStatus : int {
    exit_done = 0,
    exit_failed = 1,         ///< something else than what follows
    exit_usage = 2,          ///< the command line is wrong, or does not fit the input
    exit_input_missing = 3,  ///< a file that is to be played is not there
    exit_refused = 4,        ///< a media or timeline that cannot be played
    exit_no_opengl = 5,      ///< no display, or none with the OpenGL that is needed
    exit_frames_failed = 6,  ///< all was tried, some frames could not be had or written
    exit_interrupted = 130,
};

/// "qrtplay: ..." with the end of its line; it is one whatever the message names.
[[nodiscard]] std::string consoleLine(std::string const& message);
/// Writes that to standard error.
void printError(std::string const& message);
[[nodiscard]] bool standardErrorIsTerminal();

}  // namespace qrtplay
