#include "graph/qrtPicturePainter.h"

#include <QGenericMatrix>
#include <QOpenGLShader>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include "graph/qrtGlState.h"

namespace qrtplay {

namespace {

// One triangle that covers the viewport; no vertex buffer is needed.
constexpr char vertexShader[] = R"(#version 150
void main() {
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
})";

// Rectangle textures are addressed in texels, so the planes of odd sizes need no correction.
constexpr char fragmentShader[] = R"(#version 150
uniform sampler2DRect component0;
uniform sampler2DRect component1;
uniform sampler2DRect component2;
uniform vec4 channel0;
uniform vec4 channel1;
uniform vec4 channel2;
uniform vec2 corner;         // of the picture on the output, in pixels
uniform vec2 scale;          // pixels of the picture per pixel of the output
uniform float pictureHeight;
uniform vec2 chromaScale;
uniform vec2 chromaOffset;
uniform mat3 toRgb;
uniform vec3 offset;
out vec4 colour;
void main() {
    vec2 position = (gl_FragCoord.xy - corner) * scale;
    position.y = pictureHeight - position.y;  // the output grows upwards, the picture downwards
    vec2 chroma = position * chromaScale + chromaOffset;
    vec3 samples = vec3(dot(texture(component0, position), channel0),
                        dot(texture(component1, chroma), channel1),
                        dot(texture(component2, chroma), channel2));
    colour = vec4(clamp(toRgb * samples + offset, 0.0, 1.0), 1.0);
})";

/// Where chroma samples sit among the luma samples that share one, as a fraction of the way from the first to the last.
struct ChromaSite {
    float x;
    float y;
};

ChromaSite siteOf(AVChromaLocation location, AVPixelFormat format) {
    switch (location) {
        case AVCHROMA_LOC_LEFT: return {0.0f, 0.5f};
        case AVCHROMA_LOC_CENTER: return {0.5f, 0.5f};
        case AVCHROMA_LOC_TOPLEFT: return {0.0f, 0.0f};
        case AVCHROMA_LOC_TOP: return {0.5f, 0.0f};
        case AVCHROMA_LOC_BOTTOMLEFT: return {0.0f, 1.0f};
        case AVCHROMA_LOC_BOTTOM: return {0.5f, 1.0f};
        default: break;
    }
    // JPEG centres, the video standards since MPEG-2 put chroma on the left column.
    const bool isJpeg = format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ440P ||
                        format == AV_PIX_FMT_YUVJ411P;
    return {isJpeg ? 0.5f : 0.0f, 0.5f};
}

/// In texels of the chroma plane, to be added to the luma position divided by `share`.
float chromaOffset(float site, int share) {
    const float distance = site * static_cast<float>(share - 1) + 0.5f;  // of the first chroma sample from the edge
    return 0.5f - distance / static_cast<float>(share);
}

void drainErrors(QOpenGLExtraFunctions& gl) {
    constexpr int mostErrors = 16;  // a lost context reports for ever
    for (int i = 0; i < mostErrors && gl.glGetError() != GL_NO_ERROR; ++i) {
    }
}

QVector4D channelSelector(int channel) {
    QVector4D selector;
    selector[channel] = 1.0f;
    return selector;
}

}  // namespace

Outcome PicturePainter::prepare(QOpenGLExtraFunctions& gl) {
    if (m_program) return Outcome();
    auto program = std::make_unique<QOpenGLShaderProgram>();
    const bool built = program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader) &&
                       program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader) && program->link();
    if (!built) return Outcome::failure("the shader cannot be built: " + program->log().simplified().toStdString());
    m_program = std::move(program);
    gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glGenFramebuffers(1, &m_framebuffer);
    return Outcome();
}

void PicturePainter::release(QOpenGLExtraFunctions& gl) {
    m_program.reset();
    m_textures.release(gl);
    if (m_vertexArray != 0) gl.glDeleteVertexArrays(1, &m_vertexArray);
    if (m_framebuffer != 0) gl.glDeleteFramebuffers(1, &m_framebuffer);
    m_vertexArray = m_framebuffer = 0;
}

Outcome PicturePainter::beginTarget(QOpenGLExtraFunctions& gl, Target const& target) {
    drainErrors(gl);
    if (Outcome outcome = prepare(gl); outcome.failed()) return outcome;
    gl.glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, target.texture, 0);
    const GLenum status = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        drainErrors(gl);
        return Outcome::failure("the output texture cannot be drawn into (framebuffer status " + std::to_string(status) +
                                ")");
    }
    gl.glViewport(0, 0, target.width, target.height);
    gl.glClearColor(0, 0, 0, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    return Outcome();
}

Outcome PicturePainter::endTarget(QOpenGLExtraFunctions& gl) {
    // Attached for longer than needed, the texture could not be freed when its owner deletes it.
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
    const GLenum error = gl.glGetError();
    drainErrors(gl);
    if (error != GL_NO_ERROR) return Outcome::failure("drawing failed (OpenGL error " + std::to_string(error) + ")");
    return Outcome();
}

Outcome PicturePainter::paintBlack(QOpenGLExtraFunctions& gl, Target const& target) {
    const GlState state(gl);
    if (Outcome outcome = beginTarget(gl, target); outcome.failed()) return outcome;
    return endTarget(gl);
}

Outcome PicturePainter::paint(QOpenGLExtraFunctions& gl, AVFrame const& picture, VideoFacts const& facts,
                              Target const& target) {
    const auto originalFormat = static_cast<AVPixelFormat>(picture.format);
    AVFrame const* uploaded = &picture;
    FramePtr converted;
    auto layout = describeLayout(originalFormat);
    if (!layout) {
        converted = m_converter.convert(picture, uploadableFormat(originalFormat));
        if (converted) layout = describeLayout(static_cast<AVPixelFormat>(converted->format));
        if (!layout)
            return Outcome::failure(std::string("its pixel format cannot be drawn (") +
                                    av_get_pix_fmt_name(originalFormat) + ")");
        uploaded = converted.get();
    }

    ColourFacts colour{picture.colorspace, picture.color_range, picture.color_primaries};
    if (colour.matrix == AVCOL_SPC_UNSPECIFIED) colour.matrix = facts.colour.matrix;
    if (colour.range == AVCOL_RANGE_UNSPECIFIED) colour.range = facts.colour.range;
    colour = completeColour(colour, originalFormat, picture.height);
    const auto transform = colourTransform(colour, *layout);
    if (!transform) {
        const char* const name = av_color_space_name(colour.matrix);
        return Outcome::failure(std::string("its colour matrix is not supported (") + (name ? name : "unknown") + ")");
    }
    const auto location =
        picture.chroma_location != AVCHROMA_LOC_UNSPECIFIED ? picture.chroma_location : facts.chromaLocation;

    const GlState state(gl);
    if (Outcome outcome = beginTarget(gl, target); outcome.failed()) return outcome;
    const PixelRect rect =
        letterbox(picture.width, picture.height, facts.sampleAspect, target.width, target.height);
    m_textures.upload(gl, *uploaded, *layout);
    m_program->bind();
    setUniforms(*uploaded, *layout, *transform, location, rect);
    gl.glViewport(rect.x, rect.y, rect.width, rect.height);
    gl.glBindVertexArray(m_vertexArray);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    return endTarget(gl);
}

void PicturePainter::setUniforms(AVFrame const& picture, PixelLayout const& layout, ColourTransform const& transform,
                                 AVChromaLocation location, PixelRect const& rect) {
    QOpenGLShaderProgram& program = *m_program;
    static constexpr const char* samplers[] = {"component0", "component1", "component2"};
    static constexpr const char* channels[] = {"channel0", "channel1", "channel2"};
    for (size_t i = 0; i < layout.components.size(); ++i) {
        // A grey picture has one component; its matrix takes nothing of the others.
        PixelLayout::Component const& component = layout.components[i];
        program.setUniformValue(samplers[i], component.plane);
        program.setUniformValue(channels[i], channelSelector(component.channel));
    }
    const auto pictureWidth = static_cast<float>(picture.width);
    const auto pictureHeight = static_cast<float>(picture.height);
    program.setUniformValue("corner", QVector2D(static_cast<float>(rect.x), static_cast<float>(rect.y)));
    program.setUniformValue("scale", QVector2D(pictureWidth / static_cast<float>(rect.width),
                                               pictureHeight / static_cast<float>(rect.height)));
    program.setUniformValue("pictureHeight", pictureHeight);

    PixelLayout::Plane const& chroma = layout.planes[static_cast<size_t>(layout.components[1].plane)];
    const int shareX = 1 << chroma.widthShift;
    const int shareY = 1 << chroma.heightShift;
    const ChromaSite site = siteOf(location, static_cast<AVPixelFormat>(picture.format));
    program.setUniformValue("chromaScale",
                            QVector2D(1.0f / static_cast<float>(shareX), 1.0f / static_cast<float>(shareY)));
    program.setUniformValue("chromaOffset", QVector2D(chromaOffset(site.x, shareX), chromaOffset(site.y, shareY)));

    QMatrix3x3 matrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            matrix(row, column) = static_cast<float>(transform.matrix[static_cast<size_t>(row * 3 + column)]);
    }
    program.setUniformValue("toRgb", matrix);
    program.setUniformValue("offset", QVector3D(static_cast<float>(transform.offset[0]),
                                                static_cast<float>(transform.offset[1]),
                                                static_cast<float>(transform.offset[2])));
}

}  // namespace qrtplay
