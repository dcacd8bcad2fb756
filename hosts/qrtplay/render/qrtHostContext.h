#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// The OpenGL 3.2 core context of this program, which the player shares its textures with.
///
/// Threading: the thread of the application object.
class HostContext final {
public:
    /// Makes the context and makes it current.
    Outcome create();
    ~HostContext();

    /// What `Player::initialize` takes: under GLX the context and no window, under EGL the context and the display.
    [[nodiscard]] void* nativeContext() const noexcept { return m_nativeContext; }
    [[nodiscard]] void* nativeWindow() const noexcept { return m_nativeWindow; }

    [[nodiscard]] QOpenGLExtraFunctions& gl() const { return *m_context.extraFunctions(); }
    /// The largest width and height of a texture that a frame can be delivered in.
    [[nodiscard]] int largestFrameSide() const;

private:
    void takeNativeHandles();

    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    void* m_nativeContext = nullptr;
    void* m_nativeWindow = nullptr;
};

}  // namespace qrtplay
