#include "playback/qrtFrameReader.h"

#include <array>
#include <cstring>
#include <optional>
#include <vector>

namespace qrtplay {

namespace {

struct Format {
    PixelFormat format;
    int bitsPerChannel;
    bool isFloat;
    GLenum type;
};
constexpr std::array<Format, 4> formats{{{PixelFormat::rgba8, 8, false, GL_UNSIGNED_BYTE},
                                         {PixelFormat::rgba16, 16, false, GL_UNSIGNED_SHORT},
                                         {PixelFormat::rgba16f, 16, true, GL_HALF_FLOAT},
                                         {PixelFormat::rgba32f, 32, true, GL_FLOAT}}};

Format const& formatOf(PixelFormat format) {
    for (Format const& candidate : formats) {
        if (candidate.format == format) return candidate;
    }
    return formats.front();
}

std::optional<PixelFormat> pixelFormatOf(VideoBufferResolution const& resolution) {
    if (resolution.getNumChannels() != 4) return std::nullopt;
    for (Format const& candidate : formats) {
        if (outputFormat(resolution.getWidth(), resolution.getHeight(), candidate.format) == resolution)
            return candidate.format;
    }
    return std::nullopt;
}

/// Rows of four channels need no padding on either side.
void copyTurnedOver(std::uint8_t const* bottomFirst, PixelBlock& block) {
    const size_t stride = block.strideInBytes();
    for (int32 row = 0; row < block.height; ++row)
        std::memcpy(block.row(block.height - 1 - row), bottomFirst + static_cast<size_t>(row) * stride, stride);
}

void turnOver(PixelBlock& block) {
    const size_t stride = block.strideInBytes();
    std::vector<std::uint8_t> spare(stride);
    for (int32 top = 0, bottom = block.height - 1; top < bottom; ++top, --bottom) {
        std::memcpy(spare.data(), block.row(top), stride);
        std::memcpy(block.row(top), block.row(bottom), stride);
        std::memcpy(block.row(bottom), spare.data(), stride);
    }
}

}  // namespace

VideoBufferResolution outputFormat(int width, int height, PixelFormat format) {
    constexpr int channels = 4;
    Format const& known = formatOf(format);
    return VideoBufferResolution(width, height, channels, known.bitsPerChannel, known.isFloat);
}

FrameReader::FrameReader(QOpenGLExtraFunctions& gl) : m_gl(gl) {
    m_gl.glGenFramebuffers(1, &m_framebuffer);
}

FrameReader::~FrameReader() {
    m_gl.glDeleteFramebuffers(1, &m_framebuffer);
}

Outcome FrameReader::read(VideoBuffer const& frame, PixelBlock& block) {
    const VideoBufferResolution resolution = frame.getResolution();
    const std::optional<PixelFormat> format = pixelFormatOf(resolution);
    if (!format) return Outcome::failure("was delivered in a format that was not asked for");
    PixelBlock read(resolution.getWidth(), resolution.getHeight(), *format);

    if (frame.getType() == VideoBuffer::framebufferKind) {
        unsigned int texture = 0;
        if (const Status status = frame.getTexture(texture); status.failure() || texture == 0)
            return Outcome::failure("was delivered without a texture");
        if (Outcome outcome = readTexture(texture, read); outcome.failed()) return outcome;
        turnOver(read);
    } else {
        void* data = nullptr;
        if (const Status status = frame.getData(data); status.failure() || !data)
            return Outcome::failure("was delivered without memory");
        copyTurnedOver(static_cast<std::uint8_t const*>(data), read);
    }
    block = std::move(read);
    return Outcome();
}

Outcome FrameReader::readTexture(GLuint texture, PixelBlock& bottomFirst) {
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_framebuffer);
    m_gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    const bool complete = m_gl.glCheckFramebufferStatus(GL_READ_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (complete) {
        m_gl.glPixelStorei(GL_PACK_ALIGNMENT, 4);
        m_gl.glReadPixels(0, 0, bottomFirst.width, bottomFirst.height, GL_RGBA, formatOf(bottomFirst.format).type,
                          bottomFirst.pixels.get());
    }
    m_gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    if (!complete || m_gl.glGetError() != GL_NO_ERROR) return Outcome::failure("its texture cannot be read");
    return Outcome();
}

}  // namespace qrtplay
