#include "playback/qrtFramePuller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "player/harness/qrtLogCapture.h"
#include "viewer/qrtTestPlayer.h"

namespace qrtplay {
namespace {

/// The player logs every frame that could not be had when it was asked for.
class FramePullerTest : public ::testing::Test {
protected:
    void open(std::string const& clip) {
        player = openTestPlayer({clip});
        ASSERT_TRUE(player);
        puller = std::make_unique<FramePuller>(*player);
        ASSERT_TRUE(puller->produce(player->parameters(0, 47, 0, 1, PlayParams::single)).success());
    }
    [[nodiscard]] bool fetch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        bool wasReady = false;
        return puller->fetch(frame, buffer, wasReady).success();
    }
    /// Takes all frames that the player can lend; what it had rendered is gone.
    [[nodiscard]] std::vector<SharedPtr<VideoBuffer>> takeAllFrames() const {
        std::vector<SharedPtr<VideoBuffer>> taken(1);
        for (int64 frame = 0; player->player().getVideoBuffer(frame, taken.back()).success(); ++frame)
            taken.emplace_back();
        return taken;
    }
    [[nodiscard]] static int64 refusals(LogCapture const& log) {
        const std::vector<std::string> lines = log.lines();
        return std::count_if(lines.begin(), lines.end(),
                             [](std::string const& line) { return line.starts_with("getVideoBuffer() failed"); });
    }
    static bool isNot() { return false; }

    std::unique_ptr<TimelinePlayer> player;
    std::unique_ptr<FramePuller> puller;
};

TEST_F(FramePullerTest, tellsThePlayerOnceMoreWhereItHasJumpedTo) {
    open("bframes.mp4");
    ASSERT_TRUE(fetch(20));
    const auto taken = takeAllFrames();
    const LogCapture log;
    puller->settle(isNot);
    EXPECT_EQ(refusals(log), 1);
    puller->settle(isNot);
    EXPECT_EQ(refusals(log), 1) << "it is there";
}

TEST_F(FramePullerTest, asksOnceForABrokenFrameThatItHasJumpedTo) {
    open("truncated.mp4");
    const LogCapture log;
    EXPECT_FALSE(fetch(30));
    puller->settle(isNot);
    EXPECT_EQ(refusals(log), 1);
    EXPECT_TRUE(fetch(5));
    EXPECT_FALSE(fetch(31));
    puller->settle(isNot);
    EXPECT_EQ(refusals(log), 2);
}

TEST_F(FramePullerTest, leavesThePlaceForLaterWhenAnotherFrameIsWanted) {
    open("bframes.mp4");
    ASSERT_TRUE(fetch(20));
    const auto taken = takeAllFrames();
    const LogCapture log;
    puller->settle([] { return true; });
    EXPECT_EQ(refusals(log), 0);
    puller->settle(isNot);
    EXPECT_EQ(refusals(log), 1);
}

}  // namespace
}  // namespace qrtplay
