#pragma once

#include <QImage>
#include <QOpenGLExtraFunctions>
#include <QSize>

#include "base/qrtKit.h"
#include "foundation/core/qrtVideoBuffer.h"

namespace qrtplay {

/// A `GL_TEXTURE_RECTANGLE` texture that pictures in memory are uploaded into, row 0 at the bottom.
///
/// Threading and OpenGL: the thread and context of `gl`, current in every call and at the end. The state that is
/// changed is the texture binding of the active unit, left 0, and the unpack alignment, left 4.
class RectangleTexture final {
public:
    explicit RectangleTexture(QOpenGLExtraFunctions& gl);
    ~RectangleTexture();
    Q_DISABLE_COPY(RectangleTexture)

    /// Uploads a frame of the memory kind; false when it holds nothing.
    [[nodiscard]] bool load(VideoBuffer const& frame);
    /// Uploads an image with alpha premultiplied; an empty one makes the texture empty.
    void load(QImage const& image);

    [[nodiscard]] GLuint name() const noexcept { return m_name; }
    [[nodiscard]] QSize size() const noexcept { return m_size; }

private:
    struct Format {
        GLint internal = GL_RGBA8;
        GLenum format = GL_RGBA;
        GLenum type = GL_UNSIGNED_BYTE;
        [[nodiscard]] bool operator==(Format const&) const noexcept = default;
    };
    [[nodiscard]] static Format formatOf(VideoBufferResolution const& resolution);
    void upload(QSize size, Format const& format, void const* data);

    QOpenGLExtraFunctions& m_gl;
    GLuint m_name = 0;
    QSize m_size;
    Format m_format;
};

}  // namespace qrtplay
