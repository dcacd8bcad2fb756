#pragma once

#include "base/qrtKit.h"

namespace qrtplay {

/// Where frames lie across a timeline's width, in pixels of the widget from its left edge on.
///
/// A column of pixels belongs to the last frame that begins in it or before it, so that a frame as wide as a pixel or
/// wider always has a column of its own.
class TimelineScale final {
public:
    static constexpr double margin = 8;        ///< free on both sides of the whole timeline
    static constexpr double widestFrame = 64;  ///< more only where the whole timeline fits

    /// Shows all of it.
    void setFrameCount(int64 frameCount) noexcept;
    /// Shows all of it still, or from the same place on.
    void setWidth(double width) noexcept;

    void fit() noexcept;
    /// `factor` times as wide, within the limits; what is under `anchor` stays there where the ends allow it.
    void zoomBy(double factor, double anchor) noexcept;
    /// Positive shows what lies further right.
    void scrollBy(double pixels) noexcept;
    /// Pages on when the frame is out of sight. Returns whether it was.
    bool bringIntoView(int64 frame) noexcept;

    [[nodiscard]] bool isFit() const noexcept { return m_isFit; }
    [[nodiscard]] int64 frameCount() const noexcept { return m_frameCount; }
    [[nodiscard]] double width() const noexcept { return m_width; }
    [[nodiscard]] double pixelsPerFrame() const noexcept { return m_pixelsPerFrame; }
    /// What could be scrolled through, with its margins, and how much of it is hidden on the left.
    [[nodiscard]] double contentWidth() const noexcept;
    [[nodiscard]] double offset() const noexcept { return m_offset; }

    /// Where a frame begins.
    [[nodiscard]] double positionOf(int64 frame) const noexcept;
    /// The column that a frame begins in; cut off far outside the widget.
    [[nodiscard]] int columnOf(int64 frame) const noexcept;
    /// The frame that a position belongs to, clamped; 0 when there are none.
    [[nodiscard]] int64 frameAt(double x) const noexcept;

private:
    [[nodiscard]] double fittingPixelsPerFrame() const noexcept;
    [[nodiscard]] bool beginsBefore(int64 frame, double x) const noexcept;
    void setOffset(double offset) noexcept;

    int64 m_frameCount = 0;
    double m_width = 0;
    bool m_isFit = true;
    double m_pixelsPerFrame = 1;
    double m_offset = 0;
};

}  // namespace qrtplay
