#pragma once

#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// One of the things that a timeline is built from.
///
/// It stands on its parent's time, on which it lasts for `duration`, and has a time of its own, at which its children
/// stand or the pictures of its source are counted. Its own time is `start` when it begins and passes `speed` times as
/// fast.
struct TimelineNode {
    enum class Kind {
        gap,
        media,      ///< `source` is an index into `Timeline::media()`
        generator,  ///< `source` is an index into `Timeline::generators()`
        stack,      ///< all children begin at 0, the first one is at the bottom
        track,      ///< the children follow each other from 0 on
    };

    /// Where one child of a track turns into the next.
    struct Dissolve {
        size_t incoming = 0;  ///< the child that begins at the cut; the number of children at the track's end
        ExactTime begin;      ///< on the track's own time
        ExactTime length;     ///< not longer than the two children leave: it never reaches a third one

        /// How much of the incoming child there is at a moment of the track's own time: 0 to 1 while it is under way.
        [[nodiscard]] double mixAt(ExactTime const& time) const noexcept;
    };

    Kind kind = Kind::gap;
    bool isSeen = false;   ///< whether it or anything in it has pictures; ...
    bool isHeard = false;  ///< ... sound: a video track masks the sound of what is in it, an audio track the pictures
    ExactTime duration;
    ExactTime start;
    ExactTime speed{1, 1};  ///< negative: as if played forward, then shown in reverse order. 0: the start stands still
    size_t source = 0;
    std::vector<TimelineNode> children;
    std::vector<ExactTime> starts;    ///< of a track's children, on its own time
    std::vector<Dissolve> dissolves;  ///< of a track, in order; they do not overlap

    /// Adds a child, to a track behind the last one. What is seen and heard of it is seen and heard of this.
    void append(TimelineNode child);
    /// How long the children last altogether, on the node's own time.
    [[nodiscard]] ExactTime contentLength() const noexcept;

    /// The node's own time while its parent shows `time` (from the node's begin on) for as long as `frame`.
    [[nodiscard]] ExactTime ownTimeAt(ExactTime const& time, ExactTime const& frame) const noexcept;
    /// The reverse, of a moment: from the node's begin on, on the parent's time.
    [[nodiscard]] ExactTime parentTimeOf(ExactTime const& ownTime) const noexcept;
    /// How long something of the parent's time lasts on the node's own.
    [[nodiscard]] ExactTime ownLengthOf(ExactTime const& length) const noexcept;
    /// The other way round.
    [[nodiscard]] ExactTime parentLengthOf(ExactTime const& ownLength) const noexcept;

    /// The child of a track that is on at the track's own `time`, the first or last one outside. There is at least one.
    [[nodiscard]] size_t childAt(ExactTime const& time) const noexcept;
    /// The dissolve of a track that is under way at its own `time`, or null.
    [[nodiscard]] Dissolve const* dissolveAt(ExactTime const& time) const noexcept;
    /// The dissolve of a track at the begin of a child, or null.
    [[nodiscard]] Dissolve const* dissolveInto(size_t child) const noexcept;
};

}  // namespace qrtplay
