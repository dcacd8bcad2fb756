#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "sound/qrtSoundRetimer.h"
#include "sound/qrtSoundSourcePool.h"
#include "timeline/qrtFramePlan.h"

namespace qrtplay {

/// The sound of a timeline: the spans that are heard at a time, with their gains, added up. Sums are neither clipped
/// nor scaled down; that is for whoever leaves floating point. Media that have no sound, or are missing, are silent.
///
/// Threading: any thread may call any method; each holds the mixer's lock, and reads files, for its whole duration.
class SoundMixer final {
public:
    /// What is heard from an output sample on, for a number of samples: `Timeline::soundAt`.
    using SpansAt = std::function<std::vector<SoundSpan>(int64 firstSample, int64 sampleCount, int32 sampleRate)>;

    /// `channels`: 1 to 8. `open` makes sources of this rate and number of channels. Both functions are called by the
    /// threads that call `fill`, one at a time.
    SoundMixer(int32 sampleRate, int channels, SpansAt spansAt, SoundSourcePool::Open open);

    /// Writes `count` interleaved samples of every channel from output sample `first` on. The same numbers come out
    /// however the requests are cut, but for rounding in the last digit of a changing gain.
    void fill(int64 first, int64 count, float* samples);
    /// What has gone wrong since the last call: one line for every media, the first time that it fails.
    [[nodiscard]] std::vector<std::string> takeFailures();

private:
    void add(SoundSpan const& span, int64 first, int64 count, float* samples);
    void addWithGain(SoundSpan const& span, int64 first, int64 count, float* samples) const;

    const int32 m_rate;
    const int m_channels;
    const SpansAt m_spansAt;
    std::mutex m_mutex;
    // All under m_mutex.
    SoundSourcePool m_sources;
    SoundRetimer m_retimer;
    std::vector<float> m_piece;
};

}  // namespace qrtplay
