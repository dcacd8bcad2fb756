#pragma once

#include <QPainter>
#include <QRect>

#include "viewer/timeline/qrtTimelineColours.h"
#include "viewer/timeline/qrtTimelineScale.h"
#include "viewer/timeline/qrtTimelineTracks.h"

namespace qrtplay {

/// Paints the clips and transitions of tracks, as far as they are to be seen. What is too narrow to be told apart is
/// painted as one, so that the work grows with the width of the view and not with the number of clips.
class TrackPainter final {
public:
    /// All of them have to last longer than this. The painter's font is the one to write with.
    TrackPainter(QPainter& painter, TimelineScale const& scale, TimelineColours const& colours,
                 TimelineTracks const& tracks);

    /// `row`: where the track lies, from the left to the right edge of the view.
    void paint(TrackOfFrames const& track, QRect const& row);

    /// What was drawn so far: clips, transitions, and clips drawn as one.
    [[nodiscard]] size_t paintedItems() const noexcept { return m_paintedItems; }

private:
    void paintClips(TrackOfFrames const& track, QRect const& row);
    void paintTransitions(TrackOfFrames const& track, QRect const& row);
    /// Paints the clips from `clip` on that are too narrow, and returns the first one that is not.
    std::vector<SpanOfFrames>::const_iterator paintCrowd(std::vector<SpanOfFrames> const& clips,
                                                         std::vector<SpanOfFrames>::const_iterator clip,
                                                         QRect const& row);
    void paintClip(TrackItem const& item, QRect const& rect);
    void paintClipName(TrackItem const& item, ClipLook const& look, QRect const& rect);
    void paintTransition(QRect const& rect);
    void paintTrackName(TrackOfFrames const& track, QRect const& row);
    /// Where the name of the track is written; empty where there is no room for it.
    [[nodiscard]] QRect trackNameRect(TrackOfFrames const& track, QRect const& row) const;
    [[nodiscard]] int widthOf(SpanOfFrames const& span) const;
    [[nodiscard]] QRect rectOf(SpanOfFrames const& span, QRect const& row) const;

    QPainter& m_painter;
    TimelineScale const& m_scale;
    TimelineColours const& m_colours;
    TimelineTracks const& m_tracks;
    const int64 m_firstFrame;  // to be seen
    const int64 m_lastFrame;
    QRect m_trackName;  // of the track under way
    size_t m_paintedItems = 0;
};

}  // namespace qrtplay
