#include "media/qrtSlatePainter.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstring>

namespace qrtplay {

namespace {

bool canWrite() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

/// Writes one line into `box`, at the left; returns what remains of the box below.
QRect writeLine(QPainter& painter, QRect const& box, int pixelSize, bool isBold, QString const& text) {
    QFont font = painter.font();
    font.setPixelSize(pixelSize);
    font.setBold(isBold);
    painter.setFont(font);
    const QFontMetrics metrics(font, painter.device());
    const QString fitting = metrics.elidedText(text, Qt::ElideMiddle, box.width());
    painter.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, fitting);
    return box.adjusted(0, metrics.lineSpacing(), 0, 0);
}

FramePtr toFrame(QImage const& image) {
    AvPtr<AVFrame> frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = AV_PIX_FMT_RGBA;
    frame->width = image.width();
    frame->height = image.height();
    frame->colorspace = AVCOL_SPC_RGB;
    frame->color_range = AVCOL_RANGE_JPEG;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    for (int row = 0; row < image.height(); ++row)
        std::memcpy(frame->data[0] + std::ptrdiff_t{row} * frame->linesize[0], image.constScanLine(row),
                    static_cast<size_t>(image.width()) * 4);
    return FramePtr(frame.release(), AvDeleter());
}

}  // namespace

FramePtr paintSlate(QSize size, QString const& title, QStringList const& lines) {
    QImage image(size, QImage::Format_RGBA8888);
    if (image.isNull()) return nullptr;
    image.fill(QColor(26, 26, 30));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const int unit = std::max(1, std::min(size.width(), size.height() * 16 / 9) / 32);
    painter.fillRect(0, size.height() / 3 - 2 * unit, size.width(), std::max(1, unit / 4), QColor(200, 40, 40));
    if (!canWrite()) return toFrame(image);

    QRect box(2 * unit, size.height() / 3 - unit, size.width() - 4 * unit, size.height() * 2 / 3);
    painter.setPen(QColor(240, 240, 240));
    box = writeLine(painter, box, std::max(1, unit * 2), true, title);
    painter.setPen(QColor(170, 170, 175));
    for (QString const& line : lines)
        box = writeLine(painter, box, std::max(1, unit * 5 / 4), false, line);
    painter.end();
    return toFrame(image);
}

FramePtr paintHole(QSize size, QString const& text) {
    QImage image(size, QImage::Format_RGBA8888);
    if (image.isNull()) return nullptr;
    image.fill(Qt::black);
    QPainter painter(&image);
    const int unit = std::max(1, std::min(size.width(), size.height() * 16 / 9) / 32);
    const int line = std::max(1, unit / 4);
    painter.setPen(QPen(Qt::red, line, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawLine(0, 0, size.width(), size.height());
    painter.drawLine(0, size.height(), size.width(), 0);
    painter.drawRect(image.rect().adjusted(line / 2, line / 2, -(line + 1) / 2, -(line + 1) / 2));
    if (canWrite()) {
        // On a ground of its own, or the cross would run through it.
        QRect box(2 * unit, size.height() / 2 - unit, size.width() - 4 * unit, 2 * unit);
        painter.fillRect(box.adjusted(-unit / 2, -unit / 4, unit / 2, unit / 2), Qt::black);
        painter.setPen(Qt::white);
        writeLine(painter, box, std::max(1, unit * 5 / 4), false, text);
    }
    painter.end();
    return toFrame(image);
}

}  // namespace qrtplay
