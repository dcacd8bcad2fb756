#include "viewer/picture/qrtPictureZoom.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qrtplay {

namespace {

// Three to each doubling. Enlargements are whole numbers where they can be, for pixels of equal size.
constexpr std::array<double, 28> neatFactors{0.0625, 0.08, 0.1, 0.125, 0.16, 0.2, 0.25, 0.32, 0.4, 0.5,
                                             0.64,   0.8,  1,   1.25,  1.5,  2,   2.5,  3,    4,   5,
                                             6,      8,    10,  12,    16,   20,  24,   32};
static_assert(neatFactors.front() == PictureZoom::smallest && neatFactors.back() == PictureZoom::largest);

bool hasExtent(QSizeF size) {
    return size.width() > 0 && size.height() > 0;
}

double onWholePixel(double position) {
    return std::floor(position + 0.5);
}

}  // namespace

double PictureZoom::nextLarger(double factor) noexcept {
    constexpr double same = 1.001;
    const auto next = std::upper_bound(neatFactors.begin(), neatFactors.end(), factor * same);
    return next == neatFactors.end() ? factor : *next;
}

double PictureZoom::nextSmaller(double factor) noexcept {
    constexpr double same = 0.999;
    const auto next = std::lower_bound(neatFactors.begin(), neatFactors.end(), factor * same);
    return next == neatFactors.begin() ? factor : *std::prev(next);
}

void PictureZoom::setPicture(QSizeF size) noexcept {
    m_picture = hasExtent(size) ? size : QSizeF();
    keepInSight();
}

void PictureZoom::setView(QSizeF size) noexcept {
    m_view = hasExtent(size) ? size : QSizeF();
}

void PictureZoom::fit() noexcept {
    m_isFit = true;
    m_offset = QPointF();
}

void PictureZoom::zoomTo(double factor, QPointF anchor) noexcept {
    if (std::isnan(factor)) return;
    const double before = this->factor();
    const double after = std::clamp(factor, smallest, largest);
    const QPointF fromCentre = anchor - viewCentre();
    m_offset = fromCentre + (m_offset - fromCentre) * (after / before);
    m_factor = after;
    m_isFit = false;
    keepInSight();
}

void PictureZoom::pan(QPointF by) noexcept {
    if (m_isFit) return;
    m_offset += by;
    keepInSight();
}

double PictureZoom::factor() const noexcept {
    if (!m_isFit) return m_factor;
    if (!hasExtent(m_picture) || !hasExtent(m_view)) return 1;
    return std::min(m_view.width() / m_picture.width(), m_view.height() / m_picture.height());
}

QRectF PictureZoom::pictureRect() const noexcept {
    if (!hasExtent(m_picture)) return QRectF();
    const double scale = factor();
    const QSizeF size = m_picture * scale;
    QPointF corner = viewCentre() + m_offset - QPointF(size.width() / 2, size.height() / 2);
    if (scale >= 1) corner = QPointF(onWholePixel(corner.x()), onWholePixel(corner.y()));
    return QRectF(corner, size);
}

QPointF PictureZoom::viewCentre() const noexcept {
    return hasExtent(m_view) ? QPointF(m_view.width() / 2, m_view.height() / 2) : QPointF();
}

void PictureZoom::keepInSight() noexcept {
    if (m_isFit || !hasExtent(m_picture)) return;
    const double farX = m_picture.width() * m_factor / 2;
    const double farY = m_picture.height() * m_factor / 2;
    m_offset = QPointF(std::clamp(m_offset.x(), -farX, farX), std::clamp(m_offset.y(), -farY, farY));
}

}  // namespace qrtplay
