#pragma once

#include <memory>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "sound/qrtBlockedSoundSource.h"

namespace qrtplay {

/// Sound of one sample rate at another one; sample 0 stays where it is. What is heard at sample n of the input is heard
/// at sample n * output rate / input rate of the output, without delay.
///
/// Threading: one thread at a time.
class ResampledSource final : public BlockedSoundSource {
public:
    /// The rates are positive and differ.
    ResampledSource(std::unique_ptr<SoundSource> input, int inputRate, int outputRate, int channels);

protected:
    Outcome makeBlock(int64 first, float* samples) override;

private:
    [[nodiscard]] bool resample(int64 count, std::vector<float>& output) const;

    const std::unique_ptr<SoundSource> m_input;
    const int m_inputRate;
    const int m_outputRate;
    // Every so many samples of either rate a sample of the one is heard at the same time as one of the other.
    const int64 m_inputPeriod;
    const int64 m_outputPeriod;
    std::vector<float> m_inputSamples;
    std::vector<float> m_outputSamples;
};

}  // namespace qrtplay
