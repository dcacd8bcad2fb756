#pragma once

#include <string>

namespace qrtplay {

/// Exit statuses of the program.
enum ExitStatus : int { exit_done = 0, exit_failed = 1, exit_usage = 2, exit_interrupted = 130 };

/// Writes "qrtplay: ..." to standard error.
void printError(std::string const& message);
[[nodiscard]] bool standardErrorIsTerminal();

}  // namespace qrtplay
