#include "viewer/picture/qrtPictureRenderer.h"

#include <QVector2D>
#include <algorithm>

namespace qrtplay {

namespace {

// One triangle that covers the view; no vertex buffer is needed.
constexpr char wholeViewSource[] = R"(#version 150
void main() {
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
})";

// Texels are fetched and weighed here: how a shared texture is filtered is not this view's to set, and the mean over
// exactly what a pixel covers is what neither mipmaps (rectangle textures have none) nor bilinear filtering gives.
constexpr char texelMeanSource[] = R"(#version 150
uniform sampler2DRect picture;
uniform bool isGrey;
uniform vec2 bottomLeft;      // of the picture, in pixels of the view
uniform vec2 topRight;
uniform vec2 texelsPerPixel;
uniform vec2 footprint;       // how many texels a pixel is the mean of
out vec4 colour;

const float mostTaps = 32.0;  // in each direction; beyond, every second or third texel has to do

vec4 meanOf(vec2 first, vec2 last) {
    ivec2 lastTexel = textureSize(picture) - 1;
    ivec2 begin = ivec2(floor(first));
    ivec2 end = ivec2(ceil(last));
    ivec2 stride = ivec2(max(ceil(footprint / mostTaps), 1.0));
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int y = begin.y; y < end.y; y += stride.y) {
        float height = min(float(y + 1), last.y) - max(float(y), first.y);
        for (int x = begin.x; x < end.x; x += stride.x) {
            float weight = height * (min(float(x + 1), last.x) - max(float(x), first.x));
            if (weight <= 0.0) continue;
            sum += weight * texelFetch(picture, clamp(ivec2(x, y), ivec2(0), lastTexel));
            total += weight;
        }
    }
    return total > 0.0 ? sum / total : vec4(0.0);
}

void main() {
    vec2 centre = (gl_FragCoord.xy - bottomLeft) * texelsPerPixel;
    colour = meanOf(centre - 0.5 * footprint, centre + 0.5 * footprint);
    if (isGrey) colour = vec4(colour.rrr, 1.0);
    vec2 covered = clamp(min(gl_FragCoord.xy + 0.5, topRight) - max(gl_FragCoord.xy - 0.5, bottomLeft), 0.0, 1.0);
    colour *= covered.x * covered.y;
})";

QRect outward(QRectF const& place) {
    // A picture that is enlarged a lot is larger than what integers hold only if it is broken.
    constexpr double farthest = 1 << 24;
    const QRectF limits(-farthest, -farthest, 2 * farthest, 2 * farthest);
    return place.intersected(limits).toAlignedRect();
}

}  // namespace

PictureRenderer::PictureRenderer(QOpenGLExtraFunctions& gl) : m_gl(gl) {
    m_gl.glGenVertexArrays(1, &m_vertexArray);
    m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, wholeViewSource);
    m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, texelMeanSource);
    m_program.link();  // writes a warning where it fails, and the view stays empty
}

PictureRenderer::~PictureRenderer() {
    m_gl.glDeleteVertexArrays(1, &m_vertexArray);
}

void PictureRenderer::begin(GLuint framebuffer, QSize view, QColor const& background) {
    m_view = view;
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    m_gl.glViewport(0, 0, view.width(), view.height());
    m_gl.glDisable(GL_DITHER);
    m_gl.glDisable(GL_BLEND);
    m_gl.glEnable(GL_SCISSOR_TEST);
    fill(QRect(QPoint(), view), background);
}

void PictureRenderer::draw(Picture const& picture, QRectF const& place, Enlarged enlarged) {
    if (picture.texture == 0 || picture.size.isEmpty() || !m_program.isLinked() || !clip(outward(place))) return;
    const QVector2D texelsPerPixel(static_cast<float>(picture.size.width() / place.width()),
                                   static_cast<float>(picture.size.height() / place.height()));
    QVector2D footprint = texelsPerPixel;
    // The mean over the size of a texel is what bilinear filtering gives.
    if (enlarged == Enlarged::smooth) footprint = {std::max(footprint.x(), 1.0f), std::max(footprint.y(), 1.0f)};

    m_program.bind();
    m_program.setUniformValue("picture", 0);
    m_program.setUniformValue("isGrey", picture.isGrey);
    m_program.setUniformValue("bottomLeft", QPointF(place.left(), m_view.height() - place.bottom()));
    m_program.setUniformValue("topRight", QPointF(place.right(), m_view.height() - place.top()));
    m_program.setUniformValue("texelsPerPixel", texelsPerPixel);
    m_program.setUniformValue("footprint", footprint);
    m_gl.glActiveTexture(GL_TEXTURE0);
    m_gl.glBindTexture(GL_TEXTURE_RECTANGLE, picture.texture);
    m_gl.glEnable(GL_BLEND);
    m_gl.glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    m_gl.glBindVertexArray(m_vertexArray);
    m_gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    m_gl.glBindVertexArray(0);
    m_gl.glDisable(GL_BLEND);
    // A texture that stays bound outlives its deletion by the one who lent it.
    m_gl.glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    m_program.release();
}

void PictureRenderer::fill(QRect const& place, QColor const& colour) {
    if (!clip(place)) return;
    m_gl.glClearColor(static_cast<float>(colour.redF()), static_cast<float>(colour.greenF()),
                      static_cast<float>(colour.blueF()), 1);
    m_gl.glClear(GL_COLOR_BUFFER_BIT);
}

bool PictureRenderer::clip(QRect const& place) {
    const QRect visible = place.intersected(QRect(QPoint(), m_view));
    if (visible.isEmpty()) return false;
    m_gl.glScissor(visible.x(), m_view.height() - visible.y() - visible.height(), visible.width(), visible.height());
    return true;
}

}  // namespace qrtplay
