#include <gtest/gtest.h>

#include <latch>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "foundation/cache/qrtCacheBase.h"
#include "foundation/qrtTestRecord.h"

namespace QRT_0_81 {
namespace {

class CacheThreads : public CacheTest {
protected:
    /// Puts a record that has expired and that tells, through `lookedUp`, that a `get` has come across it. That `get`
    /// then holds the lock until it waits or returns, so a `put` that follows finds it waiting.
    void putExpiredRecordThatTells(String const& key, std::latch& lookedUp) {
        const auto record = makeRecord(0);
        record->whenAsked = [&lookedUp](CacheData::Reason) {
            lookedUp.count_down();
            return true;
        };
        ASSERT_TRUE(cache->put(key, record).success());
    }

    static constexpr int32 longEnoughMs = 600'000;
};

TEST_F(CacheThreads, aGetWithATimeoutWaitsForAPutOfAnotherThread) {
    std::latch lookedUp(1);
    putExpiredRecordThatTells("1", lookedUp);
    std::jthread producer([&] {
        lookedUp.wait();
        put("1", 1);
    });
    SharedPtr<CacheData> data;
    EXPECT_TRUE(cache->get("1", longEnoughMs, data).success());
    EXPECT_EQ(numberOf(data), 1);
}

TEST_F(CacheThreads, aGetWithATimeoutGoesOnWaitingWhenAnotherKeyIsPut) {
    std::latch lookedUp(1);
    putExpiredRecordThatTells("1", lookedUp);
    std::jthread producer([&] {
        lookedUp.wait();
        put("2", 2);
        put("1", 1);
    });
    SharedPtr<CacheData> data;
    EXPECT_TRUE(cache->get("1", longEnoughMs, data).success());
    EXPECT_EQ(numberOf(data), 1);
}

TEST_F(CacheThreads, aPutWakesEveryThreadThatWaitsForIt) {
    std::latch firstLookedUp(1);
    std::latch secondLookedUp(1);
    putExpiredRecordThatTells("1", firstLookedUp);
    putExpiredRecordThatTells("2", secondLookedUp);
    const auto waitsFor = [this](String const& key) {
        SharedPtr<CacheData> data;
        EXPECT_TRUE(cache->get(key, longEnoughMs, data).success());
        EXPECT_EQ(numberOf(data), 1);
    };
    std::jthread first([&] { waitsFor("1"); });
    std::jthread second([&] { waitsFor("2"); });
    firstLookedUp.wait();
    secondLookedUp.wait();
    put("1", 1);
    put("2", 1);
}

TEST_F(CacheThreads, aGetWithoutATimeoutNeverWaits) {
    for (const int32 timeoutMs : {0, -1}) {
        std::latch lookedUp(1);
        putExpiredRecordThatTells("1", lookedUp);
        SharedPtr<CacheData> data;
        EXPECT_EQ(cache->get("1", timeoutMs, data).get(), Status::not_in_cache);
    }
}

TEST_F(CacheThreads, aRecordsEndMayWaitForAnotherThreadThatUsesTheCache) {
    auto record = makeRecord(1);
    record->atEnd = [this] {
        std::jthread([this] { put("2", 2); }).join();  // for ever, if the cache's lock were held
    };
    ASSERT_TRUE(cache->put("1", record).success());
    record.reset();
    size_t numEvicted = 0;
    EXPECT_TRUE(cache->evict(evict_one, evict_least_recently_used, numEvicted).success());
    EXPECT_EQ(get("2"), 2);
}

TEST_F(CacheThreads, everyOperationMayBeCalledFromManyThreadsAtOnce) {
    constexpr int numThreads = 4;
    constexpr int numKeys = 16;
    constexpr int numRounds = 600;
    std::latch start(numThreads);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < numThreads; ++thread) {
        threads.emplace_back([&, thread] {
            std::minstd_rand random(static_cast<unsigned>(thread) + 1);
            start.arrive_and_wait();
            for (int round = 0; round < numRounds; ++round) {
                const int number = static_cast<int>(random() % numKeys);
                const String key(std::to_string(number));
                size_t numEvicted = 0;
                switch (random() % 9) {
                    case 0:
                    case 1: put(key, number); break;
                    case 2:
                    case 3: {
                        const int found = get(key);
                        EXPECT_TRUE(found == number || found == -1) << "a record under another's key";
                        break;
                    }
                    case 4: EXPECT_TRUE(cache->erase(key).success()); break;
                    case 5:
                        EXPECT_TRUE(cache->evict(evict_one, evict_least_recently_used, numEvicted).success());
                        break;
                    case 6: EXPECT_LE(numbersIn(*cache).size(), static_cast<size_t>(numKeys)); break;
                    case 7: {
                        const SharedPtr<TestAdvisor> advisor(new TestAdvisor([](int n) { return n % 2 == 0; }));
                        EXPECT_TRUE(cache->setEvictionAdvisor(advisor).success());
                        EXPECT_TRUE(cache->evict(evict_one, evict_advised, numEvicted).success());
                        EXPECT_LE(numEvicted, 1u);
                        break;
                    }
                    default:
                        EXPECT_LE(cache->size(), static_cast<size_t>(numKeys));
                        if (cache->containsKey(key) && cache->empty() && random() % 16 == 0) {
                            EXPECT_TRUE(cache->clear().success());
                        }
                }
            }
        });
    }
    threads.clear();
    EXPECT_EQ(static_cast<size_t>(TestRecord::alive), cache->size());
    EXPECT_TRUE(cache->clear().success());
    EXPECT_EQ(TestRecord::alive, 0);
}

TEST_F(CacheThreads, nothingIsLostOrCountedTwiceWhenThreadsEvictAtOnce) {
    constexpr int numThreads = 4;
    constexpr int numEntries = 400;
    for (int i = 0; i < numEntries; ++i)
        put(String(std::to_string(i)), i);
    std::atomic<size_t> total{0};
    std::latch start(numThreads);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < numThreads; ++i) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                size_t numEvicted = 1;
                while (numEvicted == 1) {
                    EXPECT_TRUE(cache->evict(evict_one, evict_least_recently_used, numEvicted).success());
                    total += numEvicted;
                }
            });
        }
    }
    EXPECT_EQ(total, static_cast<size_t>(numEntries));
    EXPECT_TRUE(cache->empty());
}

}  // namespace
}  // namespace QRT_0_81
