#include "host/qrtGeneratedPicture.h"

#include <gtest/gtest.h>

#include "generators/qrtGlGeneratorSegment.h"
#include "generators/qrtRamGeneratorSegment.h"

namespace qrtplay {

GeneratedPicture::Pixel GeneratedPicture::at(int x, int y) const {
    const size_t offset = (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 4;
    return {pixels.at(offset), pixels.at(offset + 1), pixels.at(offset + 2), pixels.at(offset + 3)};
}

void PrintTo(GeneratedPicture const& picture, std::ostream* stream) {
    *stream << "a picture of " << picture.width << "x" << picture.height;
}

VideoBufferResolution formatOf(int width, int height) {
    return VideoBufferResolution(width, height, 4, 8, false);
}

Generator generatorOf(Generator::Kind kind, std::vector<double> const& colour) {
    Generator generator;
    generator.kind = kind;
    generator.id = "generator";
    generator.colour = colour;
    generator.frameCount = 240;
    return generator;
}

Generator titleOf(std::string const& text, std::vector<double> const& colour) {
    Generator generator = generatorOf(Generator::Kind::title, colour);
    generator.text = text;
    return generator;
}

GeneratedPicture draw(QOpenGLExtraFunctions& gl, Generator const& generator, int width, int height, int64 frame,
                      GLenum target) {
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(target, texture);
    gl.glTexImage2D(target, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl.glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, target, texture, 0);
    gl.glClearColor(0, 1, 0, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT);

    const SharedPtr<GlGeneratorSegment> segment = GlGeneratorSegment::create(generator);
    EXPECT_EQ(segment
                  ->renderToTexture(texture, target == GL_TEXTURE_RECTANGLE ? 1 : 0, formatOf(width, height),
                                    Time(frame, generator.rate))
                  .get(),
              Status::ok);
    EXPECT_EQ(gl.glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    GeneratedPicture picture{width, height, std::vector<unsigned char>(formatOf(width, height).getBufferSize())};
    gl.glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, picture.pixels.data());
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glDeleteFramebuffers(1, &framebuffer);
    gl.glDeleteTextures(1, &texture);
    return picture;
}

GeneratedPicture fill(Generator const& generator, int width, int height, int64 frame) {
    GeneratedPicture picture{width, height, std::vector<unsigned char>(formatOf(width, height).getBufferSize(), 0x55)};
    const SharedPtr<RamGeneratorSegment> segment = RamGeneratorSegment::create(generator);
    EXPECT_EQ(segment
                  ->renderToRam(picture.pixels.data(), static_cast<unsigned int>(picture.pixels.size()),
                                formatOf(width, height), Time(frame, generator.rate))
                  .get(),
              Status::ok);
    return picture;
}

std::vector<int> livingObjects(QOpenGLExtraFunctions& gl) {
    constexpr GLuint highestName = 1000;
    std::vector<int> counts(5);
    for (GLuint name = 1; name <= highestName; ++name) {
        counts[0] += gl.glIsTexture(name);
        counts[1] += gl.glIsFramebuffer(name);
        counts[2] += gl.glIsProgram(name);
        counts[3] += gl.glIsShader(name);
        counts[4] += gl.glIsVertexArray(name);
    }
    return counts;
}

}  // namespace qrtplay
