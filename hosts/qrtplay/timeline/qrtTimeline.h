#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"
#include "timeline/qrtFramePlan.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// Pictures that the host makes itself.
struct Generator {
    enum class Kind { solid_colour, smpte_bars, counting_leader, title };

    Kind kind = Kind::solid_colour;
    std::string id;  ///< differs from that of every other generator of the timeline, and never changes
    std::string name;
    std::string text;                        ///< of a title
    std::vector<double> colour{0, 0, 0, 1};  ///< red, green, blue, alpha: 0 to 1, not premultiplied
    Rational rate{24, 1};                    ///< in which its frames are counted
    int64 frameCount = 0;                    ///< a leader counts down to its end

    [[nodiscard]] bool operator==(Generator const&) const noexcept = default;
};

/// A note at a place of the timeline.
struct Marker {
    std::string name;
    std::string colour;  ///< as the file names it, such as "RED"; may be empty
    ExactTime start;     ///< from the beginning of the timeline on
    ExactTime duration;
};

/// What stands on a track, for people to look at.
struct TrackItem {
    enum class Kind { clip, gap, transition, stack };

    Kind kind = Kind::gap;
    std::string name;
    ExactTime start;  ///< from the beginning of the timeline on
    ExactTime duration;
    std::optional<size_t> media;      ///< index into `Timeline::media()`
    std::optional<size_t> generator;  ///< index into `Timeline::generators()`
};
struct TrackView {
    enum class Kind { video, audio };

    Kind kind = Kind::video;
    std::string name;
    std::vector<TrackItem> items;  ///< in order; transitions after the item that they begin in
};

/// One of the things that a timeline is built from: see qrtTimelineNode.h.
struct TimelineNode;

/// A timeline, ready to be asked what is seen and heard when. It begins at time 0.
///
/// Threading: constant after it was built; any thread may read it.
class Timeline final {
public:
    struct Content {
        std::string name;
        Rational rate{24, 1};
        ExactTime duration;
        /// What a clock in the picture shows at time 0.
        ExactTime clockStart;
        std::vector<MediaReference> media;
        std::vector<Generator> generators;
        std::vector<Marker> markers;
        std::vector<TrackView> tracks;      ///< the outermost ones, video from the bottom up, then audio
        std::vector<std::string> warnings;  ///< one line each: what was left out, and where
        std::shared_ptr<TimelineNode const> root;
        /// What has to last as long as the timeline, such as the folder that its media were unpacked into; may be null.
        std::shared_ptr<void const> companion;
    };

    explicit Timeline(Content content);
    ~Timeline();

    [[nodiscard]] std::string const& name() const noexcept { return m_content.name; }
    [[nodiscard]] Rational const& rate() const noexcept { return m_content.rate; }
    /// At the timeline's own rate: a frame that has begun counts.
    [[nodiscard]] int64 frameCount() const noexcept;
    [[nodiscard]] ExactTime const& duration() const noexcept { return m_content.duration; }
    [[nodiscard]] ExactTime const& clockStart() const noexcept { return m_content.clockStart; }
    [[nodiscard]] std::vector<MediaReference> const& media() const noexcept { return m_content.media; }
    [[nodiscard]] std::vector<Generator> const& generators() const noexcept { return m_content.generators; }
    [[nodiscard]] std::vector<Marker> const& markers() const noexcept { return m_content.markers; }
    [[nodiscard]] std::vector<TrackView> const& tracks() const noexcept { return m_content.tracks; }
    [[nodiscard]] std::vector<std::string> const& warnings() const noexcept { return m_content.warnings; }

    /// What is seen while output frame `frame` of `outputRate` frames per second is on show; `Kind::nothing` outside.
    [[nodiscard]] FrameNode pictureAt(int64 frame, Rational const& outputRate) const;
    /// What is heard from output sample `firstSample` on, for `sampleCount` samples.
    [[nodiscard]] std::vector<SoundSpan> soundAt(int64 firstSample, int64 sampleCount, int32 sampleRate) const;

private:
    const Content m_content;
};

}  // namespace qrtplay
