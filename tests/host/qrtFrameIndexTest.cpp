#include "media/qrtFrameIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

/// Packets of a clip with `ticks` ticks per frame, given by the numbers of their frames in the order of decoding;
/// decoding runs two frames ahead of presentation.
FrameIndex indexOf(std::vector<int64> const& frames, int64 ticks = 10, int64 begin = 1000) {
    FrameIndex index;
    for (size_t i = 0; i < frames.size(); ++i) {
        FrameIndex::Packet packet;
        packet.pts = begin + frames[i] * ticks;
        packet.dts = begin + (static_cast<int64>(i) - 2) * ticks;
        packet.key = i == 0 || frames[i] % 8 == 0;
        index.addPacket(packet);
    }
    return index;
}

TEST(FrameIndex, numbersFramesInTheOrderOfPresentation) {
    FrameIndex index = indexOf({0, 4, 2, 1, 3});
    ASSERT_TRUE(index.finish(10, 0));
    EXPECT_EQ(index.frameCount(), 5);
    EXPECT_EQ(index.packetOfFrame(4), 1);
    EXPECT_EQ(index.frameOfPacket(3), 1);
    EXPECT_EQ(index.frameOfPacket(5), -1);
    EXPECT_EQ(index.frameOfPacket(-1), -1);
}

TEST(FrameIndex, keepsTheNumbersOfFramesAroundThoseThatACutFileLacks) {
    FrameIndex index = indexOf({0, 4, 2, 1, 3, 8, 6});  // 5 and 7 would have come next
    ASSERT_TRUE(index.finish(10, 0));
    EXPECT_EQ(index.frameCount(), 9);
    EXPECT_EQ(index.packetOfFrame(5), -1);
    EXPECT_EQ(index.packetOfFrame(6), 6);
    EXPECT_EQ(index.packetOfFrame(7), -1);
    EXPECT_EQ(index.packetOfFrame(8), 5);
}

TEST(FrameIndex, countsTheFramesThatTheFilesTablePromises) {
    FrameIndex index = indexOf({0, 4, 2, 1, 3});
    ASSERT_TRUE(index.finish(10, 12));
    EXPECT_EQ(index.frameCount(), 12);
    EXPECT_EQ(index.packetOfFrame(11), -1);
}

TEST(FrameIndex, takesTheGapsOfAClipOfVaryingRateForItsOwn) {
    FrameIndex index;
    for (const int64 pts : {0, 10, 50, 60, 200, 1000}) {
        FrameIndex::Packet packet;
        packet.pts = pts;
        packet.dts = pts - 5;
        packet.key = pts == 0;
        index.addPacket(packet);
    }
    ASSERT_TRUE(index.finish(10, 0));
    EXPECT_EQ(index.frameCount(), 6);
}

TEST(FrameIndex, leavesHiddenPacketsOut) {
    FrameIndex index;
    for (int64 i = 0; i < 4; ++i) {
        FrameIndex::Packet packet;
        packet.pts = packet.dts = i;
        packet.key = i == 0;
        packet.hidden = i < 2;
        index.addPacket(packet);
    }
    ASSERT_TRUE(index.finish(1, 0));
    EXPECT_EQ(index.frameCount(), 2);
    EXPECT_EQ(index.packetOfFrame(0), 2);
    EXPECT_EQ(index.startFor(2), 0);
}

TEST(FrameIndex, cannotNumberFramesWithoutTimesOrWithTheSameTime) {
    FrameIndex without = indexOf({0, 1});
    without.addPacket(FrameIndex::Packet());
    EXPECT_FALSE(without.finish(10, 0));
    FrameIndex twice = indexOf({0, 1, 1});
    EXPECT_FALSE(twice.finish(10, 0));

    twice.finishInOrder({0, 2, 1});
    EXPECT_FALSE(twice.isTimed());
    EXPECT_EQ(twice.packetOfFrame(1), 2);
    EXPECT_EQ(twice.frameOfPacket(1), 2);
    EXPECT_EQ(twice.startFor(2), 0);
}

TEST(FrameIndex, startsAtTheLastKeyPacketThatComesFirstBothWays) {
    // 6 and 7 are decoded after the key packet of 8 but shown before it: they need the group before.
    FrameIndex index = indexOf({0, 3, 1, 2, 5, 4, 8, 6, 7, 10, 9});
    ASSERT_TRUE(index.finish(10, 0));
    EXPECT_EQ(index.startFor(index.packetOfFrame(5)), 0);
    EXPECT_EQ(index.startFor(index.packetOfFrame(6)), 0);
    EXPECT_EQ(index.startFor(index.packetOfFrame(8)), 6);
    EXPECT_EQ(index.startFor(index.packetOfFrame(9)), 6);
    EXPECT_EQ(index.startBefore(6), 0);
    EXPECT_EQ(index.startBefore(0), 0);
    EXPECT_EQ(index.keyAfter(0), 6);
    EXPECT_EQ(index.keyAfter(6), index.packetCount());
}

TEST(FrameIndex, spreadsDamageToWhatMayReferToIt) {
    FrameIndex index;
    const std::vector<int64> frames{0, 3, 1, 2, 5, 4, 8, 6, 7, 10, 9};
    for (size_t i = 0; i < frames.size(); ++i) {
        FrameIndex::Packet packet;
        packet.pts = frames[i];
        packet.key = frames[i] % 8 == 0;
        packet.damaged = frames[i] == 5;
        index.addPacket(packet);
    }
    ASSERT_TRUE(index.finish(1, 0));
    std::vector<int64> damaged;
    for (int64 frame = 0; frame < index.frameCount(); ++frame) {
        if (index.packet(index.packetOfFrame(frame)).damaged) damaged.push_back(frame);
    }
    EXPECT_THAT(damaged, ::testing::ElementsAre(4, 5, 6, 7));
}

TEST(FrameIndex, countsAndDropsTheFramesBeforeTheFirstKeyPacket) {
    FrameIndex index = indexOf({6, 7, 8, 5, 9, 10});
    index.addPacket(FrameIndex::Packet{1110, 1030, false, false, false});
    FrameIndex late;
    for (const int64 frame : {2, 1, 4, 3, 6}) {
        FrameIndex::Packet packet;
        packet.pts = frame;
        packet.dts = frame;
        packet.key = frame == 4;
        late.addPacket(packet);
    }
    ASSERT_TRUE(late.finish(1, 0));
    EXPECT_EQ(late.leadingFrames(), 3);
    late.dropFirstFrames(3);
    EXPECT_EQ(late.leadingFrames(), 0);
    EXPECT_EQ(late.packetOfFrame(0), 2);
    EXPECT_EQ(late.frameOfPacket(0), -1);
}

TEST(FrameIndex, survivesBeingEmpty) {
    FrameIndex index;
    ASSERT_TRUE(index.finish(10, 0));
    EXPECT_EQ(index.frameCount(), 0);
    EXPECT_EQ(index.leadingFrames(), 0);
}

}  // namespace
}  // namespace qrtplay
