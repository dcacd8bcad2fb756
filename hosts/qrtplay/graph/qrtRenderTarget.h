#pragma once

#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"

namespace qrtplay {

/// A `GL_TEXTURE_RECTANGLE` texture that can be drawn into, and its size. Row 0 is the bottom of the picture.
struct RenderTarget {
    GLuint texture = 0;
    int width = 0;
    int height = 0;
};

/// How what is drawn joins what is there, alpha being premultiplied in both.
enum class Blend {
    replace,  ///< it covers it
    over,     ///< it lies over it, see-through where its alpha is below 1
    add,      ///< it is added to it; with weights that make 1, a mix
};

}  // namespace qrtplay
