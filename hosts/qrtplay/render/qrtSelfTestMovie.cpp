#include "render/qrtSelfTestMovie.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "encode/qrtMovieFile.h"

namespace qrtplay {

namespace {

constexpr int64 samplesPerFrame = movieSampleRate / SelfTestMovie::frameRate;
constexpr int64 impulseAt = 5 * samplesPerFrame + 7;

}  // namespace

PixelBlock SelfTestMovie::picture(int64 frame) {
    PixelBlock block(width, height, PixelFormat::rgba8);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* const pixel = block.row(y) + std::ptrdiff_t{x} * 4;
            pixel[0] = static_cast<std::uint8_t>(x * 4);
            pixel[1] = static_cast<std::uint8_t>(y * 7);
            pixel[2] = static_cast<std::uint8_t>(frame * 20);
            pixel[3] = UINT8_MAX;
        }
    }
    return block;
}

std::vector<float> SelfTestMovie::sound() {
    std::vector<float> samples(static_cast<size_t>(frameCount * samplesPerFrame) * movieChannels);
    constexpr double hertz = 440;
    constexpr double loudness = 0.25;
    for (size_t i = 0; i < samples.size() / movieChannels; ++i) {
        const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / movieSampleRate;
        samples[i * movieChannels] = static_cast<float>(loudness * std::sin(angle));
        samples[i * movieChannels + 1] = static_cast<float>(loudness * std::cos(angle));
    }
    samples[static_cast<size_t>(impulseAt) * movieChannels] = 0.75F;
    return samples;
}

Outcome SelfTestMovie::write(std::string const& path) {
    MovieSettings settings;
    settings.format = {FileKind::mkv, VideoCodec::ffv1, PixelFormat::rgba8, 0};
    settings.width = width;
    settings.height = height;
    settings.rate = Rational(frameRate, 1);
    settings.hasSound = true;
    std::unique_ptr<MovieFile> file;
    if (Outcome outcome = MovieFile::open(path, settings, file); outcome.failed()) return outcome;
    const std::vector<float> samples = sound();
    for (int64 frame = 0; frame < frameCount; ++frame) {
        const auto begin = samples.begin() + frame * samplesPerFrame * movieChannels;
        if (Outcome outcome = file->addPicture(picture(frame)); outcome.failed()) return outcome;
        Outcome outcome = file->addSound(std::vector<float>(begin, begin + samplesPerFrame * movieChannels));
        if (outcome.failed()) return outcome;
    }
    return file->finish();
}

}  // namespace qrtplay
