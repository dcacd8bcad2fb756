#include "graph/qrtFrameComposer.h"

#include <QOpenGLContext>
#include <algorithm>
#include <string>
#include <utility>

#include "graph/qrtGlState.h"

namespace qrtplay {

/// What is being drawn into, and what from.
struct FrameComposer::Frame {
    QOpenGLExtraFunctions& gl;
    LayerProvider& provider;
    PicturePainter::Surface surface;
    bool& isUndefined;  // what is on the surface is left over from earlier
    int nesting = 0;
};

namespace {

void drainErrors(QOpenGLExtraFunctions& gl) {
    constexpr int mostErrors = 16;  // a lost context reports for ever
    for (int i = 0; i < mostErrors && gl.glGetError() != GL_NO_ERROR; ++i) {
    }
}

void clear(QOpenGLExtraFunctions& gl, GLuint framebuffer, float alpha) {
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glClearColor(0, 0, 0, alpha);
    gl.glClear(GL_COLOR_BUFFER_BIT);
}

/// The only node that a dissolve at one of its ends, or a stack of one, shows; null for other nodes.
FrameNode const* soleChild(FrameNode const& node) {
    if (node.kind == FrameNode::Kind::stack && node.children.size() == 1) return &node.children[0];
    if (node.kind != FrameNode::Kind::dissolve || node.children.size() < 2) return nullptr;
    if (node.mix <= 0) return &node.children[0];
    return node.mix >= 1 ? &node.children[1] : nullptr;
}

/// Code that is not ours runs in between, whatever it leaves behind.
Outcome renderGenerator(QOpenGLExtraFunctions& gl, LayerProvider& provider, FrameNode const& node,
                        Canvas const& canvas) {
    QOpenGLContext* const context = QOpenGLContext::currentContext();
    QSurface* const surface = context ? context->surface() : nullptr;
    const GlState state(gl, GlState::Extent::everything);
    Outcome outcome = provider.generatorPicture(node, canvas.texture, canvas.width, canvas.height);
    if (surface && QOpenGLContext::currentContext() != context) context->makeCurrent(surface);
    drainErrors(gl);
    return outcome;
}

}  // namespace

Outcome FrameComposer::compose(QOpenGLExtraFunctions& gl, FrameNode const& root, LayerProvider& provider,
                               Target const& target) {
    drainErrors(gl);
    const GlState state(gl);
    Outcome outcome = begin(gl, target);
    if (outcome.success()) {
        bool isUndefined = true;
        const Frame frame{gl, provider, {m_framebuffer, target.texture, target.width, target.height}, isUndefined};
        outcome = draw(frame, root, Blend::over, 1);
        makeBlack(frame);
        const Outcome ended = end(gl);
        if (outcome.success()) outcome = ended;
    }
    m_canvases.age(gl);
    drainErrors(gl);
    return outcome;
}

void FrameComposer::release(QOpenGLExtraFunctions& gl) {
    m_painter.release(gl);
    m_canvases.release(gl);
    if (m_framebuffer != 0) gl.glDeleteFramebuffers(1, &m_framebuffer);
    m_framebuffer = 0;
}

Outcome FrameComposer::begin(QOpenGLExtraFunctions& gl, Target const& target) {
    if (m_framebuffer == 0) gl.glGenFramebuffers(1, &m_framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, target.texture, 0);
    const GLenum status = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE)
        return Outcome::failure("the output texture cannot be drawn into (framebuffer status " +
                                std::to_string(status) + ")");
    return Outcome();
}

/// Before anything is drawn that leaves some of the surface to be seen.
void FrameComposer::makeBlack(Frame const& frame) {
    if (std::exchange(frame.isUndefined, false)) clear(frame.gl, frame.surface.framebuffer, 1);
}

Outcome FrameComposer::end(QOpenGLExtraFunctions& gl) {
    // Attached for longer than needed, the texture could not be freed when its owner deletes it.
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
    const GLenum error = gl.glGetError();
    if (error != GL_NO_ERROR) return Outcome::failure("drawing failed (OpenGL error " + std::to_string(error) + ")");
    return Outcome();
}

Outcome FrameComposer::draw(Frame const& frame, FrameNode const& node, Blend blend, double weight) {
    if (FrameNode const* const sole = soleChild(node)) return draw(frame, *sole, blend, weight);
    switch (node.kind) {
        case FrameNode::Kind::nothing: return Outcome();
        case FrameNode::Kind::media: return drawMedia(frame, node, blend, weight);
        case FrameNode::Kind::generator: return drawGenerator(frame, node, blend, weight);
        case FrameNode::Kind::stack:
            if (blend == Blend::over && weight >= 1) return drawStack(frame, node);
            break;
        case FrameNode::Kind::dissolve:
            if (blend == Blend::add) return drawDissolve(frame, node, weight);
            break;
    }
    return drawGroup(frame, node, blend, weight);
}

Outcome FrameComposer::drawMedia(Frame const& frame, FrameNode const& node, Blend blend, double weight) {
    LayerPicture layer;
    if (Outcome outcome = frame.provider.mediaPicture(node, layer); outcome.failed()) return outcome;
    if (!layer.picture) return Outcome();
    PicturePainter::Manner manner;
    manner.scaling = m_scaling;
    manner.blend = blend;
    manner.weight = weight;
    manner.colours = m_colours.get();
    manner.ready = m_ready;
    if (PicturePainter::covers(layer, frame.surface, manner))
        frame.isUndefined = false;
    else
        makeBlack(frame);
    const Outcome painted = m_painter.paint(frame.gl, layer, frame.surface, manner);
    if (painted.success()) return Outcome();
    return Outcome::failure(layer.path + ": " + painted.message());
}

Outcome FrameComposer::drawGenerator(Frame const& frame, FrameNode const& node, Blend blend, double weight) {
    CanvasLoan canvas(m_canvases);
    Outcome outcome = canvas.take(frame.gl, frame.surface.width, frame.surface.height, GL_RGBA8);
    if (outcome.failed()) return outcome;
    clear(frame.gl, canvas->framebuffer, 0);
    outcome = renderGenerator(frame.gl, frame.provider, node, *canvas);
    if (outcome.failed()) return outcome;
    makeBlack(frame);
    return m_painter.paintTexture(frame.gl, canvas->texture, frame.surface, blend, weight);
}

/// What has to be complete before it is drawn: a stack that is mixed, or a mix that lies over something.
Outcome FrameComposer::drawGroup(Frame const& frame, FrameNode const& node, Blend blend, double weight) {
    if (frame.nesting >= mostNestedGroups)
        return Outcome::failure("more than " + std::to_string(mostNestedGroups) +
                                " stacks and dissolves lie in each other");
    CanvasLoan canvas(m_canvases);
    Outcome outcome = canvas.take(frame.gl, frame.surface.width, frame.surface.height, GL_RGBA16F);
    if (outcome.failed()) return outcome;
    clear(frame.gl, canvas->framebuffer, 0);
    bool isUndefined = false;
    const Frame inner{frame.gl,
                      frame.provider,
                      {canvas->framebuffer, 0, frame.surface.width, frame.surface.height},
                      isUndefined,
                      frame.nesting + 1};
    outcome = node.kind == FrameNode::Kind::stack ? drawStack(inner, node) : drawDissolve(inner, node, 1);
    if (outcome.failed()) return outcome;
    makeBlack(frame);
    return m_painter.paintTexture(frame.gl, canvas->texture, frame.surface, blend, weight);
}

Outcome FrameComposer::drawStack(Frame const& frame, FrameNode const& node) {
    for (FrameNode const& child : node.children) {
        if (Outcome outcome = draw(frame, child, Blend::over, 1); outcome.failed()) return outcome;
    }
    return Outcome();
}

/// Adds both shares to what is there.
Outcome FrameComposer::drawDissolve(Frame const& frame, FrameNode const& node, double weight) {
    const size_t count = std::min<size_t>(node.children.size(), 2);
    for (size_t i = 0; i < count; ++i) {
        const double share = i == 0 ? 1 - node.mix : node.mix;
        if (Outcome outcome = draw(frame, node.children[i], Blend::add, weight * share); outcome.failed())
            return outcome;
    }
    return Outcome();
}

}  // namespace qrtplay
