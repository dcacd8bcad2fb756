#include "viewer/picture/qrtOverlayImage.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

constexpr int overlayPadding = 8;
constexpr double overlayCornerRadius = 6;

QImage transparentImage(QSize size, double pixelRatio) {
    QImage image((QSizeF(size) * pixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::transparent);
    return image;
}

/// Font metrics as they are on the image, whose resolution differs from that of the screen's logical pixels.
QFontMetrics metricsOf(QImage& image, QFont const& font) {
    return QFontMetrics(font, &image);
}

}  // namespace

QImage overlayImage(QStringList const& lines, TextCanvas const& canvas) {
    QImage probe = transparentImage(QSize(1, 1), canvas.pixelRatio);
    const QFontMetrics metrics = metricsOf(probe, canvas.font);
    const int widest = canvas.largest.width() - 2 * overlayPadding;
    if (lines.isEmpty() || widest < metrics.averageCharWidth()) return QImage();

    QStringList shown;
    int width = 0;
    for (QString const& line : lines) {
        shown << metrics.elidedText(line, Qt::ElideRight, widest);
        width = std::max(width, metrics.horizontalAdvance(shown.back()));
    }
    const int height = metrics.lineSpacing() * static_cast<int>(shown.size());
    const QSize size(width + 2 * overlayPadding, height + 2 * overlayPadding);
    QImage image = transparentImage(size, canvas.pixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(QRect(QPoint(), size), overlayCornerRadius, overlayCornerRadius);
    painter.setFont(canvas.font);
    painter.setPen(QColor(245, 245, 245));
    int baseline = overlayPadding + metrics.ascent();
    for (QString const& line : shown) {
        painter.drawText(overlayPadding, baseline, line);
        baseline += metrics.lineSpacing();
    }
    return image;
}

QImage messageImage(QString const& text, QColor const& colour, TextCanvas const& canvas) {
    if (text.isEmpty() || canvas.largest.isEmpty()) return QImage();
    constexpr int flags = Qt::AlignCenter | Qt::TextWordWrap;
    QImage probe = transparentImage(QSize(1, 1), canvas.pixelRatio);
    const QRect bounds = metricsOf(probe, canvas.font).boundingRect(QRect(QPoint(), canvas.largest), flags, text);
    const QSize size = (bounds.size() + QSize(2, 2)).boundedTo(canvas.largest);
    QImage image = transparentImage(size, canvas.pixelRatio);
    QPainter painter(&image);
    painter.setFont(canvas.font);
    painter.setPen(colour);
    painter.drawText(QRect(QPoint(), size), flags, text);
    return image;
}

}  // namespace qrtplay
