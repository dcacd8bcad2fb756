#include "timeline/qrtMediaTimeline.h"

#include <algorithm>
#include <utility>

#include "timeline/qrtTimelineNode.h"

namespace qrtplay {

namespace {

/// One track of the timeline, with gaps where a media has nothing for it.
struct Lane {
    explicit Lane(TrackView::Kind kind) {
        node.kind = TimelineNode::Kind::track;
        view.kind = kind;
        view.name = kind == TrackView::Kind::video ? "V1" : "A1";
    }

    void append(MeasuredMedia const& media, size_t index) {
        const bool isVideo = view.kind == TrackView::Kind::video;
        const bool isThere = isVideo ? media.hasVideo : media.hasSound;
        TimelineNode child;
        child.duration = media.length;
        TrackItem item;
        item.start = node.contentLength();
        item.duration = media.length;
        if (isThere) {
            child.kind = TimelineNode::Kind::media;
            child.source = index;
            child.isSeen = isVideo;
            child.isHeard = !isVideo;
            item.kind = TrackItem::Kind::clip;
            item.name = media.reference.name;
            item.media = index;
            isUsed = true;
        }
        view.items.push_back(std::move(item));
        node.append(std::move(child));
    }

    TimelineNode node;
    TrackView view;
    bool isUsed = false;
};

}  // namespace

std::shared_ptr<Timeline const> makeMediaTimeline(std::string const& name, std::vector<MeasuredMedia> const& media) {
    Timeline::Content content;
    content.name = name;
    const auto withVideo =
        std::find_if(media.begin(), media.end(), [](MeasuredMedia const& one) { return one.hasVideo; });
    if (withVideo != media.end()) content.rate = withVideo->rate;

    Lane lanes[] = {Lane(TrackView::Kind::video), Lane(TrackView::Kind::audio)};
    for (MeasuredMedia const& one : media) {
        for (Lane& lane : lanes)
            lane.append(one, content.media.size());
        content.media.push_back(one.reference);
    }
    auto root = std::make_shared<TimelineNode>();
    root->kind = TimelineNode::Kind::stack;
    for (Lane& lane : lanes) {
        lane.node.duration = lane.node.contentLength();
        content.duration = lane.node.duration;
        if (lane.isUsed) content.tracks.push_back(std::move(lane.view));
        root->append(std::move(lane.node));
    }
    root->duration = content.duration;
    content.root = std::move(root);
    return std::make_shared<Timeline const>(std::move(content));
}

}  // namespace qrtplay
