// A host that plays sound: pulls blocks of samples from the player as a sound card would, and writes them into a file.
//
//   audio_host FILE.wav
#include <QGuiApplication>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <thread>
#include <vector>

#include "common/bar_graph_engine.h"
#include "common/check.h"
#include "player/qrtPlayer.h"

using namespace examples;

namespace {

constexpr int32 sampleRate = 48000;
constexpr uint64 numChannels = 2;
using Sample = std::int16_t;

/// What the samples look like: 16 bits, the channels beside each other. Host and graph engine agree on it; the player
/// asks only for these two numbers.
class StereoFormat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override {
        return sampleFrames * numChannels * sizeof(Sample);
    }
    [[nodiscard]] int32 getSampleRate() const override { return sampleRate; }
};

/// Sounds an A, the same in both channels.
class ToneGraphEngine final : public BarGraphEngine {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new ToneGraphEngine);
    }

    /// On whatever thread pulls, possibly while a frame is being rendered: touches nothing that both would need.
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                     size_t position) override {
        if (!format) return Status::invalid_argument;
        const size_t numFrames = bytes / format->getSizeInBytes(1);
        for (size_t i = 0; i < numFrames; ++i) {
            const double seconds = static_cast<double>(position + i) / format->getSampleRate();
            const auto sample = static_cast<Sample>(16384 * std::sin(2 * 3.141592653589793 * 440 * seconds));
            for (size_t channel = 0; channel < numChannels; ++channel)
                std::memcpy(buffer + (i * numChannels + channel) * sizeof(Sample), &sample, sizeof(Sample));
        }
        return Status();
    }
};

/// What a sound card's callback does, on a thread of its own: asks for the next block, which begins where the last one
/// has ended. The position counts sample frames from the composition's time 0 on.
std::vector<Sample> pull(Player& player, uint64 numFrames) {
    constexpr uint64 framesPerBlock = 480;
    std::vector<Sample> samples(numFrames * numChannels);
    for (uint64 position = 0; position < numFrames; position += framesPerBlock) {
        const uint64 count = std::min(framesPerBlock, numFrames - position);
        auto* const block = reinterpret_cast<char*>(samples.data() + position * numChannels);
        check(player.fillAudioBuffer(block, count * numChannels * sizeof(Sample), position));
    }
    return samples;
}

/// Whether all of it is in the file.
bool writeWave(char const* path, std::vector<Sample> const& samples) {
    constexpr std::uint32_t frameSize = numChannels * sizeof(Sample);
    const auto size = static_cast<std::uint32_t>(samples.size() * sizeof(Sample));
    std::ofstream file(path, std::ios::binary);
    const auto number = [&file](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.put(static_cast<char>(value >> 8 * i));
    };
    file << "RIFF";
    number(36 + size, 4);
    file << "WAVEfmt ";
    number(16, 4);
    number(1, 2);  // plain numbers
    number(numChannels, 2);
    number(sampleRate, 4);
    number(sampleRate * frameSize, 4);
    number(frameSize, 2);
    number(8 * sizeof(Sample), 2);
    file << "data";
    number(size, 4);
    file.write(reinterpret_cast<char const*>(samples.data()), size);
    return static_cast<bool>(file.flush());
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: audio_host FILE.wav" << std::endl;
        return EXIT_FAILURE;
    }
    constexpr int64 numFrames = 48;  // two seconds of pictures, and as much sound

    const SharedPtr<Player> player =
        Player::create(VideoBufferResolution(64, 36, 4, 8, false), ToneGraphEngine::create);
    check(player->initialize(nullptr, nullptr));
    check(player->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFormat)));
    check(player->setComposition(SharedPtr<Composition>(new Clip(numFrames)), {}));
    const Time start(0, frameRate);
    check(player->startProducing(PlayParams::create(start, start, Time(numFrames, frameRate), frameRate, 1,
                                                    PlayParams::single, PlayParams::all)));

    std::vector<Sample> samples;
    std::thread soundCard([&] { samples = pull(*player, 2 * sampleRate); });
    soundCard.join();
    check(player->stopProducing());
    check(player->uninitialize());

    if (!writeWave(argv[1], samples)) {
        std::cerr << "audio_host: " << argv[1] << " cannot be written" << std::endl;
        return EXIT_FAILURE;
    }
    std::cout << samples.size() / numChannels << " sample frames in " << argv[1] << std::endl;
    return EXIT_SUCCESS;
}
