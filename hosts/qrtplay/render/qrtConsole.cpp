#include "render/qrtConsole.h"

#include <unistd.h>

#include <iostream>

namespace qrtplay {

void printError(std::string const& message) {
    std::cerr << "qrtplay: " + message + "\n" << std::flush;
}

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace qrtplay
