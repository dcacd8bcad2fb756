#include <algorithm>

#include "timeline/qrtTimelineEvaluation.h"

namespace qrtplay {

namespace {

/// How a time inside the timeline follows from the time of the output: both run evenly.
struct Clockwork {
    ExactTime atZero;  ///< what it is at the output's time 0
    ExactTime speed{1, 1};

    [[nodiscard]] ExactTime at(ExactTime const& outputTime) const { return atZero + outputTime * speed; }
    [[nodiscard]] ExactTime outputTimeOf(ExactTime const& time) const {
        return (time - atZero) * ExactTime(speed.denominator(), speed.numerator());
    }
};

/// Output samples, half-open.
struct Window {
    int64 first = 0;
    int64 end = 0;
};

/// A gain that changes evenly while a dissolve is under way. Dissolves may be nested: all gains are multiplied.
struct Ramp {
    Clockwork clock;  ///< of the track
    TimelineNode::Dissolve const& dissolve;
    bool rises;
    Ramp const* outer;
};

class SoundFinder final {
public:
    SoundFinder(Rational const& sampleRate, std::vector<SoundSpan>& spans) : m_rate(sampleRate), m_spans(spans) {}

    /// `clock` tells the time since the node's begin, on its parent's time.
    void find(TimelineNode const& node, Window const& window, Clockwork const& clock, Ramp const* ramp);

private:
    /// What lies in `window` and, on a time that `clock` tells, in [begin, end).
    [[nodiscard]] Window part(Window const& window, Clockwork const& clock, ExactTime const& begin,
                              ExactTime const& end) const;
    [[nodiscard]] ExactTime timeOf(int64 sample) const { return ExactTime::ofFrame(sample, m_rate); }
    [[nodiscard]] Clockwork ownClock(TimelineNode const& node, Clockwork const& clock) const;
    void findInTrack(TimelineNode const& track, Window const& window, Clockwork const& clock, Ramp const* ramp);
    void findInChild(TimelineNode const& track, size_t child, Window const& window, Clockwork const& clock,
                     Ramp const* ramp);
    void add(TimelineNode const& source, Window const& window, Clockwork const& clock, Ramp const* ramp);
    void addSpan(TimelineNode const& source, Window const& window, Clockwork const& clock, double gainFrom,
                 double gainTo);
    [[nodiscard]] double gainAt(Ramp const* ramp, int64 sample) const;

    const Rational m_rate;
    std::vector<SoundSpan>& m_spans;
};

Window SoundFinder::part(Window const& window, Clockwork const& clock, ExactTime const& begin,
                         ExactTime const& end) const {
    if (begin >= end) return {};
    const ExactTime from = clock.outputTimeOf(begin);
    const ExactTime to = clock.outputTimeOf(end);
    // Played backwards, the first moment comes last, so that it is the other end that does not count.
    const bool isForward = clock.speed > ExactTime();
    const int64 first = isForward ? from.frameFrom(m_rate) : to.frameAt(m_rate) + 1;
    const int64 last = isForward ? to.frameFrom(m_rate) : from.frameAt(m_rate) + 1;
    return {std::max(window.first, first), std::min(window.end, last)};
}

Clockwork SoundFinder::ownClock(TimelineNode const& node, Clockwork const& clock) const {
    // One sample is to sound what one frame is to pictures.
    const ExactTime sample = timeOf(1) * (clock.speed < ExactTime() ? -clock.speed : clock.speed);
    return {node.ownTimeAt(clock.atZero, sample), clock.speed * node.speed};
}

void SoundFinder::find(TimelineNode const& node, Window const& window, Clockwork const& clock, Ramp const* ramp) {
    if (!node.isHeard || node.speed == ExactTime() || window.first >= window.end) return;
    const Clockwork own = ownClock(node, clock);
    if (node.kind == TimelineNode::Kind::media) {
        add(node, window, own, ramp);
    } else if (node.kind == TimelineNode::Kind::track) {
        findInTrack(node, window, own, ramp);
    } else {
        for (TimelineNode const& child : node.children)
            find(child, part(window, own, ExactTime(), child.duration), own, ramp);
    }
}

void SoundFinder::findInTrack(TimelineNode const& track, Window const& window, Clockwork const& clock,
                              Ramp const* ramp) {
    if (track.children.empty()) return;
    const ExactTime atFirst = clock.at(timeOf(window.first));
    const ExactTime atLast = clock.at(timeOf(window.end - 1));
    const auto& [from, to] = std::minmax(atFirst, atLast);
    // A dissolve reaches into the next child and the one before.
    const size_t first = track.childAt(from);
    const size_t last = std::min(track.childAt(to) + 1, track.children.size() - 1);
    for (size_t child = first > 0 ? first - 1 : 0; child <= last; ++child) {
        findInChild(track, child, window, clock, ramp);
    }
}

void SoundFinder::findInChild(TimelineNode const& track, size_t child, Window const& window, Clockwork const& clock,
                              Ramp const* ramp) {
    TimelineNode const& node = track.children[child];
    const Clockwork childClock{clock.atZero - track.starts[child], clock.speed};
    ExactTime begin = track.starts[child];
    ExactTime end = begin + node.duration;
    const auto findIn = [&](TimelineNode::Dissolve const& dissolve, bool rises) {
        const Ramp own{clock, dissolve, rises, ramp};
        find(node, part(window, clock, dissolve.begin, dissolve.begin + dissolve.length), childClock, &own);
    };
    if (auto const* dissolve = track.dissolveInto(child)) {
        findIn(*dissolve, true);
        begin = dissolve->begin + dissolve->length;
    }
    auto const* dissolveOut = track.dissolveInto(child + 1);
    if (dissolveOut) end = dissolveOut->begin;
    find(node, part(window, clock, begin, end), childClock, ramp);
    if (dissolveOut) findIn(*dissolveOut, false);
}

double SoundFinder::gainAt(Ramp const* ramp, int64 sample) const {
    double gain = 1;
    for (; ramp; ramp = ramp->outer) {
        // Not clamped: a span tells its gain one sample behind its end, where the ramp has to be as steep as before.
        const double mix = ramp->dissolve.mixAt(ramp->clock.at(timeOf(sample)));
        gain *= ramp->rises ? mix : 1 - mix;
    }
    return gain;
}

void SoundFinder::add(TimelineNode const& source, Window const& window, Clockwork const& clock, Ramp const* ramp) {
    if (!ramp || !ramp->outer) {
        addSpan(source, window, clock, gainAt(ramp, window.first), gainAt(ramp, window.end));
        return;
    }
    // The product of ramps is a curve. Cut at fixed places it is near enough to straight lines, and the same lines
    // wherever the window begins and ends.
    constexpr int64 block = 256;
    for (int64 first = window.first; first < window.end;) {
        const int64 blockBegin = first - first % block;
        const int64 end = std::min(window.end, blockBegin + block);
        const double from = gainAt(ramp, blockBegin);
        const double slope = (gainAt(ramp, blockBegin + block) - from) / static_cast<double>(block);
        addSpan(source, {first, end}, clock, from + slope * static_cast<double>(first - blockBegin),
                from + slope * static_cast<double>(end - blockBegin));
        first = end;
    }
}

void SoundFinder::addSpan(TimelineNode const& source, Window const& window, Clockwork const& clock, double gainFrom,
                          double gainTo) {
    SoundSpan span;
    span.media = source.source;
    span.firstSample = window.first;
    span.sampleCount = window.end - window.first;
    span.time = clock.at(timeOf(window.first));
    span.speed = clock.speed;
    span.gainFrom = gainFrom;
    span.gainTo = gainTo;
    m_spans.push_back(span);
}

}  // namespace

std::vector<SoundSpan> soundOf(TimelineNode const& node, int64 firstSample, int64 endSample,
                               Rational const& sampleRate) {
    std::vector<SoundSpan> spans;
    SoundFinder(sampleRate, spans).find(node, {firstSample, endSample}, Clockwork(), nullptr);
    return spans;
}

}  // namespace qrtplay
