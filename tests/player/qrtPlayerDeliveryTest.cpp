// How a host gets frames: by number, from the cache or produced while it waits.
#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerDelivery : public PlayerFixture {};

TEST_F(PlayerDelivery, beforeInitializeItFailsWithNotInitializedAndAnEmptyBuffer) {
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 256);
    EXPECT_FALSE(buffer);
}

TEST_F(PlayerDelivery, aFrameInVideoMemoryHasItsPixelsInTheHostsOwnContext) {
    start();
    for (const int64 frame : {0, 42, 99, 7}) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
        ASSERT_EQ(buffer->getType(), VideoBuffer::framebufferKind);
        EXPECT_EQ(frameIn(buffer), frame);
    }
}

}  // namespace QRT_0_81
