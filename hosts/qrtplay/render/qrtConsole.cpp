#include "render/qrtConsole.h"

#include <unistd.h>

#include <iostream>

#include "base/qrtPrintable.h"

namespace qrtplay {

std::string consoleLine(std::string const& message) {
    return "qrtplay: " + printable(message) + "\n";
}

void printError(std::string const& message) {
    std::cerr << consoleLine(message) << std::flush;
}

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace qrtplay
