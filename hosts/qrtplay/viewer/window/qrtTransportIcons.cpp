#include "viewer/window/qrtTransportIcons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace qrtplay {

namespace {

// All shapes lie in a square of this side.
constexpr double side = 20;
constexpr double top = 4;
constexpr double bottom = 16;
constexpr double middle = 10;

void addTriangle(QPainterPath& path, double base, double tip) {
    path.moveTo(base, top);
    path.lineTo(tip, middle);
    path.lineTo(base, bottom);
    path.closeSubpath();
}

void addBar(QPainterPath& path, double left, double width) {
    path.addRect(left, top, width, bottom - top);
}

QPainterPath pathOf(TransportShape shape) {
    QPainterPath path;
    switch (shape) {
        case TransportShape::to_start:
            addBar(path, 2, 2);
            addTriangle(path, 11, 4);
            addTriangle(path, 18, 11);
            break;
        case TransportShape::frame_back:
            addTriangle(path, 12, 4);
            addBar(path, 14, 2);
            break;
        case TransportShape::backwards:
            addTriangle(path, 10, 2);
            addTriangle(path, 18, 10);
            break;
        case TransportShape::play: addTriangle(path, 5, 16); break;
        case TransportShape::pause:
            addBar(path, 5, 3.5);
            addBar(path, 11.5, 3.5);
            break;
        case TransportShape::forwards:
            addTriangle(path, 2, 10);
            addTriangle(path, 10, 18);
            break;
        case TransportShape::frame_on:
            addBar(path, 4, 2);
            addTriangle(path, 8, 16);
            break;
        case TransportShape::to_end:
            addTriangle(path, 2, 9);
            addTriangle(path, 9, 16);
            addBar(path, 16, 2);
            break;
    }
    return path;
}

}  // namespace

QIcon transportIcon(TransportShape shape, QColor const& colour) {
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        const int pixels = static_cast<int>(side) * scale;
        QPixmap pixmap(pixels, pixels);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(scale, scale);
        painter.fillPath(pathOf(shape), colour);
        painter.end();
        pixmap.setDevicePixelRatio(scale);
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace qrtplay
