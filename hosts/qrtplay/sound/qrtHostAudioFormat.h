#pragma once

#include "base/qrtKit.h"
#include "foundation/core/qrtAudioFormatInterface.h"

namespace qrtplay {

/// How a sample of one channel is stored, in the machine's own order of bytes.
enum class SampleKind {
    float32,  ///< full scale is -1 to 1; what goes beyond is kept
    int16,
    int24_in_32,  ///< in the upper three bytes of four, the lowest one 0
    int32,
};

/// The host's layout of sound: interleaved, all channels of a sample after each other.
class HostAudioFormat final : public AudioFormatInterface {
public:
    static constexpr int mostChannels = 8;

    /// `sampleRate` is positive, `channels` 1 to 8.
    HostAudioFormat(int32 sampleRate, int channels, SampleKind kind) noexcept
        : m_sampleRate(sampleRate), m_channels(channels), m_kind(kind) {}

    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override;
    [[nodiscard]] int32 getSampleRate() const override { return m_sampleRate; }
    [[nodiscard]] int channels() const noexcept { return m_channels; }
    [[nodiscard]] SampleKind kind() const noexcept { return m_kind; }

private:
    const int32 m_sampleRate;
    const int m_channels;
    const SampleKind m_kind;
};

/// Stores `sampleFrames` interleaved samples of every channel of `format` in `bytes`, which may have any alignment.
/// Integers are rounded to the nearest, and what lies beyond full scale is clipped; a sample that is no number is
/// silent.
void convertSamples(float const* samples, size_t sampleFrames, HostAudioFormat const& format, char* bytes);

}  // namespace qrtplay
