#pragma once

#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <memory>

#include "graph/qrtColourTransform.h"
#include "graph/qrtLetterbox.h"
#include "graph/qrtPictureConverter.h"
#include "graph/qrtPictureTextures.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// Draws decoded pictures into rectangle textures with OpenGL 3.2: colours by the picture's own matrix and range, bilinear
/// scaling, black bars where the shapes differ. Texture row 0 becomes the bottom of the picture; alpha is 1 everywhere.
///
/// OpenGL: everything is made at the first drawing. All calls need the same context current, `release` included; without
/// it what was made stays behind. The state of the context is left as it was, and no error.
/// Threading: one thread.
class PicturePainter final {
public:
    /// A `GL_TEXTURE_RECTANGLE` texture that can be drawn into, and its size.
    struct Target {
        GLuint texture;
        int width;
        int height;
    };

    /// `facts`: what holds for the clip where the picture itself says nothing.
    Outcome paint(QOpenGLExtraFunctions& gl, AVFrame const& picture, VideoFacts const& facts, Target const& target);
    Outcome paintBlack(QOpenGLExtraFunctions& gl, Target const& target);
    void release(QOpenGLExtraFunctions& gl);

private:
    Outcome prepare(QOpenGLExtraFunctions& gl);
    Outcome beginTarget(QOpenGLExtraFunctions& gl, Target const& target);
    Outcome endTarget(QOpenGLExtraFunctions& gl);
    void setUniforms(AVFrame const& picture, PixelLayout const& layout, ColourTransform const& transform,
                     AVChromaLocation location, PixelRect const& rect);

    PictureConverter m_converter;
    PictureTextures m_textures;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    GLuint m_vertexArray = 0;
    GLuint m_framebuffer = 0;
};

}  // namespace qrtplay
