#pragma once

#include <QColor>
#include <QPalette>
#include <string>

#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What a clip looks like.
struct ClipLook {
    QColor fill;
    QColor edge;
    QColor text;
    Qt::BrushStyle pattern = Qt::SolidPattern;  ///< drawn over the fill in the colour of the edge; solid for none
    bool isNested = false;                      ///< a stack of clips
};

/// The colours of a timeline, to go with a light or a dark palette.
class TimelineColours final {
public:
    TimelineColours() = default;
    explicit TimelineColours(QPalette const& palette);

    QColor ground;  ///< behind all
    QColor ruler;
    QColor line;  ///< of small ticks and edges
    QColor tick;  ///< of labelled ticks
    QColor label;
    QColor track;  ///< where nothing is on it
    QColor bar;    ///< of a cache, where it holds nothing
    QColor rendered;
    QColor decoded;
    QColor dim;    ///< over what is not played; translucent
    QColor range;  ///< in and out points
    QColor playhead;
    QColor playheadText;
    QColor playheadFrame;  ///< over the frame on show; translucent
    QColor transition;     ///< over the clips that turn into each other; translucent
    QColor transitionEdge;
    QColor crowd;  ///< clips too narrow to tell apart
    QColor thumb;  ///< where a scrolled view is in the whole; translucent

    /// The same media has the same colour in every timeline.
    [[nodiscard]] ClipLook clip(TrackItem const& item, Timeline const& timeline) const;
    /// Of a marker, by the name that files have for it.
    [[nodiscard]] QColor marker(std::string const& name) const;

private:
    [[nodiscard]] ClipLook mediaLook(std::string const& media) const;
    [[nodiscard]] ClipLook look(double hue, double saturation, double lighter = 0) const;

    bool m_isDark = false;
};

}  // namespace qrtplay
