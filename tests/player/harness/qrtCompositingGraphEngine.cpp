#include "harness/qrtCompositingGraphEngine.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <vector>

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

constexpr unsigned int rectangle = 1;

/// Columns `x` to `x + width - 1` of the picture.
struct Stripe {
    int x;
    int width;
    int height;
};

QOpenGLExtraFunctions& gl() {
    return *QOpenGLContext::currentContext()->extraFunctions();
}

void copyStripe(unsigned int source, unsigned int target, Stripe const& stripe) {
    GLuint framebuffers[2] = {};
    gl().glGenFramebuffers(2, framebuffers);
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[0]);
    gl().glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, source, 0);
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffers[1]);
    gl().glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, target, 0);
    gl().glBlitFramebuffer(stripe.x, 0, stripe.x + stripe.width, stripe.height, stripe.x, 0, stripe.x + stripe.width,
                           stripe.height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    gl().glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl().glDeleteFramebuffers(2, framebuffers);
}

Status drawTextureSegment(ExternalSegment& segment, VideoBufferResolution const& resolution, Time const& time,
                          unsigned int target, Stripe const& stripe) {
    GLuint scratch = 0;
    gl().glGenTextures(1, &scratch);
    gl().glBindTexture(GL_TEXTURE_RECTANGLE, scratch);
    gl().glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, resolution.getWidth(), resolution.getHeight(), 0, GL_RGBA,
                      GL_UNSIGNED_BYTE, nullptr);
    const Status status = segment.renderToTexture(scratch, rectangle, resolution, time);
    if (status.success()) {
        copyStripe(segment.hasOwnBuffers() ? segment.getOwnTexture(rectangle) : scratch, target, stripe);
    }
    gl().glDeleteTextures(1, &scratch);
    return status;
}

Status drawRamSegment(ExternalSegment& segment, VideoBufferResolution const& resolution, Time const& time,
                      unsigned int target, Stripe const& stripe) {
    std::vector<unsigned char> buffer(resolution.getBufferSize());
    const Status status =
        segment.renderToRam(buffer.data(), static_cast<unsigned int>(buffer.size()), resolution, time);
    if (status.failure()) return status;
    void const* const pixels = segment.hasOwnBuffers() ? segment.getOwnRamBuffer(resolution) : buffer.data();
    gl().glBindTexture(GL_TEXTURE_RECTANGLE, target);
    gl().glPixelStorei(GL_UNPACK_ROW_LENGTH, resolution.getWidth());
    gl().glPixelStorei(GL_UNPACK_SKIP_PIXELS, stripe.x);
    gl().glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, stripe.x, 0, stripe.width, stripe.height, GL_RGBA, GL_UNSIGNED_BYTE,
                         pixels);
    gl().glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    gl().glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    return status;
}

}  // namespace

Status CompositingGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                              List<SharedPtr<ExternalSegment>> const& segments,
                                              VideoBufferResolution const& resolution,
                                              Rational const& defaultSourceVideoFrameRate) {
    m_segments = segments;
    return m_base.setComposition(composition, segments, resolution, defaultSourceVideoFrameRate);
}

Status CompositingGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (const Status status = m_base.renderFrame(resolution, frame, texture); status.failure()) return status;
    const Time time(frame, m_base.getVideoFrameRate());
    const int width = resolution.getWidth() / static_cast<int>(m_segments.size() + 1);
    Stripe stripe{0, width, resolution.getHeight()};
    for (auto const& segment : m_segments) {
        stripe.x += width;
        if (!segment) continue;
        const Status status = segment->isRamSegment() ? drawRamSegment(*segment, resolution, time, texture, stripe)
                                                      : drawTextureSegment(*segment, resolution, time, texture, stripe);
        if (status.failure()) return status;
    }
    return Status();
}

}  // namespace QRT_0_81
