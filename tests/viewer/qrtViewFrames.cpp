#include "viewer/qrtViewFrames.h"

#include <gtest/gtest.h>

#include <QFloat16>
#include <cmath>
#include <cstring>

namespace qrtplay {

namespace {

class MemoryFrame final : public VideoBuffer {
public:
    MemoryFrame(std::vector<std::uint8_t> bytes, VideoBufferResolution const& format, bool* isAlive)
        : m_bytes(std::move(bytes)), m_format(format), m_isAlive(isAlive) {
        if (m_isAlive) *m_isAlive = true;
    }
    ~MemoryFrame() override {
        if (m_isAlive) *m_isAlive = false;
    }

    [[nodiscard]] unsigned char getType() const override { return memoryKind; }
    Status getData(void*& data) override { return static_cast<MemoryFrame const&>(*this).getData(data); }
    Status getData(void*& data) const override {
        data = m_bytes.data();
        return Status();
    }
    Status getTexture(unsigned int& texture) const override {
        texture = 0;
        return Status();
    }
    [[nodiscard]] VideoBufferResolution getResolution() const override { return m_format; }

private:
    mutable std::vector<std::uint8_t> m_bytes;
    const VideoBufferResolution m_format;
    bool* const m_isAlive;
};

class TextureFrame final : public VideoBuffer {
public:
    TextureFrame(unsigned int texture, VideoBufferResolution const& format) : m_texture(texture), m_format(format) {}

    [[nodiscard]] unsigned char getType() const override { return framebufferKind; }
    Status getData(void*& data) override { return static_cast<TextureFrame const&>(*this).getData(data); }
    Status getData(void*& data) const override {
        data = nullptr;
        return Status();
    }
    Status getTexture(unsigned int& texture) const override {
        texture = m_texture;
        return Status();
    }
    [[nodiscard]] VideoBufferResolution getResolution() const override { return m_format; }

private:
    const unsigned int m_texture;
    const VideoBufferResolution m_format;
};

template <class Channel>
void put(std::uint8_t*& at, Channel value) {
    std::memcpy(at, &value, sizeof(value));
    at += sizeof(value);
}

void putChannel(std::uint8_t*& at, int value, VideoBufferResolution const& format) {
    const float unit = static_cast<float>(value) / 255;
    switch (format.getBitsPerChannel()) {
        case 16:
            if (format.isFloat())
                put(at, qfloat16(unit));
            else
                put(at, static_cast<std::uint16_t>(value * 0x101));
            break;
        case 32:
            if (format.isFloat())
                put(at, unit);
            else
                put(at, static_cast<std::uint32_t>(value) * 0x1010101u);
            break;
        default: put(at, static_cast<std::uint8_t>(value)); break;
    }
}

}  // namespace

QImage testPicture(int width, int height) {
    QImage picture(width, height, QImage::Format_RGBA8888);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QColor colour((37 * x + 11 * y) % 256, (5 * x + 53 * y + 90) % 256, (x + 3 * y) % 256);
            picture.setPixelColor(x, y, colour);
        }
    }
    return picture;
}

QImage checkerboard(int width, int height) {
    QImage picture(width, height, QImage::Format_RGBA8888);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixelColor(x, y, (x + y) % 2 == 0 ? Qt::white : Qt::black);
    }
    return picture;
}

QImage evenPicture(int width, int height, QColor const& colour) {
    QImage picture(width, height, QImage::Format_RGBA8888);
    picture.fill(colour);
    return picture;
}

SharedPtr<VideoBuffer> memoryFrame(QImage const& picture, VideoBufferResolution const& format, bool* isAlive) {
    const QImage bytes = picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    const int channels = format.getNumChannels() == 1 || format.getNumChannels() == 3 ? format.getNumChannels() : 4;
    std::vector<std::uint8_t> memory(static_cast<size_t>(format.getBufferSize()));
    for (int y = 0; y < bytes.height(); ++y) {
        std::uint8_t* at = memory.data() + static_cast<size_t>(bytes.height() - 1 - y) * format.getRowSize();
        for (int x = 0; x < bytes.width(); ++x) {
            for (int channel = 0; channel < channels; ++channel)
                putChannel(at, bytes.constScanLine(y)[4 * x + channel], format);
        }
    }
    return SharedPtr<VideoBuffer>(new MemoryFrame(std::move(memory), format, isAlive));
}

SharedPtr<VideoBuffer> memoryFrame(QImage const& picture, bool* isAlive) {
    return memoryFrame(picture, VideoBufferResolution(picture.width(), picture.height(), 4, 8, false), isAlive);
}

PlayerContext::PlayerContext() {
    m_context.setShareContext(QOpenGLContext::globalShareContext());
    m_surface.create();
    EXPECT_TRUE(m_context.create());
}

PlayerContext::~PlayerContext() {
    makeCurrent();
    m_context.functions()->glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    m_context.doneCurrent();
}

void PlayerContext::makeCurrent() {
    EXPECT_TRUE(m_context.makeCurrent(&m_surface));
}

SharedPtr<VideoBuffer> PlayerContext::textureFrame(QImage const& picture, VideoBufferResolution const& format,
                                                   GLint internalFormat) {
    makeCurrent();
    QOpenGLExtraFunctions& gl = *m_context.extraFunctions();
    const QImage bottomFirst = picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl.glTexImage2D(GL_TEXTURE_RECTANGLE, 0, internalFormat, picture.width(), picture.height(), 0, GL_RGBA,
                    GL_UNSIGNED_BYTE, bottomFirst.constBits());
    gl.glFinish();
    EXPECT_EQ(gl.glGetError(), GLenum{GL_NO_ERROR});
    m_context.doneCurrent();
    m_textures.push_back(texture);
    return SharedPtr<VideoBuffer>(new TextureFrame(texture, format));
}

SharedPtr<VideoBuffer> PlayerContext::textureFrame(QImage const& picture) {
    return textureFrame(picture, VideoBufferResolution(picture.width(), picture.height(), 4, 8, false), GL_RGBA8);
}

namespace {
constexpr GLuint highestName = 4096;  // names are given out from the lowest free one on
}

int PlayerContext::countTextures() {
    makeCurrent();
    int count = 0;
    for (GLuint name = 1; name < highestName; ++name)
        count += m_context.functions()->glIsTexture(name) ? 1 : 0;
    m_context.doneCurrent();
    return count;
}

int PlayerContext::countPrograms() {
    makeCurrent();
    int count = 0;
    for (GLuint name = 1; name < highestName; ++name)
        count += m_context.functions()->glIsProgram(name) ? 1 : 0;
    m_context.doneCurrent();
    return count;
}

}  // namespace qrtplay
