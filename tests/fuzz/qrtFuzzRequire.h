#pragma once

#include <cstdio>
#include <cstdlib>

/// What a fuzz target finds broken ends the program, which is what a fuzzer looks for.
inline void require(bool holds, char const* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}
