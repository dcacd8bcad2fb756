#pragma once

#include <gtest/gtest.h>

#include <latch>
#include <memory>

#include "foundation/core/qrtList.h"
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "player/qrtPlayer.h"

namespace QRT_0_81 {

inline const VideoBufferResolution smallRgba8(16, 8, 4, 8, false);

/// Play parameters for the frames `start` to `end`.
[[nodiscard]] inline SharedPtr<PlayParams> playParams(int64 current, int64 start, int64 end, int step = 1,
                                                      PlayParams::PlayMode mode = PlayParams::single,
                                                      PlayParams::ProductionMode production = PlayParams::video_only) {
    const Rational rate(24, 1);
    return PlayParams::create(Time(current, rate), Time(start, rate), Time(end - start + 1, rate), rate, step, mode,
                              production);
}

/// A host with an OpenGL context and a player that renders with `FakeGraphEngine`, not yet initialized.
class PlayerFixture : public ::testing::Test {
protected:
    PlayerFixture() {
        FakeGraphEngine::resetScript();
        player = Player::create(smallRgba8, FakeGraphEngine::create);
    }
    void TearDown() override {
        player.reset();
        FakeGraphEngine::resetScript();
    }

    /// Initializes the player with the host's context and gives it frames 0 to `count - 1`.
    void start(int64 count = 100) {
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(setComposition(FakeComposition::create(0, count)).get(), Status::ok);
    }

    Status setComposition(SharedPtr<FakeComposition> const& composition) {
        return player->setComposition(composition, List<SharedPtr<ExternalSegment>>());
    }

    /// Waits until all that was posted so far has run on the player thread.
    void drain() {
        int value = 0;
        (void)player->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value);
    }

    /// Waits until the frame is cached; look-ahead must be going to produce it.
    void waitUntilReady(int64 frame) {
        while (!player->isVideoBufferReady(frame))
            drain();
    }

    /// The frame number painted into the middle of a delivered texture or block, which must be RGBA of 8 bits in
    /// memory.
    [[nodiscard]] int64 frameIn(SharedPtr<VideoBuffer> const& buffer) const {
        const VideoBufferResolution format = buffer->getResolution();
        const size_t middle = (static_cast<size_t>(format.getHeight()) / 2 * static_cast<size_t>(format.getWidth()) +
                               static_cast<size_t>(format.getWidth()) / 2) *
                              4;
        if (buffer->getType() == VideoBuffer::framebufferKind) {
            unsigned int texture = 0;
            if (buffer->getTexture(texture).failure()) return -1;
            return paintedFrame(host.readTexture(texture, format.getWidth(), format.getHeight()).data() + middle);
        }
        void* data = nullptr;
        if (buffer->getData(data).failure()) return -1;
        auto const* const bytes = static_cast<unsigned char const*>(data) + middle;
        return bytes[0] + 256 * bytes[1];
    }

    HostContext host;
    SharedPtr<Player> player;
};

}  // namespace QRT_0_81
