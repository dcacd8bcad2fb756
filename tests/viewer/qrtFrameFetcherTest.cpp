#include "playback/qrtFrameFetcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <vector>

#include "viewer/qrtTestPlayer.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// What a fetcher has delivered; it can be made to stand still while it delivers.
class Deliveries {
public:
    [[nodiscard]] FrameFetcher::Deliver receiver() {
        return [this](FetchedFrame frame) { receive(std::move(frame)); };
    }
    void close() {
        const std::lock_guard lock(m_mutex);
        m_isOpen = false;
    }
    void open() {
        {
            const std::lock_guard lock(m_mutex);
            m_isOpen = true;
        }
        m_changed.notify_all();
    }
    /// Waits until that many have come.
    void waitFor(size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_frames.size() >= count; });
    }
    [[nodiscard]] std::vector<FetchedFrame> frames() {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }
    [[nodiscard]] std::vector<uint64> requests() {
        std::vector<uint64> requests;
        for (FetchedFrame const& frame : frames())
            requests.push_back(frame.request);
        return requests;
    }
    /// Those that have been taken to the end.
    [[nodiscard]] int finished() {
        const std::lock_guard lock(m_mutex);
        return m_finished;
    }

    std::function<void(FetchedFrame const&)> onDelivery;  ///< on the fetcher's thread

private:
    void receive(FetchedFrame frame) {
        if (onDelivery) onDelivery(frame);
        std::unique_lock lock(m_mutex);
        if (!m_frames.empty()) m_frames.back().buffer.reset();  // the player has only so many
        m_frames.push_back(std::move(frame));
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
        ++m_finished;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = true;
    int m_finished = 0;
    std::vector<FetchedFrame> m_frames;
};

class FrameFetcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        player = openTestPlayer({"bframes.mp4"});
        ASSERT_TRUE(player);
    }
    [[nodiscard]] SharedPtr<PlayParams> parameters(int64 first, int64 last, int64 current) const {
        return player->parameters(first, last, current, 1, PlayParams::single);
    }

    std::unique_ptr<TimelinePlayer> player;
    Deliveries deliveries;
};

TEST_F(FrameFetcherTest, deliversTheFrameOfTheNumberOnAThreadOfItsOwn) {
    std::thread::id thread;
    deliveries.onDelivery = [&](FetchedFrame const&) { thread = std::this_thread::get_id(); };
    FrameFetcher fetcher(*player, deliveries.receiver());
    fetcher.fetch(17, 5);
    fetcher.finish();
    const auto frames = deliveries.frames();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].frame, 17);
    EXPECT_EQ(frames[0].request, 5u);
    EXPECT_EQ(frames[0].failure, "");
    EXPECT_GT(frames[0].nanoseconds, 0);
    ASSERT_FALSE(bytesOf(frames[0].buffer).empty());
    EXPECT_EQ(bytesOf(frames[0].buffer), bytesOf(*player, 17));
    EXPECT_NE(bytesOf(frames[0].buffer), bytesOf(*player, 18));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(FrameFetcherTest, tellsWhetherAFrameWasRenderedAhead) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    fetcher.fetch(30, 1);
    fetcher.finish();
    fetcher.produce(parameters(0, 47, 10));
    ASSERT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(11); }));
    fetcher.fetch(11, 2);
    fetcher.finish();
    const auto frames = deliveries.frames();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_FALSE(frames[0].wasReady);
    EXPECT_TRUE(frames[1].wasReady);
}

TEST_F(FrameFetcherTest, fulfilsTheLatestWishOnly) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    deliveries.close();
    fetcher.fetch(0, 1);
    deliveries.waitFor(1);
    fetcher.fetch(5, 2);
    fetcher.fetch(6, 3);
    fetcher.fetch(7, 4);
    deliveries.open();
    fetcher.finish();
    EXPECT_THAT(deliveries.requests(), ElementsAre(1, 4));
    EXPECT_EQ(deliveries.frames()[1].frame, 7);
}

TEST_F(FrameFetcherTest, rendersAheadBeforeItFetches) {
    Status whileDelivering;
    deliveries.onDelivery = [&](FetchedFrame const& frame) {
        if (frame.request == 2) whileDelivering = player->player().startProducing(parameters(0, 47, 0));
    };
    FrameFetcher fetcher(*player, deliveries.receiver());
    deliveries.close();
    fetcher.fetch(0, 1);
    deliveries.waitFor(1);
    fetcher.fetch(20, 2);
    fetcher.produce(parameters(0, 47, 10));
    deliveries.open();
    fetcher.finish();
    EXPECT_THAT(deliveries.requests(), ElementsAre(1, 2));
    EXPECT_EQ(whileDelivering, Status::already_producing);
}

TEST_F(FrameFetcherTest, rendersAheadByTheLatestParameters) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    fetcher.produce(parameters(0, 9, 0));
    ASSERT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(1); }));
    fetcher.produce(parameters(20, 29, 20));
    EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(21); }));
    EXPECT_TRUE(deliveries.frames().empty());
}

/// What the player was told of the place before the jump waits until it has rendered what it is at.
TEST_F(FrameFetcherTest, rendersAheadFromTheFrameThatWasJumpedTo) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    uint64 request = 0;
    for (int64 target = 20; target < 40; ++target) {
        fetcher.produce(parameters(0, 47, 0));
        for (const int64 frame : {0, 0, 0})
            ASSERT_TRUE(bytesOf(*player, frame).size() > 0);
        fetcher.fetch(target, ++request);
        fetcher.finish();
        EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(target + 1); })) << target;
    }
}

TEST_F(FrameFetcherTest, copiesTheParameters) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    deliveries.close();
    fetcher.fetch(0, 1);
    deliveries.waitFor(1);
    const auto given = parameters(0, 47, 30);
    fetcher.produce(given);
    given->setCurrentFrame(10);
    deliveries.open();
    EXPECT_TRUE(processUntil([&] { return player->player().isVideoBufferReady(31); }));
    EXPECT_FALSE(player->player().isVideoBufferReady(11));
}

TEST_F(FrameFetcherTest, leavesNothingUnderWayWhenItHasStopped) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    for (uint64 round = 0; round < 50; ++round) {
        fetcher.produce(parameters(0, 47, 0));
        fetcher.fetch(static_cast<int64>(round % 48), 2 * round + 1);
        fetcher.stop();
        const size_t delivered = deliveries.frames().size();
        ASSERT_EQ(player->player().stopProducing(), Status::not_producing);
        fetcher.fetch(3, 2 * round + 2);
        fetcher.finish();
        // What was forgotten does not come afterwards.
        ASSERT_EQ(deliveries.frames().size(), delivered + 1);
        ASSERT_EQ(deliveries.requests().back(), 2 * round + 2);
    }
}

TEST_F(FrameFetcherTest, deliversARefusalToRenderAhead) {
    FrameFetcher fetcher(*player, deliveries.receiver());
    fetcher.produce(parameters(0, 400, 12));
    fetcher.fetch(4, 8);
    fetcher.finish();
    const auto frames = deliveries.frames();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].request, 0u);
    EXPECT_EQ(frames[0].frame, 12);
    EXPECT_FALSE(frames[0].buffer);
    EXPECT_THAT(frames[0].failure, HasSubstr("bframes.mp4: frames 0-400 cannot be played: "));
    EXPECT_EQ(frames[1].request, 8u);
    EXPECT_TRUE(frames[1].buffer);
}

TEST_F(FrameFetcherTest, saysWhyAFrameCannotBeHad) {
    player = openTestPlayer({"truncated.mp4"});
    ASSERT_TRUE(player);
    FrameFetcher fetcher(*player, deliveries.receiver());
    fetcher.fetch(30, 1);
    fetcher.finish();
    fetcher.fetch(10, 2);
    fetcher.finish();
    const auto frames = deliveries.frames();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_FALSE(frames[0].buffer);
    EXPECT_EQ(frames[0].failure, clipPath("truncated.mp4") + ": frame 30: missing, the file is cut off");
    EXPECT_TRUE(frames[1].buffer);
    EXPECT_EQ(frames[1].failure, "");
}

TEST_F(FrameFetcherTest, deliversWhatIsUnderWayBeforeItEnds) {
    std::future<void> opened;
    {
        FrameFetcher fetcher(*player, deliveries.receiver());
        deliveries.close();
        fetcher.fetch(3, 1);
        deliveries.waitFor(1);
        fetcher.fetch(9, 2);
        opened = std::async(std::launch::async, [&] { deliveries.open(); });
    }
    EXPECT_GE(deliveries.finished(), 1);
    EXPECT_EQ(deliveries.frames().size(), static_cast<size_t>(deliveries.finished()));
}

}  // namespace
}  // namespace qrtplay
