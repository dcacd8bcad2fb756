#include "viewer/picture/qrtPictureView.h"

#include <QFontDatabase>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "playback/qrtFrameReader.h"
#include "viewer/picture/qrtEightBitImage.h"
#include "viewer/picture/qrtOverlayImage.h"
#include "viewer/picture/qrtPictureRenderer.h"
#include "viewer/picture/qrtRectangleTexture.h"
#include "viewer/qrtMousePosition.h"

namespace qrtplay {

/// What is made in the view's context and dies in it.
struct PictureView::GlObjects {
    /// A text as it was painted last.
    struct Text {
        explicit Text(QOpenGLExtraFunctions& gl) : texture(gl) {}

        RectangleTexture texture;
        bool isOutdated = true;
        QSize view;
    };

    explicit GlObjects(QOpenGLExtraFunctions& gl) : renderer(gl), reader(gl), uploaded(gl), overlay(gl), message(gl) {}

    [[nodiscard]] PictureRenderer::Picture pictureOf(VideoBuffer const& frame);

    PictureRenderer renderer;
    FrameReader reader;
    RectangleTexture uploaded;  // of a frame in memory
    bool isUploaded = false;
    Text overlay;
    Text message;
};

namespace {

constexpr int overlayMargin = 8;  // logical pixels
constexpr int messageMargin = 24;
constexpr int wheelNotch = 120;  // an eighth of a degree each

bool isPanButton(Qt::MouseButtons buttons) {
    return (buttons & (Qt::LeftButton | Qt::MiddleButton)) != 0;
}

QSizeF pictureSizeOf(SharedPtr<VideoBuffer> const& frame) {
    if (!frame) return QSizeF();
    const VideoBufferResolution resolution = frame->getResolution();
    return QSizeF(resolution.getWidth(), resolution.getHeight());
}

/// `share` of the picture's width and height, around its middle, to whole pixels.
QRect middlePart(QRectF const& picture, double share) {
    const double marginX = picture.width() * (1 - share) / 2;
    const double marginY = picture.height() * (1 - share) / 2;
    const QRectF part = picture.adjusted(marginX, marginY, -marginX, -marginY);
    const QPoint topLeft(qRound(part.left()), qRound(part.top()));
    return QRect(topLeft, QPoint(qRound(part.right()) - 1, qRound(part.bottom()) - 1));
}

void drawOutline(PictureRenderer& renderer, QRect const& outline, int thickness, QColor const& colour) {
    const QSize across(outline.width(), thickness);
    const QSize down(thickness, outline.height());
    renderer.fill(QRect(outline.topLeft(), across), colour);
    renderer.fill(QRect(QPoint(outline.left(), outline.bottom() + 1 - thickness), across), colour);
    renderer.fill(QRect(outline.topLeft(), down), colour);
    renderer.fill(QRect(QPoint(outline.right() + 1 - thickness, outline.top()), down), colour);
}

PictureRenderer::Picture pictureOf(RectangleTexture const& texture) {
    return {texture.name(), texture.size(), false};
}

}  // namespace

/// Without texture when the frame has none, as when its player is gone.
PictureRenderer::Picture PictureView::GlObjects::pictureOf(VideoBuffer const& frame) {
    const VideoBufferResolution resolution = frame.getResolution();
    PictureRenderer::Picture picture;
    picture.size = QSize(resolution.getWidth(), resolution.getHeight());
    if (frame.getType() == VideoBuffer::framebufferKind) {
        unsigned int texture = 0;
        if (frame.getTexture(texture).success()) picture.texture = texture;
        return picture;
    }
    if (!isUploaded) isUploaded = uploaded.load(frame);
    if (isUploaded) picture.texture = uploaded.name();
    picture.isGrey = resolution.getNumChannels() == 1;
    return picture;
}

PictureView::PictureView(QWidget* parent) : QOpenGLWidget(parent) {
    setAccessibleName(tr("Picture"));
    setMinimumSize(96, 54);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

PictureView::~PictureView() {
    releaseGl();
}

void PictureView::showFrame(SharedPtr<VideoBuffer> const& frame) {
    if (frame == m_frame) return;
    m_frame = frame;
    if (m_gl) m_gl->isUploaded = false;
    if (m_frame) changeZoom([this] { m_zoom.setPicture(pictureSizeOf(m_frame)); });
    update();
}

void PictureView::setMessage(QString const& text) {
    if (text == m_message) return;
    m_message = text;
    if (m_gl) m_gl->message.isOutdated = true;
    setAccessibleDescription(text);
    update();
}

void PictureView::setOverlay(QStringList const& lines) {
    if (lines == m_overlay) return;
    m_overlay = lines;
    if (m_gl) m_gl->overlay.isOutdated = true;
    update();
}

void PictureView::setBackground(QColor const& colour) {
    if (colour == m_background) return;
    m_background = colour;
    if (m_gl) m_gl->message.isOutdated = true;  // its colour goes with the background's
    update();
}

void PictureView::setSafeAreas(bool shown) {
    m_safeAreas = shown;
    update();
}

QImage PictureView::snapshot() {
    if (!m_frame) return QImage();
    makeCurrent();
    PixelBlock block;
    // Without a context there is no reader either.
    const bool isRead = m_gl && m_gl->reader.read(*m_frame, block).success();
    doneCurrent();
    return isRead ? eightBitImage(block) : QImage();
}

void PictureView::initializeGL() {
    // The context is another one after the view has moved into another window.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PictureView::releaseGl, Qt::UniqueConnection);
    m_gl = std::make_unique<GlObjects>(*context()->extraFunctions());
}

void PictureView::releaseGl() {
    if (!m_gl) return;
    disconnect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PictureView::releaseGl);
    makeCurrent();
    m_gl.reset();
    doneCurrent();
}

QSize PictureView::viewInPixels() const {
    return size() * devicePixelRatioF();
}

/// Tells whoever shows the factor.
template <class Change>
void PictureView::changeZoom(Change const& change) {
    const double before = m_zoom.factor();
    const bool wasFit = m_zoom.isFit();
    change();
    if (m_zoom.factor() != before || m_zoom.isFit() != wasFit) emit zoomChanged();
    update();
}

void PictureView::layOut() {
    changeZoom([this] { m_zoom.setView(viewInPixels()); });
}

void PictureView::resizeGL(int, int) {
    layOut();  // the screen, and with it the size in pixels, may be another
}

void PictureView::resizeEvent(QResizeEvent* event) {
    QOpenGLWidget::resizeEvent(event);
    layOut();
}

void PictureView::changeEvent(QEvent* event) {
    QOpenGLWidget::changeEvent(event);
    if (event->type() != QEvent::FontChange || !m_gl) return;
    m_gl->overlay.isOutdated = true;
    m_gl->message.isOutdated = true;
    update();
}

void PictureView::paintGL() {
    if (!m_gl) return;
    m_gl->renderer.begin(defaultFramebufferObject(), viewInPixels(), m_background);
    if (!m_message.isEmpty()) {
        paintMessage();
    } else if (m_frame) {
        paintPicture();
        if (m_safeAreas) paintSafeAreas();
    }
    paintOverlay();
}

void PictureView::paintPicture() {
    using Enlarged = PictureRenderer::Enlarged;
    m_gl->renderer.draw(m_gl->pictureOf(*m_frame), m_zoom.pictureRect(),
                        m_zoom.isFit() ? Enlarged::smooth : Enlarged::sharp);
}

/// Lines as SMPTE ST 2046-1 wants them, light between dark ones, so that they are seen on every picture.
void PictureView::paintSafeAreas() {
    constexpr double actionSafe = 0.93;
    constexpr double titleSafe = 0.90;
    const QColor light(230, 230, 230);
    const QColor dark(40, 40, 40);
    const int thickness = std::max(1, qRound(devicePixelRatioF()));
    for (const double share : {actionSafe, titleSafe}) {
        const QRect area = middlePart(m_zoom.pictureRect(), share);
        drawOutline(m_gl->renderer, area.adjusted(-thickness, -thickness, thickness, thickness), 3 * thickness, dark);
        drawOutline(m_gl->renderer, area, thickness, light);
    }
}

void PictureView::paintOverlay() {
    GlObjects::Text& text = m_gl->overlay;
    if (text.isOutdated || text.view != viewInPixels()) {
        const QSize largest = size() - QSize(2 * overlayMargin, 2 * overlayMargin);
        // Digits of equal width keep running numbers in place.
        QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        fixed.setStyleStrategy(QFont::NoSubpixelAntialias);
        text.texture.load(overlayImage(m_overlay, {fixed, largest, devicePixelRatioF()}));
        text.isOutdated = false;
        text.view = viewInPixels();
    }
    const double margin = std::round(overlayMargin * devicePixelRatioF());
    m_gl->renderer.draw(pictureOf(text.texture), QRectF(QPointF(margin, margin), text.texture.size()),
                        PictureRenderer::Enlarged::sharp);
}

void PictureView::paintMessage() {
    GlObjects::Text& text = m_gl->message;
    const QSize view = viewInPixels();
    if (text.isOutdated || text.view != view) {
        constexpr int middleGrey = 128;
        const QColor colour = qGray(m_background.rgb()) < middleGrey ? QColor(220, 220, 220) : QColor(30, 30, 30);
        const QSize largest = size() - QSize(2 * messageMargin, 2 * messageMargin);
        QFont plain = font();
        plain.setStyleStrategy(QFont::NoSubpixelAntialias);
        text.texture.load(messageImage(m_message, colour, {plain, largest, devicePixelRatioF()}));
        text.isOutdated = false;
        text.view = view;
    }
    const QSize rest = view - text.texture.size();
    m_gl->renderer.draw(pictureOf(text.texture),
                        QRectF(QPoint(rest.width() / 2, rest.height() / 2), text.texture.size()),
                        PictureRenderer::Enlarged::sharp);
}

void PictureView::zoomToFit() {
    changeZoom([this] { m_zoom.fit(); });
}

void PictureView::zoomToOriginal() {
    zoomTo(1, m_zoom.viewCentre());
}

void PictureView::zoomIn() {
    zoomTo(PictureZoom::nextLarger(m_zoom.factor()), m_zoom.viewCentre());
}

void PictureView::zoomOut() {
    zoomTo(PictureZoom::nextSmaller(m_zoom.factor()), m_zoom.viewCentre());
}

void PictureView::zoomTo(double factor, QPointF anchor) {
    changeZoom([this, factor, anchor] { m_zoom.zoomTo(factor, anchor); });
}

void PictureView::wheelEvent(QWheelEvent* event) {
    const int turned = event->angleDelta().y();
    if ((turned < 0) != (m_wheelRest < 0)) m_wheelRest = 0;
    m_wheelRest += turned;
    double factor = m_zoom.factor();
    for (; m_wheelRest >= wheelNotch; m_wheelRest -= wheelNotch)
        factor = PictureZoom::nextLarger(factor);
    for (; m_wheelRest <= -wheelNotch; m_wheelRest += wheelNotch)
        factor = PictureZoom::nextSmaller(factor);
    if (factor != m_zoom.factor()) zoomTo(factor, event->position() * devicePixelRatioF());
    event->accept();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    m_dragPosition = mousePosition(*event) * devicePixelRatioF();
    if (isPanButton(event->buttons()) && !m_zoom.isFit()) setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    if (!isPanButton(event->buttons())) return;
    const QPointF position = mousePosition(*event) * devicePixelRatioF();
    m_zoom.pan(position - m_dragPosition);
    m_dragPosition = position;
    update();
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    if (!isPanButton(event->buttons())) unsetCursor();
}

void PictureView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit fullScreenWanted();
}

}  // namespace qrtplay
