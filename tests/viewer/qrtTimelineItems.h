#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "timeline/qrtTimeline.h"

// Timelines as the window's views get them, of 24 frames a second.
namespace qrtplay {

inline constexpr Rational film(24, 1);

inline ExactTime at(int64 frame) {
    return ExactTime::ofFrame(frame, film);
}

inline TrackItem itemOf(TrackItem::Kind kind, std::string name, int64 first, int64 end) {
    TrackItem item;
    item.kind = kind;
    item.name = std::move(name);
    item.start = at(first);
    item.duration = at(end - first);
    return item;
}

/// `media`: the number of one of `timelineOf`.
inline TrackItem clipOf(std::string name, int64 first, int64 end, size_t media) {
    TrackItem item = itemOf(TrackItem::Kind::clip, std::move(name), first, end);
    item.media = media;
    return item;
}

/// With three media, of which the third is missing, a generator and two markers.
inline std::shared_ptr<Timeline const> timelineOf(std::vector<TrackView> tracks, int64 frames) {
    Timeline::Content content;
    content.rate = film;
    content.duration = at(frames);
    content.tracks = std::move(tracks);
    for (char const* path : {"/film/street.mov", "/film/roof.mov", "/film/lost.mov"}) {
        MediaReference media;
        media.kind = content.media.size() == 2 ? MediaReference::Kind::missing : MediaReference::Kind::file;
        media.path = path;
        content.media.push_back(media);
    }
    Generator bars;
    bars.name = "Bars";
    content.generators.push_back(bars);
    content.markers.push_back({"Look here", "RED", at(30), at(10)});
    content.markers.push_back({"", "GREEN", at(60), ExactTime()});
    return std::make_shared<Timeline const>(std::move(content));
}

}  // namespace qrtplay
