#pragma once

#include <QOpenGLBuffer>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <functional>
#include <memory>
#include <vector>

#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

/// Draws one shaded quad over the whole of the bound framebuffer: what both sides of the comparison render.
///
/// Every method needs the same context current.
class QuadRenderer final {
public:
    QuadRenderer();
    ~QuadRenderer();

    void draw(int width, int height, float shade);

private:
    QOpenGLShaderProgram m_program;
    QOpenGLVertexArrayObject m_vertexArray;
    int m_shadeLocation = -1;
};

/// Reads the bound framebuffer into memory through one pixel buffer: what a frame in memory costs at least.
///
/// Every method needs the same context current.
class BareReadBack final {
public:
    explicit BareReadBack(VideoBufferResolution const& resolution);

    /// `data` has room for `resolution.getBufferSize()` bytes.
    void read(void* data);

private:
    const VideoBufferResolution m_resolution;
    QOpenGLBuffer m_pixelBuffer;
};

/// Only the OpenGL work that an engine must do for a frame: bind, clear, finish, render, finish, and read-back.
///
/// Lives on the player thread, in the player's own context, so that both sides meet the same driver state.
class BareLoop final {
public:
    /// Makes as many framebuffers, and blocks of memory when it reads back, as the player's pools hold by default.
    BareLoop(VideoBufferResolution const& resolution, bool readsBack);

    /// Renders frames one after the other through `render`, which draws into the texture that it is given as a graph
    /// engine does.
    void run(int numFrames, std::function<void(int frame, GLuint texture)> const& render);

private:
    static constexpr size_t numBuffers = 4;

    std::vector<std::unique_ptr<QOpenGLFramebufferObject>> m_framebuffers;
    std::vector<std::unique_ptr<unsigned char[]>> m_blocks;  // empty when nothing is read back
    std::unique_ptr<BareReadBack> m_readBack;
};

}  // namespace QRT_0_81
