#pragma once

class QOpenGLFunctions_3_2_Core;

namespace qrtplay {

/// What OpenGL 3.2 has beyond OpenGL ES, of the context that is current on this thread and owns it; null where there is
/// none or it has less.
[[nodiscard]] QOpenGLFunctions_3_2_Core* currentCoreFunctions();

}  // namespace qrtplay
