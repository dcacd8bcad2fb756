#include "sound/qrtHostAudioFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace qrtplay {

namespace {

/// The nearest integer of `bits` bits to `sample` times full scale.
int32 quantized(float sample, int bits) {
    if (std::isnan(sample)) return 0;
    const double scale = std::ldexp(1.0, bits - 1);
    // Doubles hold every integer of 32 bits and the float exactly.
    return static_cast<int32>(std::clamp(std::nearbyint(double{sample} * scale), -scale, scale - 1));
}

template <class Sample, class Convert>
void store(float const* samples, size_t count, char* bytes, Convert const& convert) {
    for (size_t i = 0; i < count; ++i) {
        const Sample sample = convert(samples[i]);
        std::memcpy(bytes + i * sizeof(sample), &sample, sizeof(sample));
    }
}

}  // namespace

size_t HostAudioFormat::getSizeInBytes(size_t sampleFrames) const {
    const size_t bytesPerSample = m_kind == SampleKind::int16 ? sizeof(int16_t) : sizeof(int32_t);
    return sampleFrames * static_cast<size_t>(m_channels) * bytesPerSample;
}

void convertSamples(float const* samples, size_t sampleFrames, HostAudioFormat const& format, char* bytes) {
    const size_t count = sampleFrames * static_cast<size_t>(format.channels());
    switch (format.kind()) {
        case SampleKind::float32:
            store<float>(samples, count, bytes, [](float sample) { return std::isnan(sample) ? 0.0f : sample; });
            break;
        case SampleKind::int16:
            store<int16_t>(samples, count, bytes, [](float s) { return static_cast<int16_t>(quantized(s, 16)); });
            break;
        case SampleKind::int24_in_32:
            store<int32>(samples, count, bytes, [](float s) { return quantized(s, 24) * 256; });
            break;
        case SampleKind::int32: store<int32>(samples, count, bytes, [](float s) { return quantized(s, 32); }); break;
    }
}

}  // namespace qrtplay
