#pragma once

#include <ostream>
#include <vector>

#include "foundation/core/qrtSharedPtr.h"
#include "generators/qrtGeneratorSegment.h"
#include "host/qrtTestOpenGL.h"

namespace qrtplay {

/// A picture of RGBA with 8 bits as a generator rendered it: bottom row first.
struct GeneratedPicture {
    using Pixel = std::vector<int>;

    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;

    [[nodiscard]] Pixel at(int x, int y) const;
    [[nodiscard]] bool operator==(GeneratedPicture const&) const = default;
};
void PrintTo(GeneratedPicture const& picture, std::ostream* stream);

[[nodiscard]] VideoBufferResolution formatOf(int width, int height);
[[nodiscard]] Generator generatorOf(Generator::Kind kind, std::vector<double> const& colour = {0, 0, 0, 1});
[[nodiscard]] Generator titleOf(std::string const& text, std::vector<double> const& colour = {1, 1, 1, 1});

/// Has a generator drawn into a texture of the target, which was opaque green before.
[[nodiscard]] GeneratedPicture draw(QOpenGLExtraFunctions& gl, Generator const& generator, int width, int height,
                                    int64 frame = 0, GLenum target = GL_TEXTURE_RECTANGLE);
/// Has a generator rendered into memory.
[[nodiscard]] GeneratedPicture fill(Generator const& generator, int width, int height, int64 frame = 0);

/// How many of OpenGL's objects there are: textures, framebuffers, programs, shaders, vertex arrays.
[[nodiscard]] std::vector<int> livingObjects(QOpenGLExtraFunctions& gl);

}  // namespace qrtplay
