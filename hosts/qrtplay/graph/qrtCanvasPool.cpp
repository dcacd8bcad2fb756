#include "graph/qrtCanvasPool.h"

#include <algorithm>
#include <string>

namespace qrtplay {

namespace {

// Between them lie frames that need fewer, as around a dissolve; beyond them a canvas is of no use any more.
constexpr int mostFramesUnused = 25;
constexpr size_t mostIdle = 8;

}  // namespace

Outcome CanvasPool::lend(QOpenGLExtraFunctions& gl, int width, int height, GLint format, Canvas& canvas) {
    const auto fits = [&](Idle const& idle) {
        return idle.canvas.width == width && idle.canvas.height == height && idle.canvas.format == format;
    };
    if (const auto found = std::find_if(m_idle.begin(), m_idle.end(), fits); found != m_idle.end()) {
        canvas = found->canvas;
        m_idle.erase(found);
        return Outcome();
    }
    Canvas made{0, 0, width, height, format};
    gl.glGenTextures(1, &made.texture);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, made.texture);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl.glTexImage2D(GL_TEXTURE_RECTANGLE, 0, format, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl.glGenFramebuffers(1, &made.framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, made.framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, made.texture, 0);
    if (gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        discard(gl, made);
        return Outcome::failure("OpenGL cannot make an intermediate picture of " + std::to_string(width) + " x " +
                                std::to_string(height) + " pixels");
    }
    canvas = made;
    return Outcome();
}

void CanvasPool::giveBack(Canvas const& canvas) {
    m_idle.push_front({canvas, 0});
}

void CanvasPool::age(QOpenGLExtraFunctions& gl) {
    size_t kept = 0;
    for (auto idle = m_idle.begin(); idle != m_idle.end();) {
        if (++idle->framesUnused <= mostFramesUnused && ++kept <= mostIdle) {
            ++idle;
            continue;
        }
        discard(gl, idle->canvas);
        idle = m_idle.erase(idle);
    }
}

void CanvasPool::release(QOpenGLExtraFunctions& gl) {
    for (Idle const& idle : m_idle)
        discard(gl, idle.canvas);
    m_idle.clear();
}

void CanvasPool::discard(QOpenGLExtraFunctions& gl, Canvas const& canvas) {
    gl.glDeleteFramebuffers(1, &canvas.framebuffer);
    gl.glDeleteTextures(1, &canvas.texture);
}

}  // namespace qrtplay
