#include "qrtStressFrame.h"

#include <array>
#include <cstring>

#include "qrtStressGraphEngine.h"
#include "qrtStressTags.h"

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

void readTexture(unsigned int texture, StressPixels& pixels, HostContext const& host) {
    auto& gl = host.gl();
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    gl.glReadPixels(0, 0, pixels.width, pixels.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.bytes.data());
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glDeleteFramebuffers(1, &framebuffer);
}

std::string textOf(unsigned char const* pixel) {
    return std::to_string(pixel[0]) + "," + std::to_string(pixel[1]) + "," + std::to_string(pixel[2]) + "," +
           std::to_string(pixel[3]);
}

bool isGreen(unsigned char const* pixel) {
    return std::memcmp(pixel, std::array<unsigned char, 4>{0, 255, 0, 255}.data(), 4) == 0;
}

/// Generations are painted in 16 bits, which wrap around.
bool isOlder(uint32 painted, uint32 than) {
    return static_cast<int16_t>(static_cast<uint16_t>(painted) - static_cast<uint16_t>(than)) < 0;
}

/// What is wrong with the columns of the segments; empty when nothing is.
std::string faultOfSegments(StressPixels const& pixels, int64 frame) {
    for (int segment = 0; segment < numStressSegments; ++segment) {
        unsigned char const* const pixel = pixels.at(segment * StressGraphEngine::segmentWidth + 1, pixels.height / 2);
        if (pixel[0] != (frame & 255) || pixel[1] != stressTags[static_cast<size_t>(segment)])
            return "shows " + textOf(pixel) + " for segment " + std::to_string(segment);
    }
    return "";
}

std::string faultOf(StressWorld& world, StressPixels const& pixels, int64 frame, uint32 oldest) {
    unsigned char const* const first = pixels.at(pixels.width - 1, 0);
    for (int y = 0; y < pixels.height; ++y) {
        for (const int x : {pixels.width / 2, pixels.width - 1})
            if (std::memcmp(pixels.at(x, y), first, 4) != 0) return "is torn";
    }
    if (isGreen(first)) return world.isUndrawn(frame) ? "" : "is green although it was drawn";
    if (first[0] + 256 * first[1] != frame) return "shows " + textOf(first);
    const auto generation = static_cast<uint32>(first[2] + 256 * first[3]);
    if (isOlder(generation, oldest)) return "is of an old composition, " + std::to_string(generation);
    if (isOlder(world.announced, generation)) return "is of no composition, " + std::to_string(generation);
    return showsStressSegments(generation) ? faultOfSegments(pixels, frame) : "";
}

}  // namespace

StressPixels readPixels(VideoBuffer& buffer, HostContext const* host) {
    const VideoBufferResolution format = buffer.getResolution();
    StressPixels pixels;
    pixels.width = format.getWidth();
    pixels.height = format.getHeight();
    if (buffer.getType() != VideoBuffer::framebufferKind) {
        void* data = nullptr;
        if (buffer.getData(data).failure() || !data) return pixels;
        auto const* const bytes = static_cast<unsigned char const*>(data);
        pixels.bytes.assign(bytes, bytes + format.getBufferSize());
    } else if (unsigned int texture = 0; host && buffer.getTexture(texture).success() && texture != 0) {
        pixels.bytes.resize(format.getBufferSize());
        readTexture(texture, pixels, *host);
    }
    return pixels;
}

void checkPixels(StressWorld& world, StressPixels const& pixels, int64 frame, uint32 oldest, std::string const& where) {
    const std::string fault = faultOf(world, pixels, frame, oldest);
    if (fault.empty()) return;
    world.complain(where + ": frame " + std::to_string(frame) + " " + fault + "; " + std::to_string(oldest) +
                   " had been exchanged, " + std::to_string(world.announced) + " announced");
}

}  // namespace QRT_0_81
