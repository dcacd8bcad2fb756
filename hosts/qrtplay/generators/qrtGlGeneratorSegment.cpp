#include "generators/qrtGlGeneratorSegment.h"

#include <QOpenGLContext>

#include "generators/qrtCountdown.h"
#include "generators/qrtGeneratorColour.h"
#include "generators/qrtLeaderPainter.h"
#include "generators/qrtSmpteBars.h"
#include "generators/qrtTextureFramebuffer.h"
#include "graph/qrtGlState.h"

namespace qrtplay {

namespace {

float channel(std::uint8_t step) {
    return static_cast<float>(step) / 255.0f;
}

void drawSolidColour(QOpenGLExtraFunctions& gl, Generator const& generator) {
    const GeneratorColour colour = premultiplied(generator.colour);
    gl.glClearColor(colour[0], colour[1], colour[2], colour[3]);
    gl.glClear(GL_COLOR_BUFFER_BIT);
}

void drawBars(QOpenGLExtraFunctions& gl, VideoBufferResolution const& resolution) {
    gl.glEnable(GL_SCISSOR_TEST);
    for (ColourPatch const& patch : smpteBars(resolution.getWidth(), resolution.getHeight())) {
        gl.glScissor(patch.x, patch.y, patch.width, patch.height);
        gl.glClearColor(channel(patch.red), channel(patch.green), channel(patch.blue), 1.0f);
        gl.glClear(GL_COLOR_BUFFER_BIT);
    }
}

}  // namespace

Status GlGeneratorSegment::renderToTexture(unsigned int texture, unsigned int rectangle,
                                           VideoBufferResolution const& resolution, Time const& time) {
    if (texture == 0 || !resolution.isValid()) return Status::invalid_argument;
    QOpenGLContext* const context = QOpenGLContext::currentContext();
    if (!context) return Status::general_failure;
    const Generator generator = this->generator();
    if (generator.kind == Generator::Kind::title) return Status::invalid_query;

    QOpenGLExtraFunctions& gl = *context->extraFunctions();
    const GlState state(gl);
    const TextureFramebuffer target(gl, texture, rectangle != 0 ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D);
    if (!target.isComplete()) return Status::general_failure;
    gl.glViewport(0, 0, resolution.getWidth(), resolution.getHeight());
    if (generator.kind == Generator::Kind::solid_colour) {
        drawSolidColour(gl, generator);
    } else if (generator.kind == Generator::Kind::smpte_bars) {
        drawBars(gl, resolution);
    } else {
        const Countdown countdown(time.getNbTicks(), generator.frameCount, generator.rate);
        return paintLeader(gl, countdown, resolution.getWidth(), resolution.getHeight());
    }
    return Status();
}

Status GlGeneratorSegment::renderToRam(void*, unsigned int, VideoBufferResolution const&, Time const&) {
    return Status::invalid_query;
}

}  // namespace qrtplay
