// Which frames playback still needs.
#include "qrtCacheEvictionAdvisor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "harness/qrtForeignRecord.h"
#include "harness/qrtVirtualTable.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;

SharedPtr<PlayParams> videoParams(int64 current, int64 start, int64 end, int step, PlayParams::PlayMode mode) {
    const auto params = PlayParams::create(Time(), Time(), Time(), Rational(24, 1), step, mode, PlayParams::video_only);
    params->setCurrentFrame(current);
    params->setStartFrame(start);
    params->setEndFrame(end);
    return params;
}

SharedPtr<CacheData> frame(int64 number) {
    return SharedPtr<CacheData>(new ProducedVideoBuffer(number, SharedPtr<VideoBuffer>()));
}

/// The frames from -5 to 30 that the advisor keeps.
std::vector<int64> kept(CacheEvictionAdvisor& advisor) {
    std::vector<int64> frames;
    for (int64 number = -5; number <= 30; ++number) {
        if (!advisor.canEvict("any", frame(number))) frames.push_back(number);
    }
    return frames;
}

}  // namespace

TEST(CacheEvictionAdvisorTest, keepsTwoAheadAndOneBehindTheCurrentFrame) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, 1, PlayParams::single), 2, 1);
    EXPECT_THAT(kept(advisor), ElementsAre(9, 10, 11, 12));
    EXPECT_TRUE(advisor.canEvict("8", frame(8)));
    EXPECT_TRUE(advisor.canEvict("13", frame(13)));
}

TEST(CacheEvictionAdvisorTest, withoutHeadAndTailItKeepsTheCurrentFrameOnly) {
    CacheEvictionAdvisor none(videoParams(10, 0, 100, 1, PlayParams::single), 0, 0);
    EXPECT_THAT(kept(none), ElementsAre(10));
    CacheEvictionAdvisor negative(videoParams(10, 0, 100, 1, PlayParams::single), -3, -1);
    EXPECT_THAT(kept(negative), ElementsAre(10));
}

TEST(CacheEvictionAdvisorTest, walksWithTheStep) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, 3, PlayParams::single), 2, 2);
    EXPECT_THAT(kept(advisor), ElementsAre(4, 7, 10, 13, 16));
}

TEST(CacheEvictionAdvisorTest, playingBackwardsTheHeadLiesBelowTheCurrentFrame) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, -1, PlayParams::single), 3, 1);
    EXPECT_THAT(kept(advisor), ElementsAre(7, 8, 9, 10, 11));
}

TEST(CacheEvictionAdvisorTest, wrapsInLoopMode) {
    CacheEvictionAdvisor atTheEnd(videoParams(20, 0, 20, 1, PlayParams::loop), 2, 1);
    EXPECT_THAT(kept(atTheEnd), ElementsAre(0, 1, 19, 20));
    CacheEvictionAdvisor atTheStart(videoParams(0, 0, 20, 1, PlayParams::loop), 1, 2);
    EXPECT_THAT(kept(atTheStart), ElementsAre(0, 1, 19, 20));
}

TEST(CacheEvictionAdvisorTest, turnsInPingPongMode) {
    CacheEvictionAdvisor advisor(videoParams(19, 0, 20, 1, PlayParams::ping_pong), 4, 0);
    EXPECT_THAT(kept(advisor), ElementsAre(17, 18, 19, 20));
}

TEST(CacheEvictionAdvisorTest, framesBeyondTheEndOfSingleModeAreNotKept) {
    CacheEvictionAdvisor advisor(videoParams(20, 0, 20, 1, PlayParams::single), 3, 0);
    EXPECT_THAT(kept(advisor), ElementsAre(20));
}

TEST(CacheEvictionAdvisorTest, aFailedStepDoesNotEndTheWalk) {
    // Far behind the range every step fails, until the frame number wraps around and lies before the end again.
    constexpr int64 most = std::numeric_limits<int64>::max();
    CacheEvictionAdvisor advisor(videoParams(most - 1, 0, 20, 1, PlayParams::single), 2, 0);
    EXPECT_TRUE(advisor.canEvict("", frame(most)));
    EXPECT_FALSE(advisor.canEvict("", frame(std::numeric_limits<int64>::min())));
}

TEST(CacheEvictionAdvisorTest, withStepZeroItKeepsTheCurrentFrameOnly) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 20, 0, PlayParams::loop), 3, 3);
    EXPECT_THAT(kept(advisor), ElementsAre(10));
}

TEST(CacheEvictionAdvisorTest, followsEverySeekOfTheParametersThatItShares) {
    const auto params = videoParams(10, 0, 100, 1, PlayParams::ping_pong);
    CacheEvictionAdvisor advisor(params, 1, 0);
    EXPECT_THAT(kept(advisor), ElementsAre(10, 11));
    ASSERT_TRUE(params->seek(20).success());
    EXPECT_THAT(kept(advisor), ElementsAre(20, 21));
    ASSERT_TRUE(params->seek(15).success());
    EXPECT_THAT(kept(advisor), ElementsAre(14, 15));
}

TEST(CacheEvictionAdvisorTest, doesNotMoveTheParametersThatItShares) {
    const auto params = videoParams(10, 0, 20, 1, PlayParams::ping_pong);
    const auto before = params->clone();
    CacheEvictionAdvisor advisor(params, 30, 30);
    (void)kept(advisor);
    EXPECT_TRUE(*params == *before);
}

TEST(CacheEvictionAdvisorTest, holdsItsParameters) {
    auto params = videoParams(10, 0, 20, 1, PlayParams::single);
    CacheEvictionAdvisor advisor(params, 1, 0);
    EXPECT_EQ(params->refcount(), 2u);
    params.reset();
    EXPECT_THAT(kept(advisor), ElementsAre(10, 11));
}

TEST(CacheEvictionAdvisorTest, letsARecordGoThatIsNoFrame) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, 1, PlayParams::single), 2, 1);
    EXPECT_TRUE(advisor.canEvict("10", SharedPtr<CacheData>(new ForeignRecord)));
    EXPECT_TRUE(advisor.canEvict("10", SharedPtr<CacheData>()));
}

TEST(CacheEvictionAdvisorTest, asksTheRecordForItsNumberAndNotTheKey) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, 1, PlayParams::single), 0, 0);
    EXPECT_FALSE(advisor.canEvict("99", frame(10)));
    EXPECT_TRUE(advisor.canEvict("10", frame(99)));
}

TEST(CacheEvictionAdvisorTest, walksAtTheEndsOf64Bits) {
    constexpr int64 most = std::numeric_limits<int64>::max();
    constexpr int64 least = std::numeric_limits<int64>::min();
    CacheEvictionAdvisor advisor(videoParams(most, least, most, 1, PlayParams::single), 2, 1);
    EXPECT_FALSE(advisor.canEvict("", frame(most)));
    EXPECT_FALSE(advisor.canEvict("", frame(most - 1)));
    EXPECT_TRUE(advisor.canEvict("", frame(0)));
    CacheEvictionAdvisor lowest(videoParams(10, 0, 100, std::numeric_limits<int>::min(), PlayParams::single), 0, 1);
    EXPECT_FALSE(lowest.canEvict("", frame(10)));
}

TEST(CacheEvictionAdvisorTest, slot4IsTheQuestion) {
    CacheEvictionAdvisor advisor(videoParams(10, 0, 100, 1, PlayParams::single), 2, 1);
    EvictionAdvisorInterfaceBase<SharedPtr<CacheData>>* const base = &advisor;
    const String key("any");
    const SharedPtr<CacheData> wanted = frame(10);
    const SharedPtr<CacheData> unwanted = frame(8);
    using Advisor = EvictionAdvisorInterfaceBase<SharedPtr<CacheData>>;
    EXPECT_FALSE((callSlot<bool, Advisor, String const*, SharedPtr<CacheData> const*>(4, base, &key, &wanted)));
    EXPECT_TRUE((callSlot<bool, Advisor, String const*, SharedPtr<CacheData> const*>(4, base, &key, &unwanted)));
    callSlot<void>(1, base);
    EXPECT_EQ(callSlot<uint32>(3, base), 1u);
    EXPECT_TRUE(callSlot<bool>(2, base));
}

}  // namespace QRT_0_81
