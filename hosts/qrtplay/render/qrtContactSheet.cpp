#include "render/qrtContactSheet.h"

#include <QFontMetrics>
#include <algorithm>

namespace qrtplay {

namespace {

const QColor background(24, 24, 27);
const QColor brightText(240, 240, 240);
const QColor dimText(165, 165, 172);
const QColor gap(60, 32, 32);

constexpr int captionHeight = 2;  // in units
constexpr int titleHeight = 4;

}  // namespace

ContactSheet::ContactSheet(int width, int columns, int rows, QSize frameSize)
    : m_columns(columns), m_unit(std::clamp(width / columns / 25, 8, 20)) {
    const int tileWidth = std::max(1, (width - (columns + 1) * m_unit) / columns);
    const int tileHeight = std::max(1, tileWidth * frameSize.height() / std::max(1, frameSize.width()));
    m_tileSize = QSize(tileWidth, tileHeight);
    const int height = titleHeight * m_unit + rows * (tileHeight + captionHeight * m_unit) + m_unit;
    m_image = QImage(width, height, QImage::Format_RGB32);
    m_image.fill(background);
    m_painter.begin(&m_image);
    QFont font("DejaVu Sans");
    font.setPixelSize(m_unit);
    m_painter.setFont(font);
    m_painter.setRenderHint(QPainter::TextAntialiasing);
}

QRect ContactSheet::tile(int position) const {
    const int column = position % m_columns;
    const int row = position / m_columns;
    const int x = m_unit + column * (m_tileSize.width() + m_unit);
    const int y = titleHeight * m_unit + row * (m_tileSize.height() + captionHeight * m_unit);
    return QRect(QPoint(x, y), m_tileSize);
}

void ContactSheet::drawTitle(QString const& name, QString const& details) {
    const QFont usual = m_painter.font();
    QFont large = usual;
    large.setPixelSize(m_unit * 3 / 2);
    large.setBold(true);
    const QRect line(m_unit, 0, m_image.width() - 2 * m_unit, titleHeight * m_unit);
    const int detailsWidth = m_painter.fontMetrics().horizontalAdvance(details);
    m_painter.setPen(dimText);
    m_painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, details);
    m_painter.setFont(large);
    m_painter.setPen(brightText);
    const int nameWidth = std::max(0, line.width() - detailsWidth - 2 * m_unit);
    m_painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                       m_painter.fontMetrics().elidedText(name, Qt::ElideMiddle, nameWidth));
    m_painter.setFont(usual);
}

void ContactSheet::drawFrame(int position, QImage const& frame, QString const& left, QString const& right) {
    const QRect place = tile(position);
    m_painter.drawImage(place.topLeft(), frame.scaled(m_tileSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    drawCaption(place, left, right);
}

void ContactSheet::drawMissing(int position, QString const& left, QString const& right) {
    const QRect place = tile(position);
    m_painter.fillRect(place, gap);
    m_painter.setPen(brightText);
    m_painter.drawText(place, Qt::AlignCenter, "not decoded");
    drawCaption(place, left, right);
}

void ContactSheet::drawCaption(QRect const& place, QString const& left, QString const& right) {
    const QRect line(place.left(), place.bottom() + 1, place.width(), captionHeight * m_unit);
    m_painter.setPen(dimText);
    m_painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, right);
    m_painter.setPen(brightText);
    m_painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, left);
}

QImage ContactSheet::finish() {
    m_painter.end();
    return m_image;
}

}  // namespace qrtplay
