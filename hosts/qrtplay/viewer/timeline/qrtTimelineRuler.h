#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "viewer/playing/qrtFrameNumbering.h"
#include "viewer/timeline/qrtTimelineScale.h"

namespace qrtplay {

struct RulerTick {
    int64 frame = 0;
    QString label;  ///< empty for the small ones
};

/// Which ticks a ruler has, and what is written at them: steps of 1, 2, 5 or 10 frames and so on where frames are
/// counted, else of frames that divide a second, of seconds, of minutes and of hours.
class TimelineRuler final {
public:
    using TextWidth = std::function<double(QString const&)>;  ///< in pixels

    static constexpr double labelIndent = 4;  ///< from a tick to its label
    static constexpr double labelSpace = 10;  ///< at least, from a label to the next tick
    static constexpr double tickSpace = 6;    ///< at least, between two ticks

    TimelineRuler(FrameNumbering const& numbering, ExactTime const& clockStart, Numbering shown, bool dropFrame);

    /// Ticks in order, those just left of the view among them, as their labels may reach into it. No label, written to
    /// the right of its tick, reaches the next one.
    [[nodiscard]] std::vector<RulerTick> ticks(TimelineScale const& scale, TextWidth const& widthOf) const;

private:
    struct Step {
        int64 count = 1;
        bool isOfSeconds = false;
    };

    [[nodiscard]] std::vector<Step> steps() const;
    /// The fewest frames from one tick of a step to the next.
    [[nodiscard]] double gapOf(Step const& step) const;
    [[nodiscard]] bool divides(Step const& small, Step const& large) const;
    [[nodiscard]] Step labelStep(TimelineScale const& scale, TextWidth const& widthOf) const;
    [[nodiscard]] Step tickStep(Step const& labels, TimelineScale const& scale) const;
    void forEachTick(Step const& step, int64 first, int64 last,
                     std::function<void(int64 frame, int64 second)> const& visit) const;
    [[nodiscard]] QString label(int64 frame, int64 second, Step const& step) const;

    [[nodiscard]] int64 secondOf(int64 frame) const;        ///< the second, as it is counted, that a frame is in
    [[nodiscard]] int64 beginOfSecond(int64 second) const;  ///< the first frame of it

    const FrameNumbering m_numbering;
    const Numbering m_shown;
    const bool m_dropFrame;   // asked for, and had by the rate
    const int64 m_perSecond;  // frames, as they are counted
    const int64 m_dropped;    // numbers left out at the begin of most minutes
    const int64 m_start;      // the number of frame 0
};

}  // namespace qrtplay
