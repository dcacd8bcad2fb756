#pragma once

#include <optional>
#include <string>
#include <vector>

#include "timeline/qrtOtioObject.h"
#include "timeline/qrtOtioRun.h"
#include "timeline/qrtOtioSource.h"
#include "timeline/qrtOtioTime.h"
#include "timeline/qrtTimelineNode.h"

namespace qrtplay {

/// Reads another file that a clip refers to; see `readOtio`.
TimelineNode readNestedOtio(OtioObject const& clip, std::string const& path, bool isAudible, OtioRun& run);

/// Builds the nodes of one file's timeline. Whatever is wrong throws an `OtioFault`.
///
/// Markers are collected on the way: as long as a node is built, those in it are on its own time, and then on its
/// parent's.
class OtioBuilder final {
public:
    /// `folder`: where the file lies. `isAudible`: whether it stands for sound, and tells nothing about video rates.
    OtioBuilder(std::string const& folder, bool isAudible, OtioRun& run)
        : m_folder(folder), m_isAudible(isAudible), m_run(run) {}

    /// The nodes below "tracks" of a timeline. `views`: where to describe the tracks; may be null.
    [[nodiscard]] TimelineNode build(OtioObject const& timeline, std::vector<TrackView>* views);

private:
    enum class Medium { any, video, audio };  // of the track around something

    struct Place {
        Medium medium = Medium::any;
        bool isEnabled = true;
        size_t depth = 1;
    };

    [[nodiscard]] TimelineNode item(OtioObject const& object, Place place, TrackView* view = nullptr);
    [[nodiscard]] TimelineNode gap(OtioObject const& object);
    [[nodiscard]] TimelineNode stack(OtioObject const& object, Place const& place, std::vector<TrackView>* views);
    [[nodiscard]] TimelineNode track(OtioObject const& object, Place place, TrackView* view);
    void append(TimelineNode& parent, OtioObject const& object, Place const& place, TrackView* view = nullptr);
    void setLength(TimelineNode& composition, OtioObject const& object) const;

    [[nodiscard]] TimelineNode clip(OtioObject const& object, Place const& place);
    [[nodiscard]] OtioRange rangeOf(OtioObject const& clip, std::optional<OtioRange> const& wanted, OtioSource& source,
                                    TimelineNode const& node);
    void noteRate(std::optional<OtioRange> const& wanted, OtioSource const& source);
    void connect(TimelineNode& node, OtioSource const& source, OtioRange const& range, Place const& place);

    void addDissolve(TimelineNode& track, OtioObject const& transition, size_t cut, TrackView* view);
    [[nodiscard]] ExactTime speedOf(OtioObject const& object);
    void addMarkers(OtioObject const& object, ExactTime const& origin);
    void moveMarkersOut(size_t first, TimelineNode const& node, bool isTrimmed);

    std::string const& m_folder;
    const bool m_isAudible;
    OtioRun& m_run;
};

}  // namespace qrtplay
