#include "input/qrtMediaProbe.h"

#include <utility>

namespace qrtplay {

MediaProbe::Opened const& MediaProbe::open(std::string const& path) {
    const auto known = m_opened.find(path);
    if (known != m_opened.end()) return known->second;

    Opened opened;
    const Outcome pictures = MediaFile::open(path, opened.pictures);
    const Outcome sound = SoundFile::open(path, opened.sound);
    if (opened.sound && !opened.sound->facts().hasSound) opened.sound.reset();
    if (!opened.pictures && !opened.sound) opened.outcome = sound.failed() ? sound : pictures;
    return m_opened.emplace(path, std::move(opened)).first->second;
}

Outcome MediaProbe::measure(MediaReference const& reference, MeasuredMedia& media) {
    switch (reference.kind) {
        case MediaReference::Kind::missing: return Outcome::failure(reference.text() + ": is missing");
        case MediaReference::Kind::image_sequence:
            media.rate = reference.images.rate;
            media.length = ExactTime::ofFrame(reference.images.frameCount(), media.rate);
            media.hasVideo = true;
            return Outcome();
        case MediaReference::Kind::file: break;
    }
    Opened const& opened = open(reference.path);
    if (opened.outcome.failed()) return opened.outcome;
    media.hasVideo = opened.pictures != nullptr;
    media.hasSound = opened.sound != nullptr;
    if (media.hasVideo) {
        media.rate = opened.pictures->facts().frameRate;
        media.length = ExactTime::ofFrame(opened.pictures->facts().frameCount, media.rate);
    } else {
        media.length = opened.sound->facts().duration();
    }
    return Outcome();
}

std::shared_ptr<MediaFile const> MediaProbe::pictures(std::string const& path) const {
    const auto known = m_opened.find(path);
    return known == m_opened.end() ? nullptr : known->second.pictures;
}

std::shared_ptr<SoundFile const> MediaProbe::sound(std::string const& path) const {
    const auto known = m_opened.find(path);
    return known == m_opened.end() ? nullptr : known->second.sound;
}

}  // namespace qrtplay
