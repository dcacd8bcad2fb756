#pragma once

#include <QOpenGLExtraFunctions>
#include <array>
#include <vector>

#include "base/qrtKit.h"
#include "graph/qrtPixelLayout.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// The planes of the picture that is being drawn, as rectangle textures with bilinear filtering. Row 0 is the top row.
///
/// Threading and OpenGL: one thread, with the context current in every call, `release` included.
/// Changes the rectangle textures of the first texture units, the active one and the unpacking of rows and bytes.
class PictureTextures final {
public:
    static constexpr size_t mostPlanes = 4;

    /// Uploads the planes and leaves plane i bound to texture unit i.
    void upload(QOpenGLExtraFunctions& gl, AVFrame const& picture, PixelLayout const& layout);
    void release(QOpenGLExtraFunctions& gl);

private:
    struct Texture {
        GLuint name = 0;
        GLsizei width = 0;
        GLsizei height = 0;
        GLint internalFormat = 0;
    };

    void uploadPlane(QOpenGLExtraFunctions& gl, AVFrame const& picture, PixelLayout const& layout, size_t plane);
    void allocate(QOpenGLExtraFunctions& gl, Texture& texture, Texture const& wanted, GLenum format, GLenum type);

    std::array<Texture, mostPlanes> m_textures;
    std::vector<unsigned char> m_rows;  // a plane whose rows OpenGL cannot step through
};

}  // namespace qrtplay
