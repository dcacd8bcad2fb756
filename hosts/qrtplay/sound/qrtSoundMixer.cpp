#include "sound/qrtSoundMixer.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

// Longer requests are worked off in pieces, which bounds the memory for what is added up.
constexpr int64 longestPiece = 8192;

}  // namespace

SoundMixer::SoundMixer(int32 sampleRate, int channels, SpansAt spansAt, SoundSourcePool::Open open)
    : m_rate(sampleRate),
      m_channels(channels),
      m_spansAt(std::move(spansAt)),
      m_sources(std::move(open)),
      m_retimer(sampleRate, channels) {}

void SoundMixer::fill(int64 first, int64 count, float* samples) {
    if (count <= 0) return;
    const std::lock_guard lock(m_mutex);
    std::fill_n(samples, count * m_channels, 0.0f);
    for (SoundSpan const& span : m_spansAt(first, count, m_rate)) {
        const int64 end = std::min(first + count, span.firstSample + span.sampleCount);
        for (int64 from = std::max(first, span.firstSample); from < end; from += longestPiece)
            add(span, from, std::min(longestPiece, end - from), samples + (from - first) * m_channels);
    }
}

void SoundMixer::add(SoundSpan const& span, int64 first, int64 count, float* samples) {
    SoundSource* const source = m_sources.get(span.media);
    if (!source) return;
    m_piece.resize(static_cast<size_t>(count * m_channels));
    const Outcome outcome = m_retimer.read(*source, span, first, count, m_piece.data());
    if (outcome.failed()) m_sources.noteFailure(span.media, outcome.message());
    addWithGain(span, first, count, samples);
}

// Adds m_piece, which is what is heard of the span from output sample `first` on.
void SoundMixer::addWithGain(SoundSpan const& span, int64 first, int64 count, float* samples) const {
    const double step = (span.gainTo - span.gainFrom) / static_cast<double>(span.sampleCount);
    for (int64 i = 0; i < count; ++i) {
        const auto gain = static_cast<float>(span.gainFrom + step * static_cast<double>(first + i - span.firstSample));
        for (int64 c = i * m_channels; c < (i + 1) * m_channels; ++c)
            samples[c] += gain * m_piece[static_cast<size_t>(c)];
    }
}

std::vector<std::string> SoundMixer::takeFailures() {
    const std::lock_guard lock(m_mutex);
    return m_sources.takeFailures();
}

}  // namespace qrtplay
