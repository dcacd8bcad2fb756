#include "timeline/qrtOtioRun.h"

#include <utility>

namespace qrtplay {

namespace {

constexpr size_t mostWarnings = 200;

/// Equal for the same files, whatever they are called.
std::string keyOf(MediaReference const& media) {
    ImageSequenceName const& images = media.images;
    switch (media.kind) {
        case MediaReference::Kind::file: return "file " + media.path;
        case MediaReference::Kind::missing: return "missing " + media.text();
        case MediaReference::Kind::image_sequence: break;
    }
    std::string key = "images " + media.text();
    for (const int64 number : {images.firstNumber, images.lastNumber, images.step})
        key += ' ' + std::to_string(number);
    return key + ' ' + std::to_string(images.rate.getNumerator()) + '/' + std::to_string(images.rate.getDenominator());
}

}  // namespace

void OtioRun::warn(OtioObject const& object, std::string const& what) {
    if (content.warnings.size() < mostWarnings)
        content.warnings.push_back(object.description() + ": " + what);
    else
        ++m_warningsLeftOut;
}

void OtioRun::warnOnce(OtioObject const& object, std::string const& what) {
    if (m_warnedOnce.size() < mostWarnings && m_warnedOnce.insert(what).second) warn(object, what);
}

void OtioRun::finishWarnings() {
    if (m_warningsLeftOut > 0) content.warnings.push_back("further warnings: " + std::to_string(m_warningsLeftOut));
}

void OtioRun::countItem(OtioObject const& object, size_t depth) {
    if (depth > maxTimelineDepth) object.fail("is nested more than " + std::to_string(maxTimelineDepth) + " deep");
    if (m_itemsLeft == 0)
        object.fail("is one item too many: a timeline has at most " + std::to_string(maxTimelineItems));
    --m_itemsLeft;
}

size_t OtioRun::indexOf(MediaReference const& media) {
    const auto [found, isNew] = m_mediaIndices.try_emplace(keyOf(media), content.media.size());
    if (isNew) content.media.push_back(media);
    return found->second;
}

size_t OtioRun::add(Generator generator) {
    generator.id = "generator-" + std::to_string(content.generators.size() + 1);
    content.generators.push_back(std::move(generator));
    return content.generators.size() - 1;
}

Outcome OtioRun::lengthOf(MediaReference const& media, MediaLength& length) {
    if (media.kind == MediaReference::Kind::missing || !m_options.probe) return Outcome::failure("it is not known");
    const auto [found, isNew] = m_answers.try_emplace(keyOf(media));
    Answer& answer = found->second;
    if (isNew) {
        answer.outcome = m_options.probe(media, answer.length);
        if (answer.outcome.success() && answer.length.duration <= ExactTime())
            answer.outcome = Outcome::failure("the media has none");
    }
    length = answer.length;
    return answer.outcome;
}

void OtioRun::noteVideoRate(Rational const& rate) {
    if (!m_videoRate && rate.getValue() > 0 && isVideoRate(rate)) m_videoRate = rate;
}

}  // namespace qrtplay
