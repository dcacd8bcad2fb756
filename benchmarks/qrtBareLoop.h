#pragma once

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

/// Only the OpenGL work that an engine must do for a frame: bind, clear, finish, render, finish.
///
/// Lives on the player thread, in the player's own context, so that both sides meet the same driver state.
class BareLoop final {
public:
    /// Makes as many framebuffers as the player's pool holds.
    explicit BareLoop(VideoBufferResolution const& resolution);

    /// Renders frames one after the other through `render`, which draws into the texture that it is given as a graph
    /// engine does; returns the seconds that it took.
    double run(int numFrames, std::function<void(int frame, GLuint texture)> const& render);

private:
    static constexpr int numFramebuffers = 4;
    std::vector<std::unique_ptr<QOpenGLFramebufferObject>> m_framebuffers;
};

}  // namespace QRT_0_81
