#include <GL/glx.h>

#include "common/native_context.h"

namespace examples {

NativeContext currentGlxContext() {
    return {glXGetCurrentContext(), nullptr};  // GLX needs no window to share objects
}

}  // namespace examples
