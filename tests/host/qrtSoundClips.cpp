#include "host/qrtSoundClips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "sound/qrtSoundFileSource.h"

namespace qrtplay {

std::string soundClipPath(std::string const& name) {
    return std::string(QRT_SOUND_CLIPS) + "/" + name;
}

std::vector<float> referenceSound(std::string const& name) {
    std::ifstream file(soundClipPath(name), std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
    EXPECT_FALSE(bytes.empty()) << name;
    std::vector<float> samples(bytes.size() / sizeof(float));
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

std::shared_ptr<SoundFile const> openSoundFile(std::string const& name) {
    std::shared_ptr<SoundFile const> file;
    const Outcome outcome = SoundFile::open(soundClipPath(name), file);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return file;
}

std::unique_ptr<SoundSource> soundOf(std::string const& name, std::optional<ExactTime> const& zero, int channels) {
    const auto file = openSoundFile(name);
    if (!file) return nullptr;
    std::unique_ptr<SoundFileSource> source;
    const Outcome outcome =
        SoundFileSource::open(file, zero, channels == 0 ? file->facts().channels : channels, source);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return source;
}

std::vector<float> readSound(SoundSource& source, int64 first, int64 count, int channels) {
    std::vector<float> samples(static_cast<size_t>(count * channels), 99.0f);
    const Outcome outcome = source.read(first, count, samples.data());
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return samples;
}

std::vector<float> readSoundInDisorder(SoundSource& source, int64 first, int64 count, int channels) {
    std::vector<float> samples(static_cast<size_t>(count * channels), 99.0f);
    for (auto const& [from, length] : portions(first, count)) {
        const std::vector<float> portion = readSound(source, from, length, channels);
        std::copy(portion.begin(), portion.end(), samples.begin() + (from - first) * channels);
    }
    return samples;
}

std::vector<std::pair<int64, int64>> portions(int64 first, int64 count) {
    std::mt19937 random(2024);
    std::vector<std::pair<int64, int64>> portions;
    for (int64 from = first; from < first + count;) {
        const int64 length = std::min<int64>(1 + static_cast<int64>(random() % 20000), first + count - from);
        portions.emplace_back(from, length);
        from += length;
    }
    std::shuffle(portions.begin(), portions.end(), random);
    return portions;
}

size_t peakOf(std::vector<float> const& samples) {
    const auto peak =
        std::max_element(samples.begin(), samples.end(), [](float a, float b) { return std::abs(a) < std::abs(b); });
    return static_cast<size_t>(peak - samples.begin());
}

double differenceOf(std::vector<float> const& a, std::vector<float> const& b) {
    if (a.size() != b.size()) return 1e9;
    double largest = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const double difference = std::abs(double{a[i]} - double{b[i]});
        if (!(difference <= largest)) largest = difference;
    }
    return largest;
}

Outcome ComputedSound::read(int64 first, int64 count, float* samples) {
    for (int64 i = 0; i < count; ++i) {
        for (int c = 0; c < m_channels; ++c)
            *samples++ = m_value(first + i, c);
    }
    return Outcome();
}

}  // namespace qrtplay
