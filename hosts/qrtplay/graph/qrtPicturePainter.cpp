#include "graph/qrtPicturePainter.h"

#include <QGenericMatrix>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>
#include <algorithm>

#include "graph/qrtChromaSite.h"
#include "graph/qrtColourTransform.h"
#include "graph/qrtCpuForm.h"
#include "graph/qrtPictureShader.h"

namespace qrtplay {

/// A picture that is ready to be uploaded, and what its shader is told.
struct PicturePainter::Upload {
    AVFrame const* picture = nullptr;
    FramePtr converted;  // what `picture` points to when its own format cannot be uploaded
    PixelLayout layout;
    ColourTransform transform;
    DisplayConversion conversion;
    std::shared_ptr<ColourShader const> managed;
    ChromaPlace chroma;
    PictureTraits traits;
    int firstLine = 0;
    int lineStep = 1;
};

/// One drawing: from the picture or from a texture to a part of a framebuffer.
struct PicturePainter::Pass {
    GLuint source = 0;  // the texture; 0 for the picture
    GLuint framebuffer = 0;
    PixelRect viewport;
    Sampling sampling;
    QMatrix2x2 turn;  // the identity
    QVector2D shift;
    bool isAcross = false;  // the sampling is of the lines of the texture
    Blend blend = Blend::replace;
    double weight = 1;
};

namespace {

// Texture units: the planes of the picture, or the one texture, then the tables.
constexpr GLuint firstTableUnit = PictureTextures::mostPlanes;

// Clips of this many shapes in turn cost no new textures.
constexpr size_t mostShapes = 4;

constexpr char textureSource[] = R"(#version 150
uniform sampler2DRect picture;
uniform bool isAcross;  // the line runs across the rows of the picture
vec4 texelAt(int along, int across) {
    return texelFetch(picture, isAcross ? ivec2(across, along) : ivec2(along, across));
}
)";

QVector4D channelSelector(int channel) {
    QVector4D selector;
    selector[channel] = 1.0f;
    return selector;
}

QMatrix3x3 asMatrix(Matrix3 const& numbers) {
    QMatrix3x3 matrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            matrix(row, column) = static_cast<float>(numbers[static_cast<size_t>(row * 3 + column)]);
    }
    return matrix;
}

QVector3D asVector(std::array<double, 3> const& numbers) {
    return {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2])};
}

std::string displayedSource(DisplayConversion const& conversion, ColourShader const* managed) {
    if (managed) return managed->text + "\nvec3 displayed(vec3 v) { return managed(vec4(v, 1.0)).rgb; }\n";
    if (conversion.isUnchanged) return "vec3 displayed(vec3 v) { return v; }\n";
    return conversion.functions +
           "uniform mat3 primaries;\nvec3 displayed(vec3 v) { return encoded(primaries * decoded(v)); }\n";
}

/// Along columns first, then across them.
void setTurn(Turn const& turn, bool linesFirst, QMatrix2x2& matrix, QVector2D& shift) {
    const int columns = linesFirst ? 1 : 0;
    const int lines = 1 - columns;
    matrix(columns, 0) = static_cast<float>(turn.columnFromX);
    matrix(columns, 1) = static_cast<float>(turn.columnFromY);
    matrix(lines, 0) = static_cast<float>(turn.rowFromX);
    matrix(lines, 1) = static_cast<float>(turn.rowFromY);
    shift[columns] = static_cast<float>(turn.columnOffset);
    shift[lines] = static_cast<float>(turn.rowOffset);
}

struct Range {
    int first;
    int count;
};

/// The columns, in the size of the place, that show on the output.
Range visibleColumns(Turn const& turn, PixelRect const& visible) {
    const int one = turn.columnFromX * visible.x + turn.columnFromY * visible.y + turn.columnOffset;
    const int other = one + turn.columnFromX * visible.width + turn.columnFromY * visible.height;
    return {std::min(one, other), std::abs(other - one)};
}

bool hasAlpha(AVFrame const& picture) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    return !descriptor || (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

void setBlend(QOpenGLExtraFunctions& gl, Blend blend) {
    if (blend == Blend::replace) {
        gl.glDisable(GL_BLEND);
        return;
    }
    gl.glEnable(GL_BLEND);
    gl.glBlendFunc(GL_ONE, blend == Blend::over ? GL_ONE_MINUS_SRC_ALPHA : GL_ONE);
}

}  // namespace

Outcome PicturePainter::prepare(AVFrame const& picture, LayerPicture const& layer, Manner const& manner,
                                Upload& upload) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    upload.picture = &picture;
    auto layout = describeLayout(format);
    if (!layout) {
        upload.converted = m_converter.convert(picture, uploadableFormat(format));
        if (upload.converted) layout = describeLayout(static_cast<AVPixelFormat>(upload.converted->format));
        if (!layout) {
            char const* const name = av_get_pix_fmt_name(format);
            return Outcome::failure(std::string("its pixel format cannot be drawn (") + (name ? name : "unknown") +
                                    ")");
        }
        upload.picture = upload.converted.get();
    }
    upload.layout = *layout;

    const ColourFacts colour = coloursOf(picture, *layout, layer.facts);
    const auto transform = colourTransform(colour, *layout);
    if (!transform) {
        char const* const name = av_color_space_name(colour.matrix);
        return Outcome::failure(std::string("its colour matrix is not supported (") + (name ? name : "unknown") + ")");
    }
    upload.transform = *transform;
    Outcome coloured = manner.colours ? manner.colours->shaderFor(layer.path, upload.managed)
                                      : displayConversion(colour, upload.conversion);
    if (coloured.failed()) return coloured;

    upload.chroma = chromaPlace(picture, *layout, chromaLocationOf(layer));
    PixelLayout::Plane const& chroma = layout->planes[static_cast<size_t>(layout->components[1].plane)];
    upload.traits.isGrey = layout->componentCount == 1;
    upload.traits.isSubsampled = chroma.widthShift > 0 || chroma.heightShift > 0;
    upload.traits.isInterlaced = upload.chroma.isByField;
    upload.traits.isFloat = layout->isFloat;
    upload.traits.hasAlpha = layout->hasAlpha;
    upload.traits.isPremultiplied = layer.facts.codecName == "exr";
    return Outcome();
}

bool PicturePainter::covers(LayerPicture const& layer, Surface const& surface, Manner const& manner) {
    const PixelRect whole{0, 0, surface.width, surface.height};
    const PixelRect place = placeOf(layer, manner.scaling, surface.width, surface.height);
    return manner.weight >= 1 && manner.blend != Blend::add && !hasAlpha(*layer.picture) &&
           visiblePart(place, surface.width, surface.height) == whole;
}

Outcome PicturePainter::paint(QOpenGLExtraFunctions& gl, LayerPicture const& layer, Surface const& surface,
                              Manner const& manner) {
    AVFrame const& picture = *layer.picture;
    const PixelRect place = placeOf(layer, manner.scaling, surface.width, surface.height);
    const PixelRect visible = visiblePart(place, surface.width, surface.height);
    if (visible.width == 0 || visible.height == 0) return Outcome();
    const auto form = manner.ready ? cpuForm(layer, place, manner.colours != nullptr) : std::nullopt;
    if (form) {
        if (const auto pixels = manner.ready->take({layer.picture, *form}))
            return paintReady(gl, *pixels, place, surface, manner);
    }
    Upload upload;
    if (Outcome outcome = prepare(picture, layer, manner, upload); outcome.failed()) return outcome;
    const Orientation orientation{layer.facts.clockwiseQuarterTurns, layer.facts.isFlippedHorizontally};

    const bool isOpaque = !upload.layout.hasAlpha && manner.weight >= 1;
    Pass last;
    last.framebuffer = surface.framebuffer;
    last.viewport = visible;
    last.blend = manner.blend == Blend::over && isOpaque ? Blend::replace : manner.blend;
    last.weight = manner.weight;

    const int placedWidth = orientation.isOnItsSide() ? place.height : place.width;
    const int placedHeight = orientation.isOnItsSide() ? place.width : place.height;
    const Sampling columns = wholeLine(picture.width, placedWidth);
    Sampling lines = wholeLine(picture.height, placedHeight);
    if (picture.interlaced_frame != 0 && lines.kernel != Kernel::fetch && picture.height >= 2) {
        const bool isSecond = picture.top_field_first == 0;
        lines = fieldLines(picture.height, placedHeight, isSecond);
        upload.firstLine = isSecond ? 1 : 0;
        upload.lineStep = 2;
    }
    const Turn turn = turnInto(place, orientation);
    if (columns.kernel == Kernel::fetch && lines.kernel == Kernel::fetch) {
        last.sampling = columns;
        setTurn(turn, false, last.turn, last.shift);
        return draw(gl, last, &upload);
    }
    setTurn(turn, true, last.turn, last.shift);
    const Range range = visibleColumns(turn, visible);
    last.shift[1] -= static_cast<float>(range.first);
    return drawScaled(gl, upload, last, {range.first, 0, range.count, lines.size}, columns, lines);
}

/// Scales the picture horizontally into an intermediate one, of which `visible` is wanted, and that one vertically. An
/// enlarged picture gets its colours first, so that they are computed once for each of its own pixels.
Outcome PicturePainter::drawScaled(QOpenGLExtraFunctions& gl, Upload const& upload, Pass const& last,
                                   PixelRect const& visible, Sampling const& columns, Sampling const& lines) {
    CanvasLoan coloured(m_canvases);
    CanvasLoan narrowed(m_canvases);
    Pass horizontal;
    Upload const* from = &upload;
    if (columns.kernel == Kernel::cubic) {
        if (Outcome outcome = coloured.take(gl, columns.size, lines.size, GL_RGBA16F); outcome.failed()) return outcome;
        Pass colouring;
        colouring.framebuffer = coloured->framebuffer;
        colouring.viewport = {0, 0, columns.size, lines.size};
        colouring.sampling.size = columns.size;
        if (Outcome outcome = draw(gl, colouring, &upload); outcome.failed()) return outcome;
        horizontal.source = coloured->texture;
        from = nullptr;
    }
    if (Outcome outcome = narrowed.take(gl, visible.width, visible.height, GL_RGBA16F); outcome.failed())
        return outcome;
    horizontal.framebuffer = narrowed->framebuffer;
    horizontal.viewport = {0, 0, visible.width, visible.height};
    horizontal.sampling = columns;
    horizontal.shift = QVector2D(static_cast<float>(visible.x), 0);
    if (Outcome outcome = draw(gl, horizontal, from); outcome.failed()) return outcome;

    Pass vertical = last;
    vertical.source = narrowed->texture;
    vertical.sampling = lines;
    vertical.isAcross = true;
    return draw(gl, vertical, nullptr);
}

/// Where it hides what was there it is copied, else drawn pixel by pixel.
Outcome PicturePainter::paintReady(QOpenGLExtraFunctions& gl, RgbaPixels const& pixels, PixelRect const& place,
                                   Surface const& surface, Manner const& manner) {
    const PixelRect visible = visiblePart(place, surface.width, surface.height);
    const bool isCopied = surface.texture != 0 && manner.blend != Blend::add && manner.weight >= 1;
    CanvasLoan canvas(m_canvases);
    if (!isCopied) {
        Outcome outcome = canvas.take(gl, visible.width, visible.height, GL_RGBA8);
        if (outcome.failed()) return outcome;
    }
    const size_t firstRow = static_cast<size_t>(visible.y - place.y);
    const size_t firstPixel = firstRow * static_cast<size_t>(pixels.width) + static_cast<size_t>(visible.x - place.x);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, isCopied ? surface.texture : canvas->texture);
    gl.glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_FALSE);
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, pixels.width);
    gl.glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, isCopied ? visible.x : 0, isCopied ? visible.y : 0, visible.width,
                       visible.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.bytes.get() + firstPixel * 4);
    if (isCopied) return Outcome();

    Pass pass;
    pass.source = canvas->texture;
    pass.framebuffer = surface.framebuffer;
    pass.viewport = visible;
    pass.shift = QVector2D(static_cast<float>(-visible.x), static_cast<float>(-visible.y));
    pass.blend = manner.blend == Blend::over && manner.weight >= 1 ? Blend::replace : manner.blend;
    pass.weight = manner.weight;
    return draw(gl, pass, nullptr);
}

Outcome PicturePainter::paintTexture(QOpenGLExtraFunctions& gl, GLuint texture, Surface const& surface, Blend blend,
                                     double weight) {
    Pass pass;
    pass.source = texture;
    pass.framebuffer = surface.framebuffer;
    pass.viewport = {0, 0, surface.width, surface.height};
    pass.blend = blend;
    pass.weight = weight;
    return draw(gl, pass, nullptr);
}

/// `upload`: the picture that the pass draws from; null when it draws from a texture.
Outcome PicturePainter::draw(QOpenGLExtraFunctions& gl, Pass const& pass, Upload const* upload) {
    std::string source = textureSource;
    if (upload) source = pictureSource(upload->traits, displayedSource(upload->conversion, upload->managed.get()));
    QOpenGLShaderProgram* program = nullptr;
    if (Outcome outcome = m_shaders.find(source + samplingSource(pass.sampling.kernel), program); outcome.failed())
        return outcome;
    program->bind();
    if (upload) {
        if (Outcome outcome = bindPicture(gl, *program, *upload); outcome.failed()) return outcome;
    } else {
        gl.glActiveTexture(GL_TEXTURE0);
        gl.glBindTexture(GL_TEXTURE_RECTANGLE, pass.source);
        program->setUniformValue("picture", 0);
        program->setUniformValue("isAcross", pass.isAcross);
    }
    program->setUniformValue("turn", pass.turn);
    program->setUniformValue("shift", pass.shift);
    program->setUniformValue("scale", static_cast<float>(pass.sampling.scale));
    program->setUniformValue("begin", static_cast<float>(pass.sampling.begin));
    program->setUniformValue("size", pass.sampling.size);
    program->setUniformValue("weight", static_cast<float>(pass.weight));

    if (m_vertexArray == 0) gl.glGenVertexArrays(1, &m_vertexArray);
    gl.glBindVertexArray(m_vertexArray);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, pass.framebuffer);
    gl.glViewport(pass.viewport.x, pass.viewport.y, pass.viewport.width, pass.viewport.height);
    setBlend(gl, pass.blend);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    return Outcome();
}

Outcome PicturePainter::bindPicture(QOpenGLExtraFunctions& gl, QOpenGLShaderProgram& program, Upload const& upload) {
    static constexpr const char* samplers[] = {"component0", "component1", "component2", "component3"};
    static constexpr const char* channels[] = {"channel0", "channel1", "channel2", "channel3"};
    texturesFor(gl, *upload.picture).upload(gl, *upload.picture, upload.layout);
    for (size_t i = 0; i < upload.layout.components.size(); ++i) {
        // Components that the picture lacks are not looked at.
        PixelLayout::Component const& component = upload.layout.components[i];
        program.setUniformValue(samplers[i], component.plane);
        program.setUniformValue(channels[i], channelSelector(component.channel));
    }
    ChromaPlace const& chroma = upload.chroma;
    program.setUniformValue("chromaScale", QVector2D(chroma.scaleX, chroma.scaleY));
    program.setUniformValue("chromaOffset", QVector2D(chroma.offsetX, chroma.offsetY));
    program.setUniformValue("fieldSite", QVector2D(chroma.fieldSites[0], chroma.fieldSites[1]));
    program.setUniformValue("lastFieldRow", QVector2D(chroma.lastFieldRows[0], chroma.lastFieldRows[1]));
    gl.glUniform2i(program.uniformLocation("lines"), upload.firstLine, upload.lineStep);
    program.setUniformValue("toRgb", asMatrix(upload.transform.matrix));
    program.setUniformValue("offset", asVector(upload.transform.offset));
    program.setUniformValue("alphaScale", static_cast<float>(upload.transform.alphaScale));
    if (upload.managed) return m_tables.bind(gl, upload.managed, program, firstTableUnit);
    program.setUniformValue("primaries", asMatrix(upload.conversion.matrix));
    program.setUniformValue("luminance", asVector(upload.conversion.luminance));
    return Outcome();
}

PictureTextures& PicturePainter::texturesFor(QOpenGLExtraFunctions& gl, AVFrame const& picture) {
    const auto fits = [&picture](Textures const& known) {
        return known.width == picture.width && known.height == picture.height && known.format == picture.format;
    };
    const auto found = std::find_if(m_textures.begin(), m_textures.end(), fits);
    if (found != m_textures.end()) {
        m_textures.splice(m_textures.begin(), m_textures, found);
        return m_textures.front().textures;
    }
    m_textures.push_front({picture.width, picture.height, picture.format, {}});
    if (m_textures.size() > mostShapes) {
        m_textures.back().textures.release(gl);
        m_textures.pop_back();
    }
    return m_textures.front().textures;
}

void PicturePainter::release(QOpenGLExtraFunctions& gl) {
    for (Textures& known : m_textures)
        known.textures.release(gl);
    m_textures.clear();
    m_tables.release(gl);
    m_shaders.release();
    if (m_vertexArray != 0) gl.glDeleteVertexArrays(1, &m_vertexArray);
    m_vertexArray = 0;
}

}  // namespace qrtplay
