#include "sound/qrtResampledSource.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "media/qrtAv.h"
#include "sound/qrtSwr.h"

namespace qrtplay {

namespace {

constexpr int64 usualBlockLength = 1 << 14;

int64 roundedUp(int64 value, int64 step) {
    return (value + step - 1) / step * step;
}

/// Input samples on either side of an output sample that it may depend on, generously: the filter of libswresample
/// takes 16 on either side, and as many times more as the output's rate is lower.
int64 reach(int inputRate, int outputRate) {
    return 64 + 64 * std::max<int64>(1, (inputRate + outputRate - 1) / outputRate);
}

}  // namespace

ResampledSource::ResampledSource(std::unique_ptr<SoundSource> input, int inputRate, int outputRate, int channels)
    : BlockedSoundSource(roundedUp(usualBlockLength, outputRate / std::gcd(inputRate, outputRate)), channels),
      m_input(std::move(input)),
      m_inputRate(inputRate),
      m_outputRate(outputRate),
      m_inputPeriod(inputRate / std::gcd(inputRate, outputRate)),
      m_outputPeriod(outputRate / std::gcd(inputRate, outputRate)) {}

Outcome ResampledSource::makeBlock(int64 first, float* samples) {
    const int64 margin = reach(m_inputRate, m_outputRate);
    // The resampler begins where the grids of both rates meet, so that its first output sample is its first input
    // sample.
    const int64 lead = roundedUp(margin, m_inputPeriod);
    const int64 body = samplesPerBlock() / m_outputPeriod * m_inputPeriod;
    const int64 begin = first / m_outputPeriod * m_inputPeriod - lead;
    const int64 count = lead + body + margin;

    m_inputSamples.resize(static_cast<size_t>(count * channels()));
    Outcome outcome = m_input->read(begin, count, m_inputSamples.data());
    if (!resample(count, m_outputSamples)) return Outcome::failure("out of memory for resampling sound");
    const int64 skipped = lead / m_inputPeriod * m_outputPeriod;
    std::copy_n(m_outputSamples.data() + skipped * channels(), samplesPerBlock() * channels(), samples);
    return outcome;
}

// Resamples all `count` samples of the input afresh.
bool ResampledSource::resample(int64 count, std::vector<float>& output) const {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels());
    SwrContext* made = nullptr;
    const int allocated = swr_alloc_set_opts2(&made, &layout, AV_SAMPLE_FMT_FLT, m_outputRate, &layout,
                                              AV_SAMPLE_FMT_FLT, m_inputRate, 0, nullptr);
    const SwrPtr context(made);
    if (allocated < 0 || swr_init(made) < 0) return false;

    const int64 room = av_rescale_rnd(count, m_outputRate, m_inputRate, AV_ROUND_UP) + 1;
    output.assign(static_cast<size_t>(room * channels()), 0.0f);
    auto* target = reinterpret_cast<uint8_t*>(output.data());
    auto const* source = reinterpret_cast<uint8_t const*>(m_inputSamples.data());
    return swr_convert(made, &target, static_cast<int>(room), &source, static_cast<int>(count)) >= 0;
}

}  // namespace qrtplay
