#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <vector>

#include "base/qrtKit.h"

namespace qrtplay {

/// A core-profile context that is current while the object lives.
class TestContext final {
public:
    TestContext();
    ~TestContext();
    Q_DISABLE_COPY(TestContext)

    [[nodiscard]] QOpenGLContext* context() { return &m_context; }
    [[nodiscard]] QOpenGLExtraFunctions& gl() { return *m_context.extraFunctions(); }

private:
    QOpenGLContext m_context;
    QOffscreenSurface m_surface;
};

/// A rectangle texture as the player hands it out: RGBA of 8 bits, opaque green.
class TestTexture final {
public:
    TestTexture(QOpenGLExtraFunctions& gl, int width, int height);
    ~TestTexture();
    Q_DISABLE_COPY(TestTexture)

    [[nodiscard]] GLuint name() const { return m_name; }
    /// Four bytes a pixel, rows from the bottom of the picture to its top.
    [[nodiscard]] std::vector<unsigned char> pixels();

private:
    QOpenGLExtraFunctions& m_gl;
    int m_width;
    int m_height;
    GLuint m_name = 0;
    GLuint m_framebuffer = 0;
};

}  // namespace qrtplay
