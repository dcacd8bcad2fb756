#pragma once

#include <algorithm>
#include <string>

#include "faults/qrtFaultyGraphEngine.h"
#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class StereoFloat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 8; }
    [[nodiscard]] int32 getSampleRate() const override { return 48000; }
};

/// A host whose graph engine misbehaves; the messages of the log are caught from the beginning.
class FaultsFixture : public PlayerFixture {
protected:
    FaultsFixture() {
        FaultyGraphEngine::behave();
        player.reset();
        FakeGraphEngine::resetScript();
        player = Player::create(smallRgba8, FaultyGraphEngine::create);
    }
    void TearDown() override {
        FaultyGraphEngine::behave();
        PlayerFixture::TearDown();
    }

    [[nodiscard]] Status fetch(int64 frame, SharedPtr<VideoBuffer>& buffer) {
        return player->getVideoBuffer(frame, buffer);
    }
    [[nodiscard]] Status fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        return fetch(frame, buffer);
    }

    /// Whether a message says so, in these words or among others.
    [[nodiscard]] bool isToldOf(std::string const& words) const {
        const auto lines = log.lines();
        return std::any_of(lines.begin(), lines.end(),
                           [&](std::string const& line) { return line.find(words) != std::string::npos; });
    }

    /// The player works from front to back: a new composition, a frame that is rendered and one that is looked ahead.
    void expectWorking() {
        (void)player->stopProducing();
        ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(fetch(42, buffer).get(), Status::ok);
        EXPECT_EQ(frameIn(buffer), 42);
        buffer.reset();
        ASSERT_EQ(player->startProducing(playParams(60, 0, 99)).get(), Status::ok);
        waitUntilReady(62);
        ASSERT_EQ(player->stopProducing().get(), Status::ok);
    }

    LogCapture log;
};

}  // namespace QRT_0_81
