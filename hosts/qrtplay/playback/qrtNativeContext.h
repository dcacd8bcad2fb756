#pragma once

#include <QOpenGLContext>

#include "base/qrtKit.h"

namespace qrtplay {

/// The OpenGL context of this program as `Player::initialize` takes it: under GLX the context and no window, under EGL
/// the context and the display.
struct NativeContext {
    void* context = nullptr;  ///< null when Qt does not tell it
    void* window = nullptr;
    int largestFrameSide = 0;  ///< width and height of the largest texture that a frame can be delivered in
};

/// Threading and OpenGL: `context` is current on the calling thread.
[[nodiscard]] NativeContext nativeContextOf(QOpenGLContext& context);

}  // namespace qrtplay
