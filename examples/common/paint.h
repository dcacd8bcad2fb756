#pragma once

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>

namespace examples {

/// A rectangle of pixels, counted from the bottom left corner of the picture.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

struct Colour {
    float red = 0;
    float green = 0;
    float blue = 0;
};

/// Fills a part of a rectangle texture with the context that is current. Leaves its framebuffer binding at 0 and its
/// scissor test off, all else as it was.
inline void fill(unsigned int texture, Area const& area, Colour const& colour) {
    QOpenGLExtraFunctions& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLint scissor[4] = {};
    gl.glGetIntegerv(GL_SCISSOR_BOX, scissor);
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(area.x, area.y, area.width, area.height);
    const GLfloat filling[] = {colour.red, colour.green, colour.blue, 1};
    gl.glClearBufferfv(GL_COLOR, 0, filling);  // glClear would leave the colour behind
    gl.glDisable(GL_SCISSOR_TEST);
    gl.glScissor(scissor[0], scissor[1], scissor[2], scissor[3]);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glDeleteFramebuffers(1, &framebuffer);
}

}  // namespace examples
