#pragma once

#include <QPixmap>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "base/qrtKit.h"
#include "timeline/qrtTimeline.h"
#include "viewer/playing/qrtFrameNumbering.h"
#include "viewer/playing/qrtPlayback.h"

namespace qrtplay {

struct TimelineScene;

/// The timeline of what is played: ruler, cache bars, markers, tracks with their clips and transitions, in and out
/// points, and the playhead, which the mouse moves.
///
/// Zoomed with the wheel and control around the pointer, scrolled with the wheel: through the tracks where they do not
/// fit, else sideways, as always with shift. Fits its width at first. While the mouse is down the playhead follows it
/// alone.
/// Threading: the GUI thread.
class TimelineView final : public QWidget {
    Q_OBJECT

public:
    explicit TimelineView(QWidget* parent = nullptr);
    ~TimelineView() override;

    /// `rate`: output frames per second, in which frames are counted here. Null for no timeline.
    void setTimeline(std::shared_ptr<Timeline const> timeline, Rational const& rate, int64 frameCount);
    void setFrame(int64 frame);
    void setRange(std::optional<int64> inPoint, std::optional<int64> outPoint);
    void setNumbering(Numbering numbering, bool dropFrame);
    /// What the player holds rendered and what the graph engine holds decoded.
    void setCached(std::vector<FrameSpan> rendered, std::vector<FrameSpan> decoded);
    [[nodiscard]] std::vector<FrameSpan> const& rendered() const noexcept;
    [[nodiscard]] std::vector<FrameSpan> const& decoded() const noexcept;

    /// The frame under a horizontal position of the widget, clamped into the timeline; and where a frame begins.
    [[nodiscard]] int64 frameAt(double x) const;
    [[nodiscard]] double positionOf(int64 frame) const;
    /// For tests and tool tips, a line each: the marker; or the track, the clip, transition or nested timeline, its
    /// span and its media under a point. Empty where there is none.
    [[nodiscard]] QString textAt(QPoint const& point) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

public slots:
    void zoomIn();
    void zoomOut();
    void zoomToFit();

signals:
    void scrubbed(qrtplay::int64 frame);  ///< the mouse went down on a frame, or is down and over another one
    void scrubEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;  // tool tips

    void changeEvent(QEvent* event) override;

private:
    /// A widget that was never shown hears of its size only then.
    void takeSize() const;
    /// Forgets what was painted.
    void invalidate();
    /// As `invalidate`, of the cache bars alone.
    void invalidateCacheBars();
    void moveTo(int64 frame);
    [[nodiscard]] QRegion playheadRegion() const;
    void scrubTo(double x);
    void endScrub();
    void zoom(double factor, double anchor);
    void zoomAroundPlayhead(double factor);
    void scroll(double right, double down);
    /// Brings `m_painted` up to date, for a device of that many pixels to a pixel.
    void repaintStill(double pixelRatio);
    [[nodiscard]] QString markerTextAt(QPoint const& point) const;
    [[nodiscard]] QString spanText(int64 first, int64 end) const;

    const std::unique_ptr<TimelineScene> m_scene;
    int64 m_frame = 0;
    std::optional<int64> m_scrubFrame;  // told last, while the mouse is down
    QPixmap m_painted;                  // all but the playhead
    bool m_isStale = true;
    bool m_areCacheBarsStale = false;
};

}  // namespace qrtplay
