#include <algorithm>
#include <utility>

#include "timeline/qrtTimelineEvaluation.h"

namespace qrtplay {

namespace {

FrameNode sourcePicture(FrameNode::Kind kind, size_t source, ExactTime const& time) {
    FrameNode picture;
    picture.kind = kind;
    picture.source = source;
    picture.time = time;
    return picture;
}

FrameNode stackPicture(TimelineNode const& stack, ExactTime const& time, ExactTime const& frame) {
    FrameNode picture;
    for (TimelineNode const& child : stack.children) {
        if (time < ExactTime() || time >= child.duration) continue;
        FrameNode layer = pictureOf(child, time, frame);
        if (layer.kind != FrameNode::Kind::nothing) picture.children.push_back(std::move(layer));
    }
    if (picture.children.empty()) return {};
    if (picture.children.size() == 1) return FrameNode(std::move(picture.children.front()));
    picture.kind = FrameNode::Kind::stack;
    return picture;
}

/// `nothing` for the places before a track's first child and behind its last one.
FrameNode childPicture(TimelineNode const& track, size_t child, ExactTime const& time, ExactTime const& frame) {
    if (child >= track.children.size()) return {};
    return pictureOf(track.children[child], time - track.starts[child], frame);
}

FrameNode dissolvePicture(TimelineNode const& track, TimelineNode::Dissolve const& dissolve, ExactTime const& time,
                          ExactTime const& frame) {
    FrameNode picture;
    picture.kind = FrameNode::Kind::dissolve;
    const ExactTime middle = time + frame * ExactTime(1, 2);
    picture.mix = std::clamp(dissolve.mixAt(middle), 0.0, 1.0);
    // The child before the first one wraps around to a number that no child has.
    picture.children.push_back(childPicture(track, dissolve.incoming - 1, time, frame));
    picture.children.push_back(childPicture(track, dissolve.incoming, time, frame));
    const auto isNothing = [](FrameNode const& node) { return node.kind == FrameNode::Kind::nothing; };
    if (std::all_of(picture.children.begin(), picture.children.end(), isNothing)) return {};
    return picture;
}

FrameNode trackPicture(TimelineNode const& track, ExactTime const& time, ExactTime const& frame) {
    if (track.children.empty() || time < ExactTime()) return {};
    if (auto const* dissolve = track.dissolveAt(time)) return dissolvePicture(track, *dissolve, time, frame);
    const size_t child = track.childAt(time);
    if (time >= track.starts[child] + track.children[child].duration) return {};
    return childPicture(track, child, time, frame);
}

}  // namespace

FrameNode pictureOf(TimelineNode const& node, ExactTime const& time, ExactTime const& frame) {
    if (!node.isSeen) return {};
    const ExactTime ownTime = node.ownTimeAt(time, frame);
    switch (node.kind) {
        case TimelineNode::Kind::gap: return {};
        case TimelineNode::Kind::media: return sourcePicture(FrameNode::Kind::media, node.source, ownTime);
        case TimelineNode::Kind::generator: return sourcePicture(FrameNode::Kind::generator, node.source, ownTime);
        case TimelineNode::Kind::stack: return stackPicture(node, ownTime, node.ownLengthOf(frame));
        case TimelineNode::Kind::track: return trackPicture(node, ownTime, node.ownLengthOf(frame));
    }
    return {};
}

}  // namespace qrtplay
