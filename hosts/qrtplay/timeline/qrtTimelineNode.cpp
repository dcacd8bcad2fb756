#include "timeline/qrtTimelineNode.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

ExactTime sizeOf(ExactTime const& factor) {
    return factor < ExactTime() ? -factor : factor;
}

ExactTime reciprocal(ExactTime const& factor) {
    return {factor.denominator(), factor.numerator()};
}

}  // namespace

double TimelineNode::Dissolve::mixAt(ExactTime const& time) const noexcept {
    return ((time - begin) * reciprocal(length)).seconds();
}

void TimelineNode::append(TimelineNode child) {
    isSeen = isSeen || child.isSeen;
    isHeard = isHeard || child.isHeard;
    if (kind == Kind::track) starts.push_back(contentLength());
    children.push_back(std::move(child));
}

ExactTime TimelineNode::contentLength() const noexcept {
    if (children.empty()) return {};
    if (kind == Kind::track) return starts.back() + children.back().duration;
    const auto isShorter = [](TimelineNode const& a, TimelineNode const& b) { return a.duration < b.duration; };
    return std::max_element(children.begin(), children.end(), isShorter)->duration;
}

ExactTime TimelineNode::ownTimeAt(ExactTime const& time, ExactTime const& frame) const noexcept {
    if (speed == ExactTime()) return start;
    if (speed > ExactTime()) return start + time * speed;
    return start + (duration - frame - time) * sizeOf(speed);
}

ExactTime TimelineNode::parentTimeOf(ExactTime const& ownTime) const noexcept {
    if (speed == ExactTime()) return {};
    const ExactTime forward = (ownTime - start) * reciprocal(sizeOf(speed));
    return speed > ExactTime() ? forward : duration - forward;
}

ExactTime TimelineNode::ownLengthOf(ExactTime const& length) const noexcept {
    // While a picture stands still, what it is made of is still asked for as long as one frame.
    return speed == ExactTime() ? length : length * sizeOf(speed);
}

ExactTime TimelineNode::parentLengthOf(ExactTime const& ownLength) const noexcept {
    return speed == ExactTime() ? ownLength : ownLength * reciprocal(sizeOf(speed));
}

size_t TimelineNode::childAt(ExactTime const& time) const noexcept {
    const auto next = std::upper_bound(starts.begin(), starts.end(), time);
    return next == starts.begin() ? 0 : static_cast<size_t>(next - starts.begin()) - 1;
}

TimelineNode::Dissolve const* TimelineNode::dissolveAt(ExactTime const& time) const noexcept {
    const auto isLater = [](ExactTime const& moment, Dissolve const& dissolve) { return moment < dissolve.begin; };
    const auto next = std::upper_bound(dissolves.begin(), dissolves.end(), time, isLater);
    if (next == dissolves.begin()) return nullptr;
    Dissolve const& last = *(next - 1);
    return time < last.begin + last.length ? &last : nullptr;
}

TimelineNode::Dissolve const* TimelineNode::dissolveInto(size_t child) const noexcept {
    const auto isEarlier = [](Dissolve const& dissolve, size_t wanted) { return dissolve.incoming < wanted; };
    const auto found = std::lower_bound(dissolves.begin(), dissolves.end(), child, isEarlier);
    return found != dissolves.end() && found->incoming == child ? &*found : nullptr;
}

}  // namespace qrtplay
