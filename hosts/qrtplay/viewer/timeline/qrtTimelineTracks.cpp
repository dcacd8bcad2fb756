#include "viewer/timeline/qrtTimelineTracks.h"

#include <algorithm>

namespace qrtplay {

namespace {

bool spanBeginsEarlier(SpanOfFrames const& a, SpanOfFrames const& b) {
    return a.first < b.first;
}

/// Orders the spans; where rounding or a played-backwards track makes two overlap, the earlier one ends sooner.
void putSpansInOrder(std::vector<SpanOfFrames>& spans) {
    std::stable_sort(spans.begin(), spans.end(), spanBeginsEarlier);
    for (size_t i = 1; i < spans.size(); ++i)
        spans[i - 1].end = std::min(spans[i - 1].end, spans[i].first);
    spans.erase(std::remove_if(spans.begin(), spans.end(), [](auto const& span) { return span.first >= span.end; }),
                spans.end());
}

}  // namespace

TimelineTracks::TimelineTracks(std::shared_ptr<Timeline const> timeline, Rational const& rate, int64 frameCount)
    : m_timeline(std::move(timeline)) {
    if (!m_timeline) return;
    const auto isVideo = [](TrackView const& view) { return view.kind == TrackView::Kind::video; };
    std::vector<TrackView> const& views = m_timeline->tracks();
    m_videoTrackCount = static_cast<size_t>(std::count_if(views.begin(), views.end(), isVideo));
    size_t number = m_videoTrackCount;
    for (auto view = views.rbegin(); view != views.rend(); ++view) {
        if (isVideo(*view)) addTrack(*view, QString("V%1").arg(number--), rate, frameCount);
    }
    for (TrackView const& view : views) {
        if (!isVideo(view)) addTrack(view, QString("A%1").arg(++number), rate, frameCount);
    }
    std::vector<Marker> const& markers = m_timeline->markers();
    for (size_t i = 0; i < markers.size(); ++i) {
        const int64 first = markers[i].start.nearestFrame(rate);
        if (first < 0 || first >= frameCount) continue;
        const int64 end = std::min(frameCount, (markers[i].start + markers[i].duration).nearestFrame(rate));
        m_markers.push_back({first, std::max(first, end), i});
    }
    std::stable_sort(m_markers.begin(), m_markers.end(), spanBeginsEarlier);
}

void TimelineTracks::addTrack(TrackView const& view, QString const& name, Rational const& rate, int64 frameCount) {
    TrackOfFrames track;
    track.view = &view;
    track.name = view.name.empty() ? name : QString::fromStdString(view.name).simplified();
    for (size_t i = 0; i < view.items.size(); ++i) {
        TrackItem const& item = view.items[i];
        if (item.kind == TrackItem::Kind::gap) continue;
        const int64 first = std::max<int64>(0, item.start.frameFrom(rate));
        const int64 end = std::min(frameCount, (item.start + item.duration).frameFrom(rate));
        if (first >= end) continue;
        const bool isTransition = item.kind == TrackItem::Kind::transition;
        (isTransition ? track.transitions : track.clips).push_back({first, end, i});
    }
    putSpansInOrder(track.clips);
    putSpansInOrder(track.transitions);
    m_tracks.push_back(std::move(track));
}

std::vector<SpanOfFrames>::const_iterator TimelineTracks::firstFrom(std::vector<SpanOfFrames> const& spans,
                                                                    int64 frame) {
    return std::partition_point(spans.begin(), spans.end(), [&](auto const& span) { return span.end <= frame; });
}

SpanOfFrames const* TimelineTracks::at(std::vector<SpanOfFrames> const& spans, int64 frame) {
    const auto found = firstFrom(spans, frame);
    return found != spans.end() && found->first <= frame ? &*found : nullptr;
}

}  // namespace qrtplay
