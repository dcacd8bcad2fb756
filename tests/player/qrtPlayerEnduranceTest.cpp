// A player that comes and goes a thousand times leaves its host as it was.
#include <malloc.h>

#include "harness/qrtPlayerFixture.h"
#include "sanitizers/qrtSanitizer.h"

namespace QRT_0_81 {

class PlayerEndurance : public PlayerFixture {};

namespace {

constexpr int numRounds = isUnderSanitizer ? 50 : 1000;  // races and leaks do not wait for the thousandth round
constexpr bool canMeasureHeap = !isUnderSanitizer;       // the sanitizers' allocators keep no such count

size_t bytesInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace

TEST_F(PlayerEndurance, aThousandLivesLeaveNoTextureNoFramebufferAndNoGrowthBehind) {
    constexpr int numWarmUpRounds = numRounds / 5;  // drivers fill caches of their own at first
    size_t bytesAfterWarmUp = 0;
    for (int round = 0; round < numRounds; ++round) {
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(round % 10, buffer).get(), Status::ok);
        if (round % 2 == 0) buffer.reset();  // half of the frames outlive their player's life
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
        if (round == numWarmUpRounds) bytesAfterWarmUp = bytesInUse();
        FakeGraphEngine::clearJournal();
    }
    EXPECT_EQ(host.countTextures(), 0);
    EXPECT_EQ(host.countFramebuffers(), 0);
    if (canMeasureHeap) {
        constexpr size_t noise = 64 * 1024;  // for 800 rounds: a single lost object of 82 bytes a round shows
        EXPECT_LT(bytesInUse(), bytesAfterWarmUp + noise);
    }
}

TEST_F(PlayerEndurance, aThousandBudgetsForSegmentTexturesLeaveNoTextureBehind) {
    start();
    const int before = host.countTextures();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    for (int round = 0; round < numRounds; ++round) {
        EXPECT_EQ(player
                      ->setExternalSegmentCacheConstraint(Resource::Type::vram, ResourceConstraint::ResizeMode::fixed,
                                                          0, static_cast<uint64>(1 + round % 7))
                      .get(),
                  Status::ok);
    }
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    drain();
    EXPECT_EQ(host.countTextures(), before);
}

TEST_F(PlayerEndurance, aThousandChangesOfResolutionLeaveNoTextureBehind) {
    start();
    const int before = host.countTextures();
    for (int round = 0; round < numRounds; ++round) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(round % 100, buffer).get(), Status::ok);
        ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(16 + round % 3, 8, 4, 8, false)).get(), Status::ok);
    }
    drain();
    EXPECT_EQ(host.countTextures(), before);
}

}  // namespace QRT_0_81
