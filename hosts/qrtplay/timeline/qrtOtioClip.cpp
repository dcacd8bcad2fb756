#include <algorithm>
#include <utility>

#include "timeline/qrtOtioBuilder.h"

namespace qrtplay {

TimelineNode OtioBuilder::clip(OtioObject const& object, Place const& place) {
    const std::optional<OtioRange> wanted = readRange(object, "source_range");
    OtioSource source = readOtioSource(object, m_folder, m_run);
    const bool isSound = place.medium == Medium::audio || m_isAudible;
    TimelineNode node;
    if (source.kind == OtioSource::Kind::timeline) {
        TimelineNode nested = readNestedOtio(object, source.path, isSound, m_run);
        node.kind = TimelineNode::Kind::stack;
        node.append(std::move(nested));
        (isSound ? node.isSeen : node.isHeard) = false;
    }
    node.speed = speedOf(object);
    if (place.isEnabled && !isSound) noteRate(wanted, source);
    const OtioRange range = rangeOf(object, wanted, source, node);
    const ExactTime mediaStart = source.available ? source.available->start : ExactTime();
    node.start = range.start - mediaStart;
    node.duration = range.duration;
    addMarkers(object, mediaStart);
    if (place.isEnabled) connect(node, source, range, place);
    return node;
}

void OtioBuilder::noteRate(std::optional<OtioRange> const& wanted, OtioSource const& source) {
    if (m_run.hasVideoRate() || source.kind == OtioSource::Kind::timeline) return;
    if (wanted) m_run.noteVideoRate(wanted->rate);
    if (source.available) m_run.noteVideoRate(source.available->rate);
    if (source.media.kind == MediaReference::Kind::image_sequence) m_run.noteVideoRate(source.media.images.rate);
    MediaLength length;
    if (m_run.hasVideoRate() || source.kind != OtioSource::Kind::media) return;
    if (m_run.lengthOf(source.media, length).success()) m_run.noteVideoRate(length.rate);
}

OtioRange OtioBuilder::rangeOf(OtioObject const& clip, std::optional<OtioRange> const& wanted, OtioSource& source,
                               TimelineNode const& node) {
    if (wanted) return *wanted;
    if (source.available) return *source.available;
    // No rate is known: 0 stands for that of the timeline.
    OtioRange range{ExactTime(), ExactTime(5, 1), Rational()};
    if (source.kind == OtioSource::Kind::timeline) {
        range.duration = node.contentLength();
        return range;
    }
    MediaLength length;
    const Outcome outcome = source.kind == OtioSource::Kind::media ? m_run.lengthOf(source.media, length)
                                                                   : Outcome::failure("it is not known");
    if (outcome.success()) return {ExactTime(), length.duration, length.rate};
    m_run.warn(clip, "is given 5 seconds for want of a length: " + oneLine(outcome.message()));
    source.media.path = source.media.kind == MediaReference::Kind::missing ? source.media.path : source.media.text();
    source.media.kind = MediaReference::Kind::missing;
    return range;
}

void OtioBuilder::connect(TimelineNode& node, OtioSource const& source, OtioRange const& range, Place const& place) {
    const bool isSound = place.medium == Medium::audio;
    if (source.kind == OtioSource::Kind::media) {
        MediaReference media = source.media;
        ImageSequenceName& images = media.images;
        if (media.kind == MediaReference::Kind::image_sequence && !source.available) {
            // Nobody has said how many there are: as many as are wanted.
            const int64 count =
                std::clamp<int64>((node.start + node.duration).frameFrom(images.rate), 1, 1'000'000'000);
            images.lastNumber = images.firstNumber + (count - 1) * images.step;
        }
        node.kind = TimelineNode::Kind::media;
        node.source = m_run.indexOf(media);
        node.isSeen = !isSound;
        node.isHeard = isSound;
    } else if (source.kind == OtioSource::Kind::generator) {
        Generator generator = source.generator;
        const ExactTime end = source.available ? source.available->duration : node.start + node.duration;
        const bool isCountable = range.rate.getNumerator() > 0 && OtioRun::isVideoRate(range.rate);
        if (isCountable) {
            generator.rate = range.rate;
            generator.frameCount = std::max<int64>(end.frameFrom(range.rate), 0);
        } else {
            m_run.uncountedGenerators.emplace_back(m_run.content.generators.size(), end);
        }
        node.kind = TimelineNode::Kind::generator;
        node.source = m_run.add(std::move(generator));
        node.isSeen = !isSound;
    }
}

}  // namespace qrtplay
