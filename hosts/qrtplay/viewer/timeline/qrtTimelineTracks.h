#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "base/qrtKit.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// Frames in which something of a list is on show: [first, end).
struct SpanOfFrames {
    int64 first = 0;
    int64 end = 0;
    size_t index = 0;  ///< in the list
};

/// A track in frames of the output. Spans are in order, inside the timeline, and those of one list do not overlap.
struct TrackOfFrames {
    TrackView const* view = nullptr;  ///< the timeline's
    QString name;
    std::vector<SpanOfFrames> clips;  ///< and nested stacks; what is between them is empty
    std::vector<SpanOfFrames> transitions;
};

/// What the tracks and markers of a timeline are in frames, found quickly however many there are.
class TimelineTracks final {
public:
    TimelineTracks() = default;
    TimelineTracks(std::shared_ptr<Timeline const> timeline, Rational const& rate, int64 frameCount);

    /// As they are shown from the top down: video, the uppermost layer first, then sound.
    [[nodiscard]] std::vector<TrackOfFrames> const& tracks() const noexcept { return m_tracks; }
    [[nodiscard]] size_t videoTrackCount() const noexcept { return m_videoTrackCount; }
    /// In order of their begins; they may overlap. A marker without length has [first, first).
    [[nodiscard]] std::vector<SpanOfFrames> const& markers() const noexcept { return m_markers; }
    [[nodiscard]] std::shared_ptr<Timeline const> const& timeline() const noexcept { return m_timeline; }

    /// The first span that ends after `frame`.
    [[nodiscard]] static std::vector<SpanOfFrames>::const_iterator firstFrom(std::vector<SpanOfFrames> const& spans,
                                                                             int64 frame);
    /// The span that a frame is in, or null.
    [[nodiscard]] static SpanOfFrames const* at(std::vector<SpanOfFrames> const& spans, int64 frame);

private:
    void addTrack(TrackView const& view, QString const& name, Rational const& rate, int64 frameCount);

    std::shared_ptr<Timeline const> m_timeline;
    std::vector<TrackOfFrames> m_tracks;
    size_t m_videoTrackCount = 0;
    std::vector<SpanOfFrames> m_markers;
};

}  // namespace qrtplay
