// The producer cache: under which keys frames are kept, and which go when room is needed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "harness/qrtForeignRecord.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtPlayerImplInspector.h"
#include "harness/qrtPoolObserver.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtThreadChances.h"
#include "qrtCacheEvictionAdvisor.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Inspector = PlayerImplInspector;

}  // namespace

class PlayerImplCache : public ::testing::Test {
protected:
    PlayerImplCache() { EXPECT_EQ(pool->setup(10, ResourcePool::SizeUnit::buffers, small).get(), Status::ok); }

    SharedPtr<VideoBuffer> newBuffer() { return VideoBufferPrivate::create(pool, true); }
    void put(std::initializer_list<int64> frames) {
        for (const int64 frame : frames)
            ASSERT_EQ(Inspector::cachePut(engine, frame, newBuffer()).get(), Status::ok);
    }
    bool contains(int64 frame) { return Inspector::cacheContains(engine, frame); }
    /// The frames from 0 to 20 that are cached.
    std::vector<int64> cached() {
        std::vector<int64> frames;
        for (int64 frame = 0; frame <= 20; ++frame) {
            if (contains(frame)) frames.push_back(frame);
        }
        return frames;
    }

    /// What start producing does to the cache: frames 9 to 12 are wanted.
    void startRun() {
        const auto params =
            PlayParams::create(Time(), Time(), Time(), Rational(24, 1), 1, PlayParams::single, PlayParams::video_only);
        params->setCurrentFrame(10);
        params->setEndFrame(100);
        const SharedPtr<EvictionAdvisorInterfaceBase<SharedPtr<CacheData>>> advisor(
            new CacheEvictionAdvisor(params, 2, 1));
        ASSERT_EQ(Inspector::cache(engine).setEvictionAdvisor(advisor).get(), Status::ok);
        Inspector::setProducing(engine, true);
    }
    void stopRun() {
        ASSERT_EQ(Inspector::cache(engine).setEvictionAdvisor(nullptr).get(), Status::ok);
        Inspector::setProducing(engine, false);
    }

    const SharedPtr<ResourcePoolRAM> pool = ResourcePoolRAM::create();
    PlayerImpl engine{small, nullptr};
};

// ---- Keys and records -----------------------------------------------------------------------------------------------

TEST_F(PlayerImplCache, theKeyIsTheFramesNumberInDecimal) {
    struct Case {
        int64 frame;
        char const* key;
    };
    for (Case const& entry :
         {Case{0, "0"}, Case{7, "7"}, Case{-1, "-1"}, Case{42, "42"}, Case{-3, "-3"}, Case{10000000000, "10000000000"},
          Case{INT64_MAX, "9223372036854775807"}, Case{INT64_MIN, "-9223372036854775808"}}) {
        put({entry.frame});
        EXPECT_TRUE(Inspector::cache(engine).containsKey(entry.key)) << entry.key;
        EXPECT_EQ(Inspector::cache(engine).size(), 1u);
        EXPECT_EQ(Inspector::cacheErase(engine, entry.frame).get(), Status::ok);
        EXPECT_TRUE(Inspector::cache(engine).empty());
    }
}

TEST_F(PlayerImplCache, aFrameThatWasPutIsFound) {
    const SharedPtr<VideoBuffer> buffer = newBuffer();
    ASSERT_EQ(Inspector::cachePut(engine, 5, buffer).get(), Status::ok);
    for (const int32 timeoutMs : {0, 1}) {
        SharedPtr<VideoBuffer> found;
        EXPECT_EQ(Inspector::cacheGet(engine, 5, found, timeoutMs).get(), Status::ok);
        EXPECT_TRUE(found == buffer);
    }
    EXPECT_TRUE(contains(5));
    EXPECT_TRUE(engine.isVideoBufferReady(5));
    EXPECT_FALSE(contains(6));
    EXPECT_FALSE(engine.isVideoBufferReady(6));
}

TEST_F(PlayerImplCache, theRecordKnowsItsFrame) {
    put({5});
    SharedPtr<CacheData> data;
    ASSERT_EQ(Inspector::cache(engine).get("5", data).get(), Status::ok);
    const auto produced = dynamicPtrCast<ProducedVideoBuffer>(data);
    ASSERT_TRUE(produced);
    EXPECT_EQ(produced->getFrameNumber(), 5);
}

TEST_F(PlayerImplCache, aFrameThatIsNotThereGivesTheCachesOwnFailureAndEmptiesTheBuffer) {
    SharedPtr<CacheData> data;
    const Status ofTheCache = Inspector::cache(engine).get("5", data);
    ASSERT_TRUE(ofTheCache.failure());
    for (const int32 timeoutMs : {0, 1}) {
        SharedPtr<VideoBuffer> found = newBuffer();
        EXPECT_EQ(Inspector::cacheGet(engine, 5, found, timeoutMs).get(), ofTheCache.get());
        EXPECT_FALSE(found);
    }
}

TEST_F(PlayerImplCache, aFrameThatIsNotThereIsWaitedForAsLongAsTheCallerSays) {
    constexpr int32 anHourMs = 3600 * 1000;
    const SharedPtr<VideoBuffer> buffer = newBuffer();
    SharedPtr<VideoBuffer> found;
    Status status;
    std::atomic<bool> isAnswered{false};
    std::thread waiting([&] {
        status = Inspector::cacheGet(engine, 5, found, anHourMs);
        isAnswered = true;
    });
    EXPECT_TRUE(staysFalse(isAnswered));
    ASSERT_EQ(Inspector::cachePut(engine, 5, buffer).get(), Status::ok);
    waiting.join();
    EXPECT_EQ(status.get(), Status::ok);
    EXPECT_EQ(found, buffer);
}

TEST_F(PlayerImplCache, aRecordThatIsNoFrameIsType258AndEmptiesTheBuffer) {
    ASSERT_EQ(Inspector::cache(engine).put("5", SharedPtr<CacheData>(new ForeignRecord)).get(), Status::ok);
    SharedPtr<VideoBuffer> found = newBuffer();
    EXPECT_EQ(Inspector::cacheGet(engine, 5, found).get(), 258);
    EXPECT_FALSE(found);
    EXPECT_TRUE(contains(5));
}

TEST_F(PlayerImplCache, aRecordThatIsNoFrameMayBeEvictedInARun) {
    put({10});
    ASSERT_EQ(Inspector::cache(engine).put("11", SharedPtr<CacheData>(new ForeignRecord)).get(), Status::ok);
    startRun();
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(10));
}

TEST_F(PlayerImplCache, puttingAFrameAgainReplacesIt) {
    put({5});
    const SharedPtr<VideoBuffer> second = newBuffer();
    ASSERT_EQ(Inspector::cachePut(engine, 5, second).get(), Status::ok);
    SharedPtr<VideoBuffer> found;
    ASSERT_EQ(Inspector::cacheGet(engine, 5, found).get(), Status::ok);
    EXPECT_TRUE(found == second);
    EXPECT_EQ(Inspector::cache(engine).size(), 1u);
}

TEST_F(PlayerImplCache, erasingTakesOneFrameOutWhetherOrNotItIsThere) {
    put({4, 5, 6});
    EXPECT_EQ(Inspector::cacheErase(engine, 5).get(), Status::ok);
    EXPECT_EQ(Inspector::cacheErase(engine, 5).get(), Status::ok);
    EXPECT_THAT(cached(), ElementsAre(4, 6));
}

TEST_F(PlayerImplCache, aDroppedFrameThatTheHostHoldsGoesBackWhenTheHostLetsGo) {
    SharedPtr<VideoBuffer> held = newBuffer();
    ASSERT_EQ(Inspector::cachePut(engine, 5, held).get(), Status::ok);
    PoolObserver observer(*pool);
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_FALSE(contains(5));
    EXPECT_EQ(observer.numReleaseHints, 0);
    held.reset();
    EXPECT_EQ(observer.numReleaseHints, 1);
}

TEST_F(PlayerImplCache, aDroppedFramebufferThatTheHostHoldsGoesBackWhenTheHostLetsGo) {
    HostContext host;
    const auto fboPool = ResourcePoolFBO::create();
    ASSERT_EQ(fboPool->setup(1, ResourcePool::SizeUnit::buffers, small).get(), Status::ok);
    SharedPtr<VideoBuffer> held = VideoBufferPrivate::create(fboPool, true);
    ASSERT_EQ(Inspector::cachePut(engine, 5, held).get(), Status::ok);
    ASSERT_EQ(Inspector::cacheErase(engine, 5).get(), Status::ok);
    EXPECT_EQ(fboPool->lock(true), nullptr);
    held.reset();
    QOpenGLFramebufferObject* const back = fboPool->lock(true);
    EXPECT_NE(back, nullptr);
    fboPool->release(back);
}

TEST_F(PlayerImplCache, anEntryThatNobodyHoldsGivesItsResourceBackWhenItGoes) {
    put({1, 2, 3});
    PoolObserver observer(*pool);
    ASSERT_EQ(Inspector::cacheErase(engine, 2).get(), Status::ok);
    EXPECT_EQ(observer.numReleaseHints, 1);
    (void)Inspector::cache(engine).clear();
    EXPECT_EQ(observer.numReleaseHints, 3);
}

// ---- Eviction -------------------------------------------------------------------------------------------------------

TEST_F(PlayerImplCache, anEmptyCacheHasNothingToEvict) {
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 0u);
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
    startRun();
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 0u);
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
}

TEST_F(PlayerImplCache, inARunBothEvictOnlyFramesThatAreNotWanted) {
    put({8, 9, 10, 11, 12, 13});
    startRun();
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(9, 10, 11, 12, 13));
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(9, 10, 11, 12));
}

TEST_F(PlayerImplCache, anUnwantedFrameGoesEvenWhenWantedOnesAreOlder) {
    put({9, 10, 11, 12, 13});
    startRun();
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(9, 10, 11, 12));
}

TEST_F(PlayerImplCache, whenAllAreWantedLookingAheadEvictsNothingAndAWaitingHostOne) {
    put({9, 10, 11, 12});
    startRun();
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
    EXPECT_THAT(cached(), ElementsAre(9, 10, 11, 12));
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(10, 11, 12));  // the one that was used longest ago
}

TEST_F(PlayerImplCache, afterARunLookingAheadEvictsNothingAndAWaitingHostTheLeastRecentlyUsed) {
    startRun();
    put({10, 50, 60});
    stopRun();
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
    EXPECT_EQ(Inspector::cache(engine).size(), 3u);
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_FALSE(contains(10));
    EXPECT_TRUE(contains(50));
    EXPECT_TRUE(contains(60));
}

TEST_F(PlayerImplCache, withoutARunTheAdvisorIsNotAskedEvenWhenOneIsInstalled) {
    put({10, 13});
    startRun();
    Inspector::setProducing(engine, false);
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_THAT(cached(), ElementsAre(13));
}

TEST_F(PlayerImplCache, stoppingARunKeepsTheCachedFrames) {
    put({9, 10, 11});
    startRun();
    stopRun();
    EXPECT_THAT(cached(), ElementsAre(9, 10, 11));
}

TEST_F(PlayerImplCache, postsNothingWithDebugLinesOff) {
    put({9, 10});
    const LogCapture log;
    (void)Inspector::cacheEvictOne(engine);
    (void)Inspector::cacheTryEvictOne(engine);
    EXPECT_TRUE(log.messages().empty());
}

// ---- With debug lines on --------------------------------------------------------------------------------------------

class PlayerImplCacheDebugLines : public PlayerImplCache {
protected:
    /// The lines of the engine alone.
    static std::vector<std::string> engineLines(LogCapture const& log) {
        std::vector<std::string> lines;
        for (LogMsg const& message : log.messages()) {
            if (message.file() != "src/player/private/qrtPlayerImpl") continue;
            EXPECT_EQ(message.channel(), "QRT_PLAYER");
            lines.push_back(LogCapture::withoutPrefix(message.text()));
        }
        return lines;
    }
};

TEST_F(PlayerImplCacheDebugLines, evictingForAWaitingHostSaysHowManyWent) {
    put({10});
    const LogCapture log;
    EXPECT_EQ(Inspector::cacheEvictOne(engine), 1u);
    EXPECT_THAT(engineLines(log), ElementsAre("_cacheEvictOne() - after - numEvicted = 1"));
}

TEST_F(PlayerImplCacheDebugLines, evictingForLookingAheadSaysHowManyWent) {
    put({10, 13});
    startRun();
    const LogCapture log;
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 1u);
    EXPECT_EQ(Inspector::cacheTryEvictOne(engine), 0u);
    EXPECT_THAT(engineLines(log), ElementsAre("_cacheTryEvictOne() - after - numEvicted = 1",
                                              "_cacheTryEvictOne() - after - numEvicted = 0"));
}

TEST_F(PlayerImplCacheDebugLines, anInvalidationThatEmptiesTheCacheSaysSo) {
    Subject segment;
    Observer& observer = engine;
    const LogCapture log;
    observer.update(&segment, InvalidationHint(0, 5));  // there is nothing to flush
    EXPECT_THAT(engineLines(log), IsEmpty());
    put({10});
    observer.update(&segment, NotificationHint());  // invalidates nothing
    EXPECT_THAT(engineLines(log), IsEmpty());
    EXPECT_TRUE(contains(10));
    observer.update(&segment, InvalidationHint(0, 5));
    EXPECT_THAT(engineLines(log), ElementsAre("Flushed player cache"));
    EXPECT_FALSE(contains(10));
}

TEST_F(PlayerImplCacheDebugLines, anEmptyCacheSaysNothing) {
    const LogCapture log;
    (void)Inspector::cacheEvictOne(engine);
    (void)Inspector::cacheTryEvictOne(engine);
    EXPECT_THAT(engineLines(log), IsEmpty());
}

}  // namespace QRT_0_81
