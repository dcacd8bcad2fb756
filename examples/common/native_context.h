#pragma once

class QOpenGLContext;

namespace examples {

/// The two handles by which `Player::initialize` takes a host's OpenGL context.
struct NativeContext {
    void* context = nullptr;
    void* window = nullptr;
};

// Each in a file of its own: the window systems' headers define everyday words as macros and types.

/// Those of a context of Qt's, which works through GLX or EGL as Qt has chosen.
[[nodiscard]] NativeContext nativeContextOf(QOpenGLContext const& context);
/// Those of the context that is current on this thread, of whomever's, under GLX.
[[nodiscard]] NativeContext currentGlxContext();

}  // namespace examples
