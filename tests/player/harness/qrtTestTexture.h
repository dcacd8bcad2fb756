#pragma once

#include <QOpenGLExtraFunctions>
#include <vector>

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

/// A texture of four channels of 8 bits that a test fills and reads. Lives in the context that is current at its birth
/// and end; leaves the framebuffer bindings at 0.
class TestTexture final {
public:
    using Pixel = std::vector<int>;

    TestTexture(QOpenGLExtraFunctions& gl, bool rectangle, int width, int height)
        : m_gl(gl), m_target(rectangle ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D) {
        m_gl.glGenTextures(1, &m_name);
        m_gl.glBindTexture(m_target, m_name);
        m_gl.glTexImage2D(m_target, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        fill({0, 0, 0, 0});
    }
    ~TestTexture() { m_gl.glDeleteTextures(1, &m_name); }
    TestTexture(TestTexture const&) = delete;
    TestTexture& operator=(TestTexture const&) = delete;

    [[nodiscard]] unsigned int name() const { return m_name; }

    void fill(Pixel const& colour) {
        const Attachment attachment(*this);
        const auto channel = [&](size_t i) { return static_cast<float>(colour[i]) / 255.0f; };
        m_gl.glClearColor(channel(0), channel(1), channel(2), channel(3));
        m_gl.glClear(GL_COLOR_BUFFER_BIT);
    }

    [[nodiscard]] Pixel pixel(int x, int y) const {
        const Attachment attachment(*this);
        unsigned char bytes[4] = {};
        m_gl.glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
        return {bytes, bytes + 4};
    }

private:
    struct Attachment {
        explicit Attachment(TestTexture const& texture) : gl(texture.m_gl) {
            gl.glGenFramebuffers(1, &framebuffer);
            gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, texture.m_target, texture.m_name, 0);
        }
        ~Attachment() {
            gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
            gl.glDeleteFramebuffers(1, &framebuffer);
        }
        QOpenGLExtraFunctions& gl;
        GLuint framebuffer = 0;
    };

    QOpenGLExtraFunctions& m_gl;
    const GLenum m_target;
    GLuint m_name = 0;
};

inline const TestTexture::Pixel black{0, 0, 0, 0};

}  // namespace QRT_0_81
