#pragma once

#include <QOpenGLExtraFunctions>
#include <list>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// A rectangle texture of the pool with a framebuffer that draws into it. What is in it is left over from earlier.
struct Canvas {
    GLuint texture = 0;
    GLuint framebuffer = 0;
    int width = 0;
    int height = 0;
    GLint format = 0;
};

/// Intermediate pictures, kept for the next frame while they are of use.
///
/// Threading and OpenGL: one thread; the same context current in every call, `release` included. Changes the
/// framebuffer and the rectangle texture of the active unit.
class CanvasPool final {
public:
    /// `format`: an internal format. To be handed back with `giveBack`. Fails when OpenGL has no memory for it.
    Outcome lend(QOpenGLExtraFunctions& gl, int width, int height, GLint format, Canvas& canvas);
    void giveBack(Canvas const& canvas);
    /// To be called after each frame; deletes what has not been used for a while.
    void age(QOpenGLExtraFunctions& gl);
    /// Deletes all; none may be lent.
    void release(QOpenGLExtraFunctions& gl);

private:
    struct Idle {
        Canvas canvas;
        int framesUnused = 0;
    };

    void discard(QOpenGLExtraFunctions& gl, Canvas const& canvas);

    std::list<Idle> m_idle;  // the one used last comes first
};

/// A canvas for one scope.
class CanvasLoan final {
public:
    explicit CanvasLoan(CanvasPool& pool) : m_pool(pool) {}
    ~CanvasLoan() {
        if (m_canvas.texture != 0) m_pool.giveBack(m_canvas);
    }
    CanvasLoan(CanvasLoan const&) = delete;
    CanvasLoan& operator=(CanvasLoan const&) = delete;

    /// At most once.
    Outcome take(QOpenGLExtraFunctions& gl, int width, int height, GLint format) {
        return m_pool.lend(gl, width, height, format, m_canvas);
    }
    [[nodiscard]] Canvas const& operator*() const noexcept { return m_canvas; }
    [[nodiscard]] Canvas const* operator->() const noexcept { return &m_canvas; }

private:
    CanvasPool& m_pool;
    Canvas m_canvas;
};

}  // namespace qrtplay
