#pragma once

#include <QOpenGLExtraFunctions>
#include <memory>

#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTypes.h"
#include "foundation/core/qrtVideoBufferResolution.h"

// Formats of OpenGL 3.2 that the headers of OpenGL ES, on which Qt may be built, do not name.
#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif
#ifndef GL_RGB10
#define GL_RGB10 0x8052
#endif
#ifndef GL_RGB16
#define GL_RGB16 0x8054
#endif
#ifndef GL_RGBA16
#define GL_RGBA16 0x805B
#endif

namespace QRT_0_81 {

// Small OpenGL utilities. Every one needs a context current on the calling thread.

/// Saves the read and draw framebuffer bindings, and restores them at the end of its scope.
class FramebufferBindingGuard final {
public:
    FramebufferBindingGuard();
    ~FramebufferBindingGuard();
    FramebufferBindingGuard(FramebufferBindingGuard const&) = delete;
    FramebufferBindingGuard& operator=(FramebufferBindingGuard const&) = delete;

private:
    std::unique_ptr<QOpenGLExtraFunctions> m_functions;
    int32 m_readFramebuffer = 0;
    int32 m_drawFramebuffer = 0;
};

/// A framebuffer around an existing texture, for one scope.
///
/// It stays bound after construction and the texture stays bound to its target: put a `FramebufferBindingGuard` around.
class TextureFramebuffer final {
public:
    /// `rectangle`: whether the texture is a `GL_TEXTURE_RECTANGLE` one rather than a `GL_TEXTURE_2D` one.
    TextureFramebuffer(unsigned int texture, bool rectangle);
    ~TextureFramebuffer();
    TextureFramebuffer(TextureFramebuffer const&) = delete;
    TextureFramebuffer& operator=(TextureFramebuffer const&) = delete;

    /// `Status::general_failure` when the framebuffer is not complete.
    [[nodiscard]] Status getStatus() const { return m_status; }
    /// The framebuffer's name; owned by this object.
    [[nodiscard]] uint32 getFramebuffer() const { return m_framebuffer; }

private:
    std::unique_ptr<QOpenGLExtraFunctions> m_functions;
    Status m_status;
    uint32 m_framebuffer = 0;
};

/// Copies the colours of a rectangle at the origin, unscaled. Leaves both framebuffers bound.
void blitFramebuffer(QOpenGLExtraFunctions* functions, unsigned int readFramebuffer, int width, int height,
                     unsigned int drawFramebuffer);

/// Forgets the errors of earlier calls, so that nobody blames the next one. Gives up when the context itself is lost.
void drainGlErrors();

/// The pixel format of transfers: `GL_RED` for 1 channel, `GL_RGB` for 3, `GL_RGBA` for any other count, 2 included.
[[nodiscard]] GLenum getOglFormat(VideoBufferResolution const& resolution);

/// The pixel type of transfers. Depths other than 8, 16 and 32 bits are posted to the log and travel as bytes.
[[nodiscard]] GLenum getOglType(VideoBufferResolution const& resolution);

}  // namespace QRT_0_81
