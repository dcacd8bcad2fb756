#include "graph/qrtPictureTextures.h"

#include <cstring>

namespace qrtplay {

namespace {

struct ChannelFormat {
    GLenum format;
    GLint eightBits;
    GLint sixteenBits;
    GLint floats;
};
constexpr std::array<ChannelFormat, 4> channelFormats{{{GL_RED, GL_R8, GL_R16, GL_R32F},
                                                       {GL_RG, GL_RG8, GL_RG16, GL_RG32F},
                                                       {GL_RGB, GL_RGB8, GL_RGB16, GL_RGB32F},
                                                       {GL_RGBA, GL_RGBA8, GL_RGBA16, GL_RGBA32F}}};

GLenum sampleType(PixelLayout const& layout) {
    if (layout.isFloat) return GL_FLOAT;
    return layout.bytesPerChannel == 2 ? GL_UNSIGNED_SHORT : GL_UNSIGNED_BYTE;
}

GLint internalFormat(PixelLayout const& layout, ChannelFormat const& channels) {
    if (layout.isFloat) return channels.floats;
    return layout.bytesPerChannel == 2 ? channels.sixteenBits : channels.eightBits;
}

/// Of `pixels` pixels of which each 2^shift share a sample, the number of samples; a started group has one, too.
GLsizei samples(int pixels, int shift) {
    return (pixels + (1 << shift) - 1) >> shift;
}

}  // namespace

void PictureTextures::allocate(QOpenGLExtraFunctions& gl, Texture& texture, Texture const& wanted, GLenum format,
                               GLenum type) {
    const bool fits = texture.name != 0 && texture.width == wanted.width && texture.height == wanted.height &&
                      texture.internalFormat == wanted.internalFormat;
    const GLuint name = texture.name;
    if (fits) {
        gl.glBindTexture(GL_TEXTURE_RECTANGLE, name);
        return;
    }
    texture = wanted;
    texture.name = name;
    if (name == 0) gl.glGenTextures(1, &texture.name);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture.name);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl.glTexImage2D(GL_TEXTURE_RECTANGLE, 0, wanted.internalFormat, wanted.width, wanted.height, 0, format, type,
                    nullptr);
}

void PictureTextures::uploadPlane(QOpenGLExtraFunctions& gl, AVFrame const& picture, PixelLayout const& layout,
                                  size_t plane) {
    PixelLayout::Plane const& description = layout.planes[plane];
    ChannelFormat const& channels = channelFormats[static_cast<size_t>(description.channels - 1)];
    const GLenum type = sampleType(layout);

    Texture wanted;
    wanted.width = samples(picture.width, description.widthShift);
    wanted.height = samples(picture.height, description.heightShift);
    wanted.internalFormat = internalFormat(layout, channels);
    gl.glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(plane));
    allocate(gl, m_textures[plane], wanted, channels.format, type);

    const unsigned char* data = picture.data[description.source];
    const int stride = picture.linesize[description.source];
    const int texelSize = description.channels * layout.bytesPerChannel;
    GLint rowLength = stride / texelSize;
    if (stride < 0 || stride % texelSize != 0) {
        // Upside down in memory, or rows that end in the middle of a texel.
        const size_t rowSize = static_cast<size_t>(wanted.width) * static_cast<size_t>(texelSize);
        m_rows.resize(rowSize * static_cast<size_t>(wanted.height));
        for (int row = 0; row < wanted.height; ++row)
            std::memcpy(m_rows.data() + static_cast<size_t>(row) * rowSize, data + std::ptrdiff_t{row} * stride,
                        rowSize);
        data = m_rows.data();
        rowLength = 0;
    }
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, rowLength);
    gl.glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, wanted.width, wanted.height, channels.format, type, data);
}

void PictureTextures::upload(QOpenGLExtraFunctions& gl, AVFrame const& picture, PixelLayout const& layout) {
    gl.glPixelStorei(GL_UNPACK_SWAP_BYTES, layout.isSwapped ? GL_TRUE : GL_FALSE);
    for (size_t plane = 0; plane < static_cast<size_t>(layout.planeCount); ++plane)
        uploadPlane(gl, picture, layout, plane);
}

void PictureTextures::release(QOpenGLExtraFunctions& gl) {
    for (Texture& texture : m_textures) {
        if (texture.name != 0) gl.glDeleteTextures(1, &texture.name);
        texture = Texture();
    }
}

}  // namespace qrtplay
