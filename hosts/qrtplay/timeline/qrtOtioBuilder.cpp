#include "timeline/qrtOtioBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qrtplay {

namespace {

/// From a node's own time to its parent's. What is played backwards begins where it ended.
void moveOut(TimelineNode const& node, ExactTime& start, ExactTime& duration) {
    duration = node.parentLengthOf(duration);
    start = node.parentTimeOf(start);
    if (node.speed < ExactTime()) start = start - duration;
}

void moveOut(TimelineNode const& node, TrackView& view) {
    for (TrackItem& item : view.items)
        moveOut(node, item.start, item.duration);
}

TrackItem itemOf(TimelineNode const& node, std::string name, ExactTime const& start) {
    TrackItem item;
    item.name = std::move(name);
    item.start = start;
    item.duration = node.duration;
    switch (node.kind) {
        case TimelineNode::Kind::gap: break;
        case TimelineNode::Kind::media:
            item.kind = TrackItem::Kind::clip;
            item.media = node.source;
            break;
        case TimelineNode::Kind::generator:
            item.kind = TrackItem::Kind::clip;
            item.generator = node.source;
            break;
        case TimelineNode::Kind::stack:
        case TimelineNode::Kind::track: item.kind = TrackItem::Kind::stack; break;
    }
    return item;
}

/// Tracks of other kinds, such as subtitles, are left out. Without a kind a track is one of video.
bool isKnownTrackKind(std::string const& kind) {
    return kind.empty() || kind == "Video" || kind == "Audio";
}

}  // namespace

TimelineNode OtioBuilder::build(OtioObject const& timeline, std::vector<TrackView>* views) {
    rapidjson::Value const* tracks = timeline.findObject("tracks");
    if (!tracks) timeline.fail("tracks is missing");
    const OtioObject root(*tracks, timeline, "tracks");
    if (!root.is("Stack")) root.fail("is a " + oneLine(root.schema()) + ", not a Stack");
    m_run.countItem(root, 1);
    const size_t firstMarker = m_run.content.markers.size();
    TimelineNode node = stack(root, Place(), views);
    addMarkers(root, ExactTime());
    moveMarkersOut(firstMarker, node, false);
    return node;
}

TimelineNode OtioBuilder::item(OtioObject const& object, Place place, TrackView* view) {
    m_run.countItem(object, place.depth);
    place.isEnabled = object.flag("enabled", true) && place.isEnabled;
    const size_t firstMarker = m_run.content.markers.size();
    TimelineNode node;
    if (object.is("Clip")) {
        node = clip(object, place);
    } else if (object.is("Track")) {
        node = track(object, place, view);
    } else if (object.is("Stack")) {
        node = stack(object, place, nullptr);
    } else {
        if (!object.is("Gap"))
            m_run.warnOnce(object, "'" + oneLine(object.schema()) + "' is not known: a gap takes its place");
        node = gap(object);
    }
    if (!object.is("Clip")) addMarkers(object, ExactTime());
    moveMarkersOut(firstMarker, node, object.find("source_range") != nullptr);
    if (!place.isEnabled) {
        TimelineNode nothing;
        nothing.duration = node.duration;
        return nothing;
    }
    return node;
}

TimelineNode OtioBuilder::gap(OtioObject const& object) {
    TimelineNode node;
    if (const std::optional<OtioRange> range = readRange(object, "source_range")) {
        node.start = range->start;
        node.duration = range->duration;
    } else if (object.is("Gap")) {
        if (const std::optional<OtioTime> duration = readLength(object, "duration")) node.duration = duration->time;
    }
    return node;
}

void OtioBuilder::setLength(TimelineNode& composition, OtioObject const& object) const {
    composition.duration = composition.contentLength();
    if (const std::optional<OtioRange> range = readRange(object, "source_range")) {
        composition.start = range->start;
        composition.duration = range->duration;
    }
}

void OtioBuilder::append(TimelineNode& parent, OtioObject const& object, Place const& place, TrackView* view) {
    const size_t firstMarker = m_run.content.markers.size();
    TimelineNode child = item(object, place, view);
    parent.append(std::move(child));
    const ExactTime end =
        (parent.starts.empty() ? ExactTime() : parent.starts.back()) + parent.children.back().duration;
    // So that no sum of lengths leaves the numbers in which times are exact.
    if (end > ExactTime(1'000'000'000'000, 1)) object.fail("ends after more than 30000 years");
    if (parent.kind != TimelineNode::Kind::track) return;
    for (size_t i = firstMarker; i < m_run.content.markers.size(); ++i) {
        Marker& marker = m_run.content.markers[i];
        marker.start = marker.start + parent.starts.back();
    }
}

TimelineNode OtioBuilder::stack(OtioObject const& object, Place const& place, std::vector<TrackView>* views) {
    TimelineNode node;
    node.kind = TimelineNode::Kind::stack;
    node.speed = speedOf(object);
    Place inside = place;
    ++inside.depth;
    object.forEach("children", [&](OtioObject const& child) {
        if (!views) return append(node, child, inside);
        TrackView view;
        view.name = child.name();
        append(node, child, inside, &view);
        if (!child.is("Track")) view.items.push_back(itemOf(node.children.back(), child.name(), ExactTime()));
        if (isKnownTrackKind(child.text("kind"))) views->push_back(std::move(view));
    });
    setLength(node, object);
    if (!views) return node;
    for (TrackView& view : *views)
        moveOut(node, view);
    const auto isVideo = [](TrackView const& view) { return view.kind == TrackView::Kind::video; };
    std::stable_partition(views->begin(), views->end(), isVideo);
    return node;
}

TimelineNode OtioBuilder::track(OtioObject const& object, Place place, TrackView* view) {
    const std::string kind = object.text("kind");
    const bool isAudio = kind == "Audio";
    if (!isKnownTrackKind(kind)) {
        m_run.warnOnce(object, "tracks of kind '" + oneLine(kind) + "' are left out");
        place.isEnabled = false;
    }
    place.medium = isAudio ? Medium::audio : Medium::video;
    ++place.depth;
    TimelineNode node;
    node.kind = TimelineNode::Kind::track;
    node.speed = speedOf(object);

    std::vector<std::pair<rapidjson::SizeType, size_t>> transitions;  // place in the list, and the child at the cut
    rapidjson::Value const* children = object.findList("children");
    for (rapidjson::SizeType i = 0; children && i < children->Size(); ++i) {
        const OtioObject child((*children)[i], object, "children", i);
        if (child.is("Transition")) {
            transitions.emplace_back(i, node.children.size());
            continue;
        }
        append(node, child, place);
        if (view) view->items.push_back(itemOf(node.children.back(), child.name(), node.starts.back()));
    }
    for (const auto& [index, cut] : transitions)
        addDissolve(node, OtioObject((*children)[index], object, "children", index), cut, view);
    setLength(node, object);
    (isAudio ? node.isSeen : node.isHeard) = false;
    if (view) {
        view->kind = isAudio ? TrackView::Kind::audio : TrackView::Kind::video;
        const auto isEarlier = [](TrackItem const& a, TrackItem const& b) { return a.start < b.start; };
        std::stable_sort(view->items.begin(), view->items.end(), isEarlier);
        moveOut(node, *view);
    }
    if (!place.isEnabled) node.isSeen = node.isHeard = false;
    return node;
}

void OtioBuilder::addDissolve(TimelineNode& track, OtioObject const& transition, size_t cut, TrackView* view) {
    m_run.countItem(transition, 1);
    const std::string type = transition.text("transition_type");
    const std::optional<OtioTime> wantedBefore = readLength(transition, "in_offset");
    const std::optional<OtioTime> wantedAfter = readLength(transition, "out_offset");
    if (type != "SMPTE_Dissolve")
        return m_run.warnOnce(transition,
                              "transition '" + oneLine(type) + "' is not known: a plain cut takes its place");
    if (!track.dissolves.empty() && track.dissolves.back().incoming == cut)
        return m_run.warn(transition, "is the second transition at one cut, and left out");

    const ExactTime at = cut < track.starts.size() ? track.starts[cut] : track.contentLength();
    ExactTime earliest = cut > 0 ? track.starts[cut - 1] : at;
    if (!track.dissolves.empty()) {
        TimelineNode::Dissolve const& last = track.dissolves.back();
        earliest = std::max(earliest, last.begin + last.length);
    }
    const ExactTime latest = cut < track.children.size() ? at + track.children[cut].duration : at;
    const ExactTime wantedBegin = wantedBefore ? at - wantedBefore->time : at;
    const ExactTime wantedEnd = wantedAfter ? at + wantedAfter->time : at;
    const ExactTime begin = std::max(wantedBegin, earliest);
    const ExactTime end = std::min(wantedEnd, latest);
    if (begin != wantedBegin || end != wantedEnd)
        m_run.warn(transition, "is longer than what it joins leaves, and cut short");
    if (begin >= end) return;
    track.dissolves.push_back({cut, begin, end - begin});
    if (!view) return;
    TrackItem item;
    item.kind = TrackItem::Kind::transition;
    item.name = transition.name().empty() ? type : transition.name();
    item.start = begin;
    item.duration = end - begin;
    view->items.push_back(std::move(item));
}

ExactTime OtioBuilder::speedOf(OtioObject const& object) {
    ExactTime speed(1, 1);
    object.forEach("effects", [&](OtioObject const& effect) {
        if (!effect.flag("enabled", true) || effect.is("TimeTransform")) return;
        if (effect.is("FreezeFrame")) {
            speed = ExactTime();
        } else if (effect.is("LinearTimeWarp")) {
            const double factor = effect.number("time_scalar").value_or(1);
            if (std::abs(factor) > 1e6) effect.fail("time_scalar is beyond a million");
            speed = speed * otioFactor(factor);
        } else {
            std::string name = effect.text("effect_name");
            if (name.empty()) name = effect.schema();
            m_run.warnOnce(effect, "effect '" + oneLine(name) + "' is not known, and left out");
        }
    });
    return speed;
}

void OtioBuilder::addMarkers(OtioObject const& object, ExactTime const& origin) {
    object.forEach("markers", [&](OtioObject const& marker) {
        m_run.countItem(marker, 1);
        const std::optional<OtioRange> range = readRange(marker, "marked_range");
        if (!range) marker.fail("marked_range is missing");
        m_run.content.markers.push_back({marker.name(), marker.text("color"), range->start - origin, range->duration});
    });
}

void OtioBuilder::moveMarkersOut(size_t first, TimelineNode const& node, bool isTrimmed) {
    auto& markers = m_run.content.markers;
    const auto begin = markers.begin() + static_cast<std::ptrdiff_t>(first);
    for (auto marker = begin; marker != markers.end(); ++marker)
        moveOut(node, marker->start, marker->duration);
    if (!isTrimmed) return;
    // On the timeline these would stand on something else.
    const auto isCutOff = [&](Marker const& marker) {
        return marker.start < ExactTime() || marker.start >= node.duration;
    };
    markers.erase(std::remove_if(begin, markers.end(), isCutOff), markers.end());
}

}  // namespace qrtplay
