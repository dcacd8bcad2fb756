#pragma once

namespace qrtplay {

/// The whole of the program qrtplay; the result is its exit status.
int runProgram(int argc, char** argv);

}  // namespace qrtplay
