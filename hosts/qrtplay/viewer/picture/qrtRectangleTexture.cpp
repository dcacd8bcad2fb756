#include "viewer/picture/qrtRectangleTexture.h"

namespace qrtplay {

RectangleTexture::RectangleTexture(QOpenGLExtraFunctions& gl) : m_gl(gl) {
    m_gl.glGenTextures(1, &m_name);
}

RectangleTexture::~RectangleTexture() {
    m_gl.glDeleteTextures(1, &m_name);
}

bool RectangleTexture::load(VideoBuffer const& frame) {
    const VideoBufferResolution resolution = frame.getResolution();
    void* data = nullptr;
    if (!resolution.isValid() || frame.getData(data).failure() || !data) return false;
    upload(QSize(resolution.getWidth(), resolution.getHeight()), formatOf(resolution), data);
    return true;
}

void RectangleTexture::load(QImage const& image) {
    m_size = QSize();
    if (image.isNull()) return;
    const QImage bottomFirst = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    upload(bottomFirst.size(), Format(), bottomFirst.constBits());
}

/// What `VideoBufferResolution::getBufferSize` says about memory: other depths than 16 and 32 bits take a byte, other
/// counts than 1 and 3 channels take 4.
RectangleTexture::Format RectangleTexture::formatOf(VideoBufferResolution const& resolution) {
    struct Depth {
        GLint one;
        GLint three;
        GLint four;
        GLenum type;
    };
    const bool isFloat = resolution.isFloat();
    Depth depth{GL_R8, GL_RGB8, GL_RGBA8, GL_UNSIGNED_BYTE};
    if (resolution.getBitsPerChannel() == 16)
        depth = isFloat ? Depth{GL_R16F, GL_RGB16F, GL_RGBA16F, GL_HALF_FLOAT}
                        : Depth{GL_R16, GL_RGB16, GL_RGBA16, GL_UNSIGNED_SHORT};
    if (resolution.getBitsPerChannel() == 32)
        depth = isFloat ? Depth{GL_R32F, GL_RGB32F, GL_RGBA32F, GL_FLOAT}
                        : Depth{GL_R16, GL_RGB16, GL_RGBA16, GL_UNSIGNED_INT};
    switch (resolution.getNumChannels()) {
        case 1: return {depth.one, GL_RED, depth.type};
        case 3: return {depth.three, GL_RGB, depth.type};
        default: return {depth.four, GL_RGBA, depth.type};
    }
}

void RectangleTexture::upload(QSize size, Format const& format, void const* data) {
    constexpr GLenum target = GL_TEXTURE_RECTANGLE;
    m_gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    m_gl.glBindTexture(target, m_name);
    if (size == m_size && format == m_format)
        m_gl.glTexSubImage2D(target, 0, 0, 0, size.width(), size.height(), format.format, format.type, data);
    else
        m_gl.glTexImage2D(target, 0, format.internal, size.width(), size.height(), 0, format.format, format.type, data);
    m_gl.glBindTexture(target, 0);
    m_size = size;
    m_format = format;
}

}  // namespace qrtplay
