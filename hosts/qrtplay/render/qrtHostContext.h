#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "playback/qrtNativeContext.h"

namespace qrtplay {

/// The OpenGL 3.2 core context of a command, which the player shares its textures with.
///
/// Threading: the thread of the application object.
class HostContext final {
public:
    /// Makes the context and makes it current.
    Outcome create();
    ~HostContext();

    [[nodiscard]] NativeContext const& native() const noexcept { return m_native; }
    [[nodiscard]] QOpenGLExtraFunctions& gl() const { return *m_context.extraFunctions(); }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    NativeContext m_native;
};

}  // namespace qrtplay
