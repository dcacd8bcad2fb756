#pragma once

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <stdexcept>

#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtSubject.h"
#include "qrtStressWorld.h"

namespace QRT_0_81 {

/// A host's segment of one colour: red is the low byte of the frame number, green the segment's tag, alpha is opaque.
/// Now and then it fails. Formats of four channels of 8 bits only.
class StressSegment final : public ExternalSegment {
public:
    StressSegment(char const* id, unsigned char tag, bool isRam) : m_id(id), m_tag(tag), m_isRam(isRam) {}

    [[nodiscard]] unsigned char tag() const { return m_tag; }
    Subject subject;

    // ExternalSegment
    [[nodiscard]] String const& getId() const override { return m_id; }
    [[nodiscard]] Subject* getSubject() override { return &subject; }
    [[nodiscard]] bool isRamSegment() const override { return m_isRam; }
    [[nodiscard]] bool hasOwnBuffers() const override { return false; }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const&) override { return nullptr; }
    [[nodiscard]] unsigned int getOwnTexture(unsigned int) override { return 0; }

    Status renderToTexture(unsigned int texture, unsigned int, VideoBufferResolution const&,
                           Time const& time) override {
        if (const Status status = beginRender(); status.failure()) return status;
        constexpr GLenum rectangleTarget = 0x84F5;
        auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
        GLuint framebuffer = 0;
        gl.glGenFramebuffers(1, &framebuffer);
        gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
        gl.glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, rectangleTarget, texture, 0);
        gl.glClearColor(static_cast<float>(time.getNbTicks() & 255) / 255.0f, static_cast<float>(m_tag) / 255.0f, 0.0f,
                        1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        gl.glDeleteFramebuffers(1, &framebuffer);
        return Status();
    }

    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const&, Time const& time) override {
        if (const Status status = beginRender(); status.failure()) return status;
        const unsigned char pixel[4] = {static_cast<unsigned char>(time.getNbTicks() & 255), m_tag, 0, 255};
        for (unsigned int i = 0; i < size; ++i)
            static_cast<unsigned char*>(buffer)[i] = pixel[i % 4];
        return Status();
    }

private:
    static Status beginRender() {
        if (stressWorld()->happens(StressFault::segment_throws, 64)) throw std::runtime_error("a segment's fault");
        return stressWorld()->happens(StressFault::segment_fails, 32) ? injectedFailure : Status::ok;
    }

    const String m_id;
    const unsigned char m_tag;
    const bool m_isRam;
};

}  // namespace QRT_0_81
