#pragma once

#include <QPainter>
#include <QRegion>
#include <memory>
#include <optional>
#include <vector>

#include "viewer/playing/qrtFrameNumbering.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/timeline/qrtTimelineColours.h"
#include "viewer/timeline/qrtTimelineLayout.h"
#include "viewer/timeline/qrtTimelineScale.h"
#include "viewer/timeline/qrtTimelineTracks.h"

namespace qrtplay {

/// All that a timeline shows but the playhead.
struct TimelineScene {
    TimelineTracks tracks;
    TimelineScale scale;
    TimelineLayout layout;
    TimelineColours colours;
    FrameNumbering numbering;
    Numbering shown = Numbering::timecode;
    bool dropFrame = false;
    std::optional<int64> inPoint;
    std::optional<int64> outPoint;
    std::vector<FrameSpan> rendered;
    std::vector<FrameSpan> decoded;
};

/// Paints a timeline.
class TimelinePainter final {
public:
    /// Both have to last longer than this.
    TimelinePainter(QPainter& painter, TimelineScene const& scene);

    /// Everything but the playhead.
    void paint();
    /// The part that changes while playing: the rows from the one cache bar to the other.
    void paintCacheBars();
    [[nodiscard]] static QRect cacheBarRows(TimelineScene const& scene);

    void paintPlayhead(int64 frame);
    /// What `paintPlayhead` touches.
    [[nodiscard]] static QRegion playheadRegion(TimelineScene const& scene, int64 frame, QFont const& font);
    /// The font for numbers and names, from the widget's.
    [[nodiscard]] static QFont smallFont(QFont font);

private:
    void paintRuler();
    void paintBar(QRect const& row, std::vector<FrameSpan> const& spans, QColor const& colour);
    void paintMarkers();
    void paintMarker(SpanOfFrames const& span, int nextColumn);
    void paintTracks();
    /// Everything outside the in and out points, as far as it lies in `rows`.
    void paintDimming(QRect const& rows);
    void paintRangePoints();
    void paintThumbs();

    QPainter& m_painter;
    TimelineScene const& m_scene;
};

}  // namespace qrtplay
