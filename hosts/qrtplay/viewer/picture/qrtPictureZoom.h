#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace qrtplay {

/// Where a picture lies in its view, all in pixels of the device, origin in the top left corner.
class PictureZoom final {
public:
    static constexpr double smallest = 1.0 / 16;
    static constexpr double largest = 32;

    void setPicture(QSizeF size) noexcept;
    void setView(QSizeF size) noexcept;

    /// Follows the size of the view, picture in the middle.
    void fit() noexcept;
    /// Shows the picture `factor` times as large as it is (clamped); what is under `anchor`, a point of the view, stays
    /// as far as the limit of `pan` allows.
    void zoomTo(double factor, QPointF anchor) noexcept;
    /// Moves the picture, unless it is fitted; no further than that the middle of the view lies on it, so that every
    /// part of it can be looked at and none gets lost.
    void pan(QPointF by) noexcept;

    /// The neat factor after or before this one, about a quarter away; the same one where there is no further.
    [[nodiscard]] static double nextLarger(double factor) noexcept;
    [[nodiscard]] static double nextSmaller(double factor) noexcept;

    [[nodiscard]] bool isFit() const noexcept { return m_isFit; }
    [[nodiscard]] double factor() const noexcept;
    /// Its corner is on whole pixels when the factor is 1 or more.
    [[nodiscard]] QRectF pictureRect() const noexcept;
    [[nodiscard]] QPointF viewCentre() const noexcept;

private:
    void keepInSight() noexcept;

    QSizeF m_picture;
    QSizeF m_view;
    bool m_isFit = true;
    double m_factor = 1;  // when not fitted
    QPointF m_offset;     // of the picture's middle from the view's, when not fitted
};

}  // namespace qrtplay
