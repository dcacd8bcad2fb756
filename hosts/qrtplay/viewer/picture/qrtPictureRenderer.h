#pragma once

#include <QColor>
#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <QRectF>
#include <QSize>

#include "base/qrtKit.h"

namespace qrtplay {

/// Draws pictures over each other into the view, whose pixels count from its top left corner.
///
/// Threading and OpenGL: the thread and context of `gl`, 3.2 core, current in every call and at the end. Between
/// `begin` and the last drawing nobody else changes the state; none is handed back, but no texture, vertex array or
/// program stays bound.
class PictureRenderer final {
public:
    /// A rectangle texture, row 0 at the bottom, alpha premultiplied.
    struct Picture {
        GLuint texture = 0;
        QSize size;
        bool isGrey = false;  ///< one channel
    };
    enum class Enlarged { sharp, smooth };

    explicit PictureRenderer(QOpenGLExtraFunctions& gl);
    ~PictureRenderer();
    Q_DISABLE_COPY(PictureRenderer)

    /// Fills the framebuffer, which is of this size in pixels.
    void begin(GLuint framebuffer, QSize view, QColor const& background);
    /// Shrunk, every pixel is the mean of what it covers; enlarged, a pixel of the picture is an even square or passes
    /// smoothly into the next one.
    void draw(Picture const& picture, QRectF const& place, Enlarged enlarged);
    /// One even, opaque colour.
    void fill(QRect const& place, QColor const& colour);

private:
    [[nodiscard]] bool clip(QRect const& place);

    QOpenGLExtraFunctions& m_gl;
    QOpenGLShaderProgram m_program;
    GLuint m_vertexArray = 0;
    QSize m_view;
};

}  // namespace qrtplay
