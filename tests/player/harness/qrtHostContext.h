#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <cstdint>
#include <vector>

#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

/// A host's own OpenGL 3.2 core context, current on the calling thread for the object's life.
class HostContext final {
public:
    HostContext();
    ~HostContext();

    /// The two handles for `Player::initialize`, whichever of GLX and EGL Qt works through.
    [[nodiscard]] void* nativeContext() const { return m_nativeContext; }
    [[nodiscard]] void* nativeWindow() const { return m_nativeWindow; }

    [[nodiscard]] QOpenGLExtraFunctions& gl() const { return *m_context.extraFunctions(); }
    [[nodiscard]] QOpenGLContext& context() { return m_context; }
    void makeCurrent();
    void doneCurrent();

    /// The pixels of a rectangle texture as four channels of float, bottom row first, as a shader of this context
    /// samples them; all -1 when the name is no texture here.
    [[nodiscard]] std::vector<float> readTexture(unsigned int texture, int width, int height) const;

    /// How many of the names 1..4096 are textures (or framebuffers) as this context sees it.
    [[nodiscard]] int countTextures() const;
    [[nodiscard]] int countFramebuffers() const;

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    void* m_nativeContext = nullptr;
    void* m_nativeWindow = nullptr;
};

}  // namespace QRT_0_81
