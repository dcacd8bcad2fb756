#pragma once

// Marks a function whose loops are worth compiling once more for processors with AVX2; which of the two runs is decided
// when the program is loaded. Under sanitizers that is too early: their run-time libraries are not there yet.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define QRTPLAY_CPU_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define QRTPLAY_CPU_CLONES
#endif
