#pragma once

#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"

namespace qrtplay {

/// A texture as something to draw into or to read from, for one scope. Bound at first; leaves no OpenGL error behind.
///
/// Threading: construct and destroy on one thread with the same context current, within the scope of a `GlState`, which
/// hands back the bindings. `gl` and the texture are borrowed.
class TextureFramebuffer final {
public:
    /// `target`: `GL_TEXTURE_RECTANGLE` or `GL_TEXTURE_2D`, as the texture is.
    TextureFramebuffer(QOpenGLExtraFunctions& gl, GLuint texture, GLenum target);
    ~TextureFramebuffer();
    Q_DISABLE_COPY(TextureFramebuffer)

    [[nodiscard]] bool isComplete() const { return m_isComplete; }
    [[nodiscard]] GLuint name() const { return m_name; }

private:
    QOpenGLExtraFunctions& m_gl;
    GLuint m_name = 0;
    bool m_isComplete = false;
};

}  // namespace qrtplay
