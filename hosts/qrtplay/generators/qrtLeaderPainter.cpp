#include "generators/qrtLeaderPainter.h"

#include <QImage>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QPainterPath>
#include <QVector2D>
#include <algorithm>

#include "generators/qrtGeneratorFont.h"

namespace qrtplay {

namespace {

// One triangle that covers the viewport; no vertex buffer is needed.
constexpr char vertexShader[] = R"(#version 150
void main() {
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
})";

constexpr char fragmentShader[] = R"(#version 150
uniform sampler2DRect number;
uniform vec2 size;
uniform float turn;    // of the hand, clockwise from the top
uniform float ground;  // grey outside what the hand has swept
uniform float swept;
uniform float ring;
out vec4 colour;

const float fullTurn = 6.28318530718;

// How much of the pixel a line covers whose middle is so far away.
float coverage(float away, float thickness) {
    return clamp((thickness + 1.0) * 0.5 - away, 0.0, 1.0);
}

void main() {
    float unit = min(size.x, size.y);
    float thickness = max(1.0, unit * 0.007);
    vec2 position = gl_FragCoord.xy - size * 0.5;

    float grey = fract(atan(position.x, position.y) / fullTurn + 1.0) < turn ? swept : ground;
    grey *= 1.0 - coverage(min(abs(position.x), abs(position.y)), thickness * 0.5);
    vec2 hand = vec2(sin(turn * fullTurn), cos(turn * fullTurn));
    if (dot(position, hand) > 0.0)
        grey *= 1.0 - coverage(abs(position.x * hand.y - position.y * hand.x), thickness * 1.5);
    float radius = length(position);
    float circles = max(coverage(abs(radius - unit * 0.36), thickness), coverage(abs(radius - unit * 0.42), thickness));
    grey = mix(grey, ring, circles);

    ivec2 numberSize = textureSize(number);
    ivec2 texel = ivec2(gl_FragCoord.xy) - (ivec2(size) - numberSize) / 2;
    if (all(greaterThanEqual(texel, ivec2(0))) && all(lessThan(texel, numberSize)))
        grey *= 1.0 - texelFetch(number, texel).r;
    colour = vec4(vec3(grey), 1.0);
})";

/// The number in white on black as large as fits, bottom row first.
QImage pictureOf(int64 number, int side) {
    QImage picture(side, side, QImage::Format_Grayscale8);
    if (picture.isNull()) return picture;
    picture.fill(Qt::black);

    QPainterPath digits;
    digits.addText(0, 0, generatorFont(100), QString::number(number));
    const QRectF extent = digits.boundingRect();
    if (extent.isEmpty()) return picture;
    const double scale = static_cast<double>(side) / std::max(extent.width(), extent.height());

    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(side / 2.0, side / 2.0);
    painter.scale(scale, -scale);
    painter.translate(-extent.center());
    painter.fillPath(digits, Qt::white);
    return picture;
}

GLuint uploadNumber(QOpenGLExtraFunctions& gl, QImage const& picture) {
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(picture.bytesPerLine()));
    gl.glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_R8, picture.width(), picture.height(), 0, GL_RED, GL_UNSIGNED_BYTE,
                    picture.constBits());
    return texture;
}

void drawEverywhere(QOpenGLExtraFunctions& gl) {
    GLuint vertexArray = 0;
    gl.glGenVertexArrays(1, &vertexArray);
    gl.glBindVertexArray(vertexArray);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    gl.glBindVertexArray(0);
    gl.glDeleteVertexArrays(1, &vertexArray);
}

}  // namespace

Status paintLeader(QOpenGLExtraFunctions& gl, Countdown const& countdown, int width, int height) {
    QOpenGLShaderProgram program;
    const bool built = program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader) &&
                       program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader) && program.bind();
    if (!built) return Status::general_failure;

    // Within the inner circle, corners included.
    const int side = std::max(1, std::min(width, height) * 48 / 100);
    const QImage number = pictureOf(countdown.number, side);
    if (number.isNull()) return Status::general_failure;
    const GLuint texture = uploadNumber(gl, number);

    program.setUniformValue("number", 0);
    program.setUniformValue("size", QVector2D(static_cast<float>(width), static_cast<float>(height)));
    program.setUniformValue("turn", static_cast<float>(countdown.turn));
    program.setUniformValue("ground", countdown.isPop ? 1.0f : 0.6f);
    program.setUniformValue("swept", countdown.isPop ? 0.8f : 0.4f);
    program.setUniformValue("ring", countdown.isPop ? 0.0f : 1.0f);
    drawEverywhere(gl);
    gl.glDeleteTextures(1, &texture);
    program.release();
    return Status();
}

}  // namespace qrtplay
