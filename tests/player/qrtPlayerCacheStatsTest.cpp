// Which frames are cached, as runs of consecutive numbers.
#include <thread>
#include <vector>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerCacheStats : public PlayerFixture {
protected:
    using Ranges = std::vector<CacheStats::FrameRange>;

    void startWithRoomFor(int numFrames, int64 first, int64 count) {
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, numFrames).get(), Status::ok);
        ASSERT_EQ(setComposition(FakeComposition::create(first, count)).get(), Status::ok);
    }
    void cache(std::vector<int64> const& frames) {
        for (const int64 frame : frames) {
            SharedPtr<VideoBuffer> buffer;
            ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
        }
    }
    Ranges ranges(CacheStats::CacheType type = CacheStats::CacheType::producer) {
        ConstSharedPtr<CacheStats> stats;
        EXPECT_EQ(player->getCacheStats(type, stats).get(), Status::ok);
        if (!stats) {
            ADD_FAILURE() << "no record";
            return {};
        }
        return {stats->getFrameRanges().begin(), stats->getFrameRanges().end()};
    }
};

TEST_F(PlayerCacheStats, ofAnEmptyCacheAreARecordWithoutRanges) {
    EXPECT_EQ(ranges(), Ranges{}) << "before initialize";
    start();
    EXPECT_EQ(ranges(), Ranges{});
    cache({3});
    ASSERT_EQ(ranges().size(), 1u);
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    EXPECT_EQ(ranges(), Ranges{}) << "a cleared cache";
}

TEST_F(PlayerCacheStats, areRunsInAscendingOrderWhateverTheOrderOfProduction) {
    startWithRoomFor(10, 0, 100);
    cache({11, 4, 9, 3, 12, 5});
    EXPECT_EQ(ranges(), (Ranges{{3, 5}, {9, 9}, {11, 12}}));
}

TEST_F(PlayerCacheStats, sortNegativeFramesFirstAndMergeAcrossZero) {
    startWithRoomFor(10, -20, 40);
    cache({1, -10, 0, -1, 10, -9});
    EXPECT_EQ(ranges(), (Ranges{{-10, -9}, {-1, 1}, {10, 10}}));
}

TEST_F(PlayerCacheStats, followTheCache) {
    start();  // room for 4 framebuffers
    cache({10, 20, 30, 40});
    EXPECT_EQ(ranges(), (Ranges{{10, 10}, {20, 20}, {30, 30}, {40, 40}}));
    cache({50});  // takes the place of the least recently used
    EXPECT_EQ(ranges(), (Ranges{{20, 20}, {30, 30}, {40, 40}, {50, 50}}));
}

TEST_F(PlayerCacheStats, areASnapshotThatLaterChangesLeaveAlone) {
    start();
    cache({1});
    ConstSharedPtr<CacheStats> stats;
    ASSERT_EQ(player->getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    cache({2});
    EXPECT_EQ(stats->getFrameRanges().size(), 1u);
    EXPECT_EQ(stats->getFrameRanges()[0].last, 1);
}

TEST_F(PlayerCacheStats, areANewRecordEachTimeAndReplaceTheCallers) {
    start();
    ConstSharedPtr<CacheStats> first;
    ASSERT_EQ(player->getCacheStats(CacheStats::CacheType::producer, first).get(), Status::ok);
    ConstSharedPtr<CacheStats> second = first;
    ASSERT_EQ(player->getCacheStats(CacheStats::CacheType::producer, second).get(), Status::ok);
    EXPECT_FALSE(first == second);
}

TEST_F(PlayerCacheStats, ofTheGraphEnginesCacheAreTheGraphEngines) {
    start();
    EXPECT_EQ(ranges(CacheStats::CacheType::graph_engine), (Ranges{{100, 200}}));
    FakeGraphEngine::answer("getCacheStats", 88);
    ConstSharedPtr<CacheStats> stats;
    EXPECT_EQ(player->getCacheStats(CacheStats::CacheType::graph_engine, stats).get(), 88);
    EXPECT_TRUE(stats) << "what the graph engine left there is handed on, too";
    EXPECT_EQ(FakeGraphEngine::countOf("getCacheStats"), 2);
}

TEST_F(PlayerCacheStats, ofAnyOtherCacheAreRefusedAndTheCallersRecordStays) {
    start();
    cache({1});
    ConstSharedPtr<CacheStats> before;
    ASSERT_EQ(player->getCacheStats(CacheStats::CacheType::producer, before).get(), Status::ok);
    for (const int type : {2, -1, 1000}) {
        ConstSharedPtr<CacheStats> stats = before;
        EXPECT_EQ(player->getCacheStats(static_cast<CacheStats::CacheType>(type), stats).get(), 4);
        EXPECT_EQ(stats, before);
    }
    EXPECT_EQ(before->getFrameRanges().size(), 1u);
}

TEST_F(PlayerCacheStats, doNotWaitForThePlayerThread) {
    start();
    cache({7});
    std::latch rendering(1);
    std::latch proceed(1);
    FakeGraphEngine::callBeforeRender([&](int64) {
        rendering.count_down();
        proceed.wait();
    });
    std::thread waitingHost([&] {
        SharedPtr<VideoBuffer> buffer;
        (void)player->getVideoBuffer(1, buffer);
    });
    rendering.wait();
    EXPECT_EQ(ranges(), (Ranges{{7, 7}}));
    EXPECT_EQ(ranges(CacheStats::CacheType::graph_engine), (Ranges{{100, 200}}));
    proceed.count_down();
    waitingHost.join();
}

TEST_F(PlayerCacheStats, areWholeWhileFramesComeAndGo) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    for (int64 current = 0; current < 100; ++current) {
        cache({current});
        int64 previous = -2;
        for (auto const& range : ranges()) {
            EXPECT_LE(range.first, range.last);
            EXPECT_GT(range.first, previous + 1) << "neighbours belong into one run";
            previous = range.last;
        }
    }
}

}  // namespace QRT_0_81
