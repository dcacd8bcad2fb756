#include "qrtExternalSegmentVideoBuffer.h"

#include <QOpenGLContext>
#include <algorithm>
#include <cstring>

#include "qrtDebugLine.h"
#include "qrtOpenGL.h"

namespace QRT_0_81 {

ExternalSegmentVideoBuffer::ExternalSegmentVideoBuffer(unsigned int rectangle, VideoBufferResolution const& resolution,
                                                       SharedPtr<VideoBufferPrivate> const& buffer)
    : m_rectangle(rectangle), m_size(0), m_resolution(resolution), m_buffer(buffer) {}

ExternalSegmentVideoBuffer::ExternalSegmentVideoBuffer(size_t size, VideoBufferResolution const& resolution,
                                                       SharedPtr<VideoBufferPrivate> const& buffer)
    : m_rectangle(1), m_size(size), m_resolution(resolution), m_buffer(buffer) {}

ExternalSegmentVideoBuffer::~ExternalSegmentVideoBuffer() = default;

Status ExternalSegmentVideoBuffer::copyFromTexture(unsigned int texture) {
    return blit(texture, Direction::in);
}

Status ExternalSegmentVideoBuffer::copyToTexture(unsigned int texture) const {
    return blit(texture, Direction::out);
}

Status ExternalSegmentVideoBuffer::blit(unsigned int texture, Direction direction) const {
    if (texture == 0) return Status::invalid_argument;
    QOpenGLFramebufferObject* fbo = nullptr;
    if (!m_buffer || m_buffer->getFBO(fbo).failure() || !fbo) return Status::general_failure;

    const FramebufferBindingGuard bindings;
    const TextureFramebuffer wrapped(texture, m_rectangle != 0);
    if (wrapped.getStatus().failure()) return wrapped.getStatus();
    const uint32 source = direction == Direction::in ? wrapped.getFramebuffer() : fbo->handle();
    const uint32 target = direction == Direction::in ? fbo->handle() : wrapped.getFramebuffer();
    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    // The caller may be in the middle of drawing: its scissor would cut the copy.
    const bool isScissored = gl.glIsEnabled(GL_SCISSOR_TEST) == GL_TRUE;
    if (isScissored) gl.glDisable(GL_SCISSOR_TEST);
    drainGlErrors();
    blitFramebuffer(&gl, source, fbo->width(), fbo->height(), target);
    const GLenum error = gl.glGetError();  // a texture of integers, say, cannot be copied into one of colours
    if (isScissored) gl.glEnable(GL_SCISSOR_TEST);
    if (error != GL_NO_ERROR) {
        DebugLine::post("src/player/private/qrtExternalSegmentVideoBuffer", __LINE__,
                        "an external segment's texture cannot be copied: OpenGL error %u", error);
    }
    return Status();
}

Status ExternalSegmentVideoBuffer::copyFromRam(void const* source, size_t size) {
    void* const own = data();
    if (!source || !own || size == 0 || m_size == 0) return Status::invalid_argument;
    std::memcpy(own, source, std::min(size, m_size));
    return Status();
}

Status ExternalSegmentVideoBuffer::copyToRam(void* destination, size_t size) const {
    void const* const own = data();
    if (!destination || !own || size == 0 || m_size == 0) return Status::invalid_argument;
    std::memcpy(destination, own, std::min(size, m_size));
    return Status();
}

void* ExternalSegmentVideoBuffer::data() const {
    void* own = nullptr;
    if (m_buffer) (void)m_buffer->getData(own);
    return own;
}

}  // namespace QRT_0_81
