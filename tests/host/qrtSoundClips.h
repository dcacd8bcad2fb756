#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "media/qrtSoundSource.h"
#include "sound/qrtSoundFile.h"

namespace qrtplay {

/// The usual number of samples a second.
inline constexpr int32 studioRate = 48000;

/// The path of a file that make-sound-clips.sh has made.
std::string soundClipPath(std::string const& name);
/// Interleaved floats as FFmpeg's own program has decoded them, for example those of "plain.wav.f32".
std::vector<float> referenceSound(std::string const& name);

/// A file that is expected to open; a failure is a failure of the test, and the pointer is then null.
std::shared_ptr<SoundFile const> openSoundFile(std::string const& name);
/// Its sound at its own rate, in `channels` channels; 0: as many as it has.
std::unique_ptr<SoundSource> soundOf(std::string const& name, std::optional<ExactTime> const& zero, int channels = 0);

/// What a source answers that is expected not to fail.
std::vector<float> readSound(SoundSource& source, int64 first, int64 count, int channels);
/// The same, asked for in portions of changing length and in disorder.
std::vector<float> readSoundInDisorder(SoundSource& source, int64 first, int64 count, int channels);
/// Portions that make up [`first`, `first` + `count`), in disorder: for each its first sample and its length.
std::vector<std::pair<int64, int64>> portions(int64 first, int64 count);

/// The sample with the largest absolute value.
size_t peakOf(std::vector<float> const& samples);
/// The largest difference between two recordings; more than any sound when their lengths differ.
double differenceOf(std::vector<float> const& a, std::vector<float> const& b);

/// Sound that a function computes.
class ComputedSound final : public SoundSource {
public:
    using Value = std::function<float(int64 sample, int channel)>;

    explicit ComputedSound(int channels, Value value) : m_channels(channels), m_value(std::move(value)) {}

    Outcome read(int64 first, int64 count, float* samples) override;

private:
    const int m_channels;
    const Value m_value;
};

}  // namespace qrtplay
