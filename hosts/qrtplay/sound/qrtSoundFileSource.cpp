#include "sound/qrtSoundFileSource.h"

#include <algorithm>
#include <cstdio>

namespace qrtplay {

namespace {

// Long against what decoders need to warm up, and short against what a listener waits for.
constexpr int64 blockLength = 1 << 16;

/// By then every decoder in use has forgotten that it did not begin at the beginning: MP3 reaches back for at most ten
/// packets, Opus takes 80 ms, the others one or two packets.
constexpr int64 warmUpMs = 500;

}  // namespace

SoundFileSource::SoundFileSource(std::shared_ptr<SoundFile const> file, int64 zero, int channels)
    : BlockedSoundSource(blockLength, channels), m_file(std::move(file)), m_zero(zero), m_mapper(channels) {}

Outcome SoundFileSource::open(std::shared_ptr<SoundFile const> const& file, std::optional<ExactTime> const& zero,
                              int channels, std::unique_ptr<SoundFileSource>& source) {
    SoundFacts const& facts = file->facts();
    const int64 position = zero ? zero->nearestFrame(Rational(facts.sampleRate, 1)) : facts.firstSample;
    std::unique_ptr<SoundFileSource> opened(new SoundFileSource(file, position, channels));
    if (Outcome outcome = SoundRun::open(file, opened->m_run); outcome.failed()) return outcome;
    source = std::move(opened);
    return Outcome();
}

Outcome SoundFileSource::makeBlock(int64 first, float* samples) {
    SoundFacts const& facts = m_file->facts();
    const int64 from = first + m_zero;
    const int64 until = from + samplesPerBlock();
    const int64 end = facts.firstSample + facts.sampleCount;
    Outcome outcome;
    if (from < end && until > facts.firstSample) outcome = decode(from, until, samples);
    // The last packet of such a file is often incomplete as well, which says less.
    if (facts.isCutOff && until > end) outcome = Outcome::failure(m_file->path() + ": its sound is cut off");
    if (outcome.success() || m_failureTold) return Outcome();
    m_failureTold = true;
    return outcome;
}

Outcome SoundFileSource::decode(int64 from, int64 until, float* samples) {
    if (Outcome outcome = m_run->startAt(m_file->stationBefore(from - warmUp())); outcome.failed()) return outcome;
    Outcome outcome;
    for (;;) {
        const SoundRun::Result result = m_run->next();
        if (result == SoundRun::Result::end || m_run->position() >= until) return outcome;
        const bool copied = result == SoundRun::Result::sound && copyHeard(from, until, samples);
        // While the decoder warms up it may lack what it refers to.
        if (!copied && m_run->position() >= from && outcome.success())
            outcome = Outcome::failure(failureAt(m_run->position()));
    }
}

// Copies what belongs between the positions `from` and `until`, the first of which is that of `samples`.
bool SoundFileSource::copyHeard(int64 from, int64 until, float* samples) {
    const int64 begin = std::max(m_run->position() + m_run->heardFrom(), from);
    const int64 end = std::min(m_run->position() + m_run->heardUntil(), until);
    if (begin >= end) return true;
    AVFrame const& sound = m_run->sound();
    m_mapped.resize(static_cast<size_t>(sound.nb_samples) * static_cast<size_t>(channels()));
    if (!m_mapper.map(sound, m_mapped.data())) return false;
    std::copy_n(m_mapped.data() + (begin - m_run->position()) * channels(), (end - begin) * channels(),
                samples + (begin - from) * channels());
    return true;
}

int64 SoundFileSource::warmUp() const {
    return warmUpMs * m_file->facts().sampleRate / 1000;
}

std::string SoundFileSource::failureAt(int64 position) const {
    char seconds[32] = {};
    std::snprintf(seconds, sizeof(seconds), "%.3f",
                  static_cast<double>(position - m_zero) / m_file->facts().sampleRate);
    return m_file->path() + ": its sound at " + seconds + " s cannot be decoded";
}

}  // namespace qrtplay
