#include "sound/qrtSoundRetimer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace qrtplay {

namespace {

constexpr double fastest = 64;
constexpr double widestFilter = 8;

// Positions are worked out exactly once for so many output samples, and from there with floating point. The stretches
// begin at multiples of their length on the output's grid, so that they do not depend on where a request begins.
constexpr int64 stretch = 1024;

constexpr int zeroCrossings = 16;  // on either side of the filter's middle
constexpr int stepsPerCrossing = 512;

/// A sinc under a Blackman-Harris window: what it lets through of other tones lies 90 dB lower.
std::vector<float> makeFilter() {
    constexpr double pi = std::numbers::pi;
    std::vector<float> filter;
    for (int i = 0; i <= zeroCrossings * stepsPerCrossing + 1; ++i) {
        const double x = static_cast<double>(i) / stepsPerCrossing;
        const double w = pi * std::min(x / zeroCrossings, 1.0);
        const double window = 0.35875 + 0.48829 * std::cos(w) + 0.14128 * std::cos(2 * w) + 0.01168 * std::cos(3 * w);
        filter.push_back(static_cast<float>((i == 0 ? 1.0 : std::sin(pi * x) / (pi * x)) * window));
    }
    return filter;
}

/// At `x` zero crossings from the middle, |x| <= zeroCrossings.
double filterAt(double x) {
    static const std::vector<float> filter = makeFilter();
    const double step = std::abs(x) * stepsPerCrossing;
    const auto index = static_cast<size_t>(step);
    const double rest = step - static_cast<double>(index);
    return filter[index] + rest * (double{filter[index + 1]} - double{filter[index]});
}

}  // namespace

Outcome SoundRetimer::read(SoundSource& source, SoundSpan const& span, int64 first, int64 count, float* samples) {
    const Rational rate(m_rate, 1);
    const int64 passed = first - span.firstSample;
    if (span.speed == ExactTime(1, 1)) return source.read(span.time.nearestFrame(rate) + passed, count, samples);
    if (span.speed == ExactTime(-1, 1))
        return readBackwards(source, span.time.nearestFrame(rate) - passed, count, samples);

    std::fill_n(samples, count * m_channels, 0.0f);
    const double speed = std::abs(span.speed.seconds());
    if (speed == 0 || speed > fastest) return Outcome();
    Outcome worst;
    for (int64 from = first; from < first + count;) {
        const int64 rest = from % stretch;
        const int64 anchor = from - (rest < 0 ? rest + stretch : rest);
        const int64 until = std::min(first + count, anchor + stretch);
        Outcome outcome = interpolate(source, span, anchor, from, until - from, samples + (from - first) * m_channels);
        if (outcome.failed()) worst = outcome;
        from = until;
    }
    return worst;
}

// Writes the samples `last`, `last` - 1, ...
Outcome SoundRetimer::readBackwards(SoundSource& source, int64 last, int64 count, float* samples) {
    m_input.resize(static_cast<size_t>(count * m_channels));
    Outcome outcome = source.read(last - count + 1, count, m_input.data());
    for (int64 i = 0; i < count; ++i)
        std::copy_n(m_input.data() + (count - 1 - i) * m_channels, m_channels, samples + i * m_channels);
    return outcome;
}

Outcome SoundRetimer::interpolate(SoundSource& source, SoundSpan const& span, int64 anchor, int64 first, int64 count,
                                  float* samples) {
    const ExactTime time = span.time + ExactTime(anchor - span.firstSample, m_rate) * span.speed;
    const int64 whole = time.frameAt(Rational(m_rate, 1));
    const double rest = (time - ExactTime(whole, m_rate)).seconds() * m_rate;
    const double speed = span.speed.seconds();
    const double width = std::clamp(std::abs(speed), 1.0, widestFilter);
    const auto positionOf = [&](int64 sample) { return rest + static_cast<double>(sample - anchor) * speed; };

    const auto [lowest, highest] = std::minmax({positionOf(first), positionOf(first + count - 1)});
    const auto reach = static_cast<int64>(std::ceil(zeroCrossings * width)) + 1;
    const int64 begin = static_cast<int64>(std::floor(lowest)) - reach;
    const int64 length = static_cast<int64>(std::ceil(highest)) + reach + 1 - begin;
    m_input.resize(static_cast<size_t>(length * m_channels));
    Outcome outcome = source.read(whole + begin, length, m_input.data());
    for (int64 i = 0; i < count; ++i)
        interpolateAt(positionOf(first + i) - static_cast<double>(begin), width, samples + i * m_channels);
    return outcome;
}

// `position`: in m_input; `width`: by which the filter is stretched, so that it passes only what the output can hold.
void SoundRetimer::interpolateAt(double position, double width, float* sample) const {
    const double reach = zeroCrossings * width;
    const auto last = static_cast<int64>(std::floor(position + reach));
    double sums[8] = {};
    for (auto n = static_cast<int64>(std::ceil(position - reach)); n <= last; ++n) {
        const double weight = filterAt((position - static_cast<double>(n)) / width) / width;
        for (int c = 0; c < m_channels; ++c)
            sums[c] += weight * double{m_input[static_cast<size_t>(n * m_channels + c)]};
    }
    for (int c = 0; c < m_channels; ++c)
        sample[c] = static_cast<float>(sums[c]);
}

}  // namespace qrtplay
