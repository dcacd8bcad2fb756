#pragma once

namespace QRT_0_81 {

// How many blocks of memory have been asked for with `new`: by this process so far, and by the calling thread. The
// engine asks in no other way, but for the blocks of a memory pool when that is set up. OpenGL drivers mostly use
// malloc, which is not counted.
[[nodiscard]] long allocationsOfAllThreads();
[[nodiscard]] long allocationsOfThisThread();

}  // namespace QRT_0_81
