#include "generators/qrtSegmentRenderer.h"

#include <limits>
#include <new>

#include "generators/qrtTextureFramebuffer.h"
#include "graph/qrtGlState.h"

namespace qrtplay {

namespace {

constexpr unsigned int rectangle = 1;

Outcome toOutcome(Status const& status) {
    return status.success() ? Outcome() : Outcome::failure(status.toString().c_str());
}

Outcome copyTexture(QOpenGLExtraFunctions& gl, GLuint source, GLuint target, int width, int height) {
    const GlState state(gl);
    const TextureFramebuffer reading(gl, source, GL_TEXTURE_RECTANGLE);
    const TextureFramebuffer writing(gl, target, GL_TEXTURE_RECTANGLE);
    if (!reading.isComplete()) return Outcome::failure("its own texture cannot be read");
    if (!writing.isComplete()) return Outcome::failure("the output texture cannot be drawn into");
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, reading.name());
    gl.glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    return Outcome();
}

Outcome upload(QOpenGLExtraFunctions& gl, void const* pixels, GLuint texture, int width, int height) {
    const GlState state(gl);
    const TextureFramebuffer writing(gl, texture, GL_TEXTURE_RECTANGLE);
    if (!writing.isComplete()) return Outcome::failure("the output texture cannot be drawn into");
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl.glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    return Outcome();
}

}  // namespace

void SegmentRenderer::setSegments(List<SharedPtr<ExternalSegment>> const& segments) {
    m_segments.clear();
    for (SharedPtr<ExternalSegment> const& segment : segments) {
        if (segment) m_segments.emplace(segment->getId().c_str(), segment);
    }
}

Outcome SegmentRenderer::render(QOpenGLExtraFunctions& gl, std::string const& id, int64 frame, Rational const& rate,
                                GLuint rectangleTexture, int width, int height) {
    const auto found = m_segments.find(id);
    if (found == m_segments.end()) return Outcome::failure("generator '" + id + "': unknown");

    ExternalSegment& segment = *found->second;
    const Target target{rectangleTexture, VideoBufferResolution(width, height, 4, 8, false)};
    Outcome outcome = renderInto(gl, segment, Time(frame, rate), target);
    if (outcome.success()) return outcome;
    return Outcome::failure("generator '" + id + "': frame " + std::to_string(frame) + ": " + outcome.message());
}

Outcome SegmentRenderer::renderInto(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time,
                                    Target const& target) {
    if (!target.format.isValid()) return Outcome::failure("the output has no size");
    if (segment.isRamSegment()) return renderInMemory(gl, segment, time, target);
    return renderWithOpenGL(gl, segment, time, target);
}

Outcome SegmentRenderer::renderWithOpenGL(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time,
                                          Target const& target) {
    const Status status = segment.renderToTexture(target.texture, rectangle, target.format, time);
    if (status.failure() || !segment.hasOwnBuffers()) return toOutcome(status);
    return copyTexture(gl, segment.getOwnTexture(rectangle), target.texture, target.format.getWidth(),
                       target.format.getHeight());
}

Outcome SegmentRenderer::renderInMemory(QOpenGLExtraFunctions& gl, ExternalSegment& segment, Time const& time,
                                        Target const& target) {
    const uint64 size = target.format.getBufferSize();
    if (size > std::numeric_limits<unsigned int>::max()) return Outcome::failure("the picture is too large");
    try {
        m_picture.resize(size);
    } catch (std::bad_alloc const&) {
        return Outcome::failure("there is no memory for the picture");
    }
    const Status status = segment.renderToRam(m_picture.data(), static_cast<unsigned int>(size), target.format, time);
    if (status.failure()) return toOutcome(status);
    void const* const picture = segment.hasOwnBuffers() ? segment.getOwnRamBuffer(target.format) : m_picture.data();
    if (!picture) return Outcome::failure("it has no picture");
    return upload(gl, picture, target.texture, target.format.getWidth(), target.format.getHeight());
}

}  // namespace qrtplay
