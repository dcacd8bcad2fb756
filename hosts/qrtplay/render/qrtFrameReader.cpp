#include "render/qrtFrameReader.h"

#include <cstring>

namespace qrtplay {

FrameReader::FrameReader(QOpenGLExtraFunctions& gl) : m_gl(gl) {
    m_gl.glGenFramebuffers(1, &m_framebuffer);
}

FrameReader::~FrameReader() {
    m_gl.glDeleteFramebuffers(1, &m_framebuffer);
}

Outcome FrameReader::read(VideoBuffer const& frame, QImage& image) {
    const VideoBufferResolution resolution = frame.getResolution();
    if (resolution.getNumChannels() != 4 || resolution.getBitsPerChannel() != 8)
        return Outcome::failure("was delivered in a format that was not asked for");
    QImage bottomFirst(resolution.getWidth(), resolution.getHeight(), QImage::Format_RGBX8888);
    if (bottomFirst.isNull()) return Outcome::failure("does not fit the memory");

    if (frame.getType() == VideoBuffer::framebufferKind) {
        unsigned int texture = 0;
        if (const Status status = frame.getTexture(texture); status.failure() || texture == 0)
            return Outcome::failure("was delivered without a texture");
        if (Outcome outcome = readTexture(texture, bottomFirst); outcome.failed()) return outcome;
    } else {
        void* data = nullptr;
        if (const Status status = frame.getData(data); status.failure() || !data)
            return Outcome::failure("was delivered without memory");
        // Rows of 4 bytes a pixel need no padding on either side.
        std::memcpy(bottomFirst.bits(), data, static_cast<size_t>(bottomFirst.sizeInBytes()));
    }
    image = bottomFirst.mirrored(false, true);
    return Outcome();
}

Outcome FrameReader::readTexture(GLuint texture, QImage& bottomFirst) {
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_framebuffer);
    m_gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    const bool complete = m_gl.glCheckFramebufferStatus(GL_READ_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (complete) {
        m_gl.glPixelStorei(GL_PACK_ALIGNMENT, 4);
        m_gl.glReadPixels(0, 0, bottomFirst.width(), bottomFirst.height(), GL_RGBA, GL_UNSIGNED_BYTE, bottomFirst.bits());
    }
    m_gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    if (!complete || m_gl.glGetError() != GL_NO_ERROR) return Outcome::failure("its texture cannot be read");
    return Outcome();
}

}  // namespace qrtplay
