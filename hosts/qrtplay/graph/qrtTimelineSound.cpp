#include "graph/qrtTimelineSound.h"

#include <algorithm>
#include <utility>

#include "media/qrtMediaFile.h"
#include "sound/qrtOpenSound.h"

namespace qrtplay {

namespace {

/// When sample 0 of a file is heard in the file's own counting: when its first frame is seen, if it has any.
std::optional<ExactTime> zeroOf(TimelineComposition const& composition, size_t media) {
    std::shared_ptr<MediaFile const> file = composition.file(media);
    if (!file && MediaFile::open(composition.timeline()->media()[media].path, file).failed()) return std::nullopt;
    return file->facts().startTime;
}

Outcome openSoundOf(TimelineComposition const& composition, size_t media, int32 rate, int channels,
                    std::unique_ptr<SoundSource>& source) {
    MediaReference const& reference = composition.timeline()->media()[media];
    if (reference.kind == MediaReference::Kind::image_sequence) return Outcome();
    if (reference.kind == MediaReference::Kind::missing) return Outcome::failure(reference.text() + ": is missing");
    return openSound(reference.path, zeroOf(composition, media), rate, channels, source);
}

}  // namespace

SoundMixer& TimelineSound::mixerFor(HostAudioFormat const& format) {
    if (m_mixer && m_rate == format.getSampleRate() && m_channels == format.channels()) return *m_mixer;
    m_rate = format.getSampleRate();
    m_channels = format.channels();
    TimelineComposition const& composition = *m_composition;
    m_mixer = std::make_unique<SoundMixer>(
        m_rate, m_channels,
        [&composition](int64 first, int64 count, int32 rate) {
            return composition.timeline()->soundAt(first, count, rate);
        },
        [&composition, rate = m_rate, channels = m_channels](size_t media, std::unique_ptr<SoundSource>& source) {
            return openSoundOf(composition, media, rate, channels, source);
        });
    return *m_mixer;
}

void TimelineSound::fill(HostAudioFormat const& format, int64 first, int64 count, char* bytes) {
    constexpr int64 mostAtOnce = 1 << 16;  // so that a large request needs no large memory
    const std::lock_guard lock(m_mutex);
    SoundMixer& mixer = mixerFor(format);
    for (int64 done = 0; done < count;) {
        const int64 piece = std::min(mostAtOnce, count - done);
        m_samples.resize(static_cast<size_t>(piece) * static_cast<size_t>(format.channels()));
        mixer.fill(first + done, piece, m_samples.data());
        convertSamples(m_samples.data(), static_cast<size_t>(piece), format,
                       bytes + format.getSizeInBytes(static_cast<size_t>(done)));
        done += piece;
    }
    for (std::string const& failure : mixer.takeFailures())
        m_composition->noteWarning(failure);
}

}  // namespace qrtplay
