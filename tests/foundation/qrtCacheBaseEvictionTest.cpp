#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "foundation/cache/qrtCacheBase.h"
#include "foundation/qrtAllocationCounter.h"
#include "foundation/qrtTestRecord.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CacheEviction : public CacheTest {
protected:
    /// Evicts and gives the number of entries that went; the call itself must succeed.
    size_t evict(cache_eviction_mode_t mode, cache_eviction_strategy_t strategy) {
        size_t numEvicted = 77;
        EXPECT_TRUE(cache->evict(mode, strategy, numEvicted).success());
        return numEvicted;
    }

    SharedPtr<TestAdvisor> advise(std::function<bool(int)> allows) {
        SharedPtr<TestAdvisor> advisor(new TestAdvisor(std::move(allows)));
        EXPECT_TRUE(cache->setEvictionAdvisor(advisor).success());
        return advisor;
    }

    void putThree() {
        put("a", 1);
        put("b", 2);
        put("c", 3);
    }
};

TEST_F(CacheEviction, hasModesAndStrategiesWithFixedNumbers) {
    EXPECT_EQ(static_cast<int>(evict_one), 0);
    EXPECT_EQ(static_cast<int>(evict_all), 1);
    EXPECT_EQ(static_cast<int>(evict_least_recently_used), 2);
    EXPECT_EQ(static_cast<int>(evict_advised), 3);
}

TEST_F(CacheEviction, dropsTheLeastRecentlyUsedEntryFirst) {
    putThree();
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3, 2));
    EXPECT_EQ(TestRecord::alive, 2);
    EXPECT_FALSE(cache->containsKey("a"));
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3));
}

TEST_F(CacheEviction, countsAGetAsAUse) {
    putThree();
    EXPECT_EQ(get("a"), 1);
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(1, 3));
}

TEST_F(CacheEviction, countsAGetWithATimeoutAsAUse) {
    putThree();
    SharedPtr<CacheData> data;
    ASSERT_TRUE(cache->get("a", 10, data).success());
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(1, 3));
}

TEST_F(CacheEviction, countsAReplacementAsAUse) {
    putThree();
    put("a", 10);
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(10, 3));
}

TEST_F(CacheEviction, countsNothingElseAsAUse) {
    putThree();
    const auto advisor = advise([](int) { return false; });
    EXPECT_TRUE(cache->containsKey("a"));
    EXPECT_EQ(numbersIn(*cache).back(), 1);
    EXPECT_EQ(evict(evict_one, evict_advised), 0u);
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_FALSE(cache->containsKey("a"));
}

TEST_F(CacheEviction, ofAllDropsEveryEntry) {
    putThree();
    EXPECT_EQ(evict(evict_all, evict_least_recently_used), 3u);
    EXPECT_TRUE(cache->empty());
    EXPECT_EQ(TestRecord::alive, 0);
}

TEST_F(CacheEviction, ofAnEmptyCacheSucceedsWithoutEntries) {
    const auto advisor = advise([](int) { return true; });
    for (const auto mode : {evict_one, evict_all}) {
        EXPECT_EQ(evict(mode, evict_least_recently_used), 0u);
        EXPECT_EQ(evict(mode, evict_advised), 0u);
    }
}

TEST_F(CacheEviction, withAdviceDropsTheLeastRecentlyUsedEntryThatMayGo) {
    putThree();
    const auto advisor = advise([](int number) { return number != 1; });
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3, 1));
    EXPECT_THAT(advisor->asked, ElementsAre("a=1", "b=2")) << "asked with key and record, and no further than needed";
}

TEST_F(CacheEviction, withAdviceDoesNotBeginWithWhatTheAdvisorHasJustKept) {
    putThree();
    put("d", 4);
    const auto advisor = advise([](int number) { return number >= 3; });
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_THAT(advisor->asked, ElementsAre("a=1", "b=2", "c=3", "d=4"));
}

TEST_F(CacheEviction, withAdviceComesBackToTheBeginningWhenItIsThrough) {
    putThree();
    std::set<int> wanted{1, 2, 3};
    const auto advisor = advise([&wanted](int number) { return wanted.count(number) == 0; });
    wanted.erase(2);
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    wanted.erase(1);
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_THAT(advisor->asked, ElementsAre("a=1", "b=2", "c=3", "a=1"));
    wanted.clear();
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_EQ(evict(evict_one, evict_advised), 0u);
    EXPECT_TRUE(cache->empty());
}

TEST_F(CacheEviction, withAdviceKeepsItsPlaceWhenTheNextEntryIsUsedOrGoes) {
    putThree();
    put("d", 4);
    put("e", 5);
    const auto advisor = advise([](int number) { return number % 2 == 0; });
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);  // asks 1 and 2; 3 is next
    SharedPtr<CacheData> data;
    EXPECT_TRUE(cache->get("c", data).success());
    EXPECT_TRUE(cache->erase("e").success());
    EXPECT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_THAT(advisor->asked, ElementsAre("a=1", "b=2", "d=4"));
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3, 1));
}

TEST_F(CacheEviction, withAdviceFindsWhatPlaybackLeavesBehindWithoutAskingAboutAllOfIt) {
    constexpr int numAhead = 1000;
    for (int i = 0; i < numAhead; ++i)
        put(std::to_string(i).c_str(), i);
    int current = 0;
    const auto advisor = advise([&current](int number) { return number < current; });
    for (int i = 0; i < 500; ++i) {
        SharedPtr<CacheData> data;
        ASSERT_TRUE(cache->get(std::to_string(++current).c_str(), data).success());
        ASSERT_EQ(evict(evict_one, evict_advised), 1u);
        put(std::to_string(current + numAhead - 1).c_str(), current + numAhead - 1);
    }
    EXPECT_LT(advisor->asked.size(), 3u * numAhead);
}

TEST_F(CacheEviction, withAdviceOfManyAsksAboutEachWantedEntryButOnce) {
    for (int i = 0; i < 1000; ++i)
        put(std::to_string(i).c_str(), i);
    const auto advisor = advise([](int number) { return number >= 900; });
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(evict(evict_one, evict_advised), 1u);
    EXPECT_EQ(advisor->asked.size(), 1000u);
}

TEST_F(CacheEviction, withAdviceOfAllDropsEveryEntryThatMayGo) {
    putThree();
    put("d", 4);
    const auto advisor = advise([](int number) { return number % 2 == 0; });
    EXPECT_EQ(evict(evict_all, evict_advised), 2u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3, 1));
    EXPECT_THAT(advisor->asked, ElementsAre("a=1", "b=2", "c=3", "d=4")) << "each entry once";
}

TEST_F(CacheEviction, withAdviceDropsNothingWhenNothingMayGo) {
    putThree();
    const auto advisor = advise([](int) { return false; });
    EXPECT_EQ(evict(evict_one, evict_advised), 0u);
    EXPECT_EQ(evict(evict_all, evict_advised), 0u);
    EXPECT_EQ(cache->size(), 3u);
}

TEST_F(CacheEviction, withAdviceDropsNothingWithoutAnAdvisor) {
    putThree();
    EXPECT_EQ(evict(evict_one, evict_advised), 0u);
    EXPECT_EQ(evict(evict_all, evict_advised), 0u);
    EXPECT_EQ(cache->size(), 3u);
}

TEST_F(CacheEviction, inItsOwnOrderNeverAsksTheAdvisor) {
    putThree();
    const auto advisor = advise([](int) { return false; });
    EXPECT_EQ(evict(evict_one, evict_least_recently_used), 1u);
    EXPECT_EQ(evict(evict_all, evict_least_recently_used), 2u);
    EXPECT_THAT(advisor->asked, IsEmpty());
}

TEST_F(CacheEviction, asksTheAdvisorThatWasInstalledLast) {
    putThree();
    const auto first = advise([](int) { return true; });
    const auto second = advise([](int number) { return number == 3; });
    EXPECT_EQ(evict(evict_all, evict_advised), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(2, 1));
    EXPECT_THAT(first->asked, IsEmpty());
    EXPECT_EQ(first->refcount(), 1u) << "the cache has let go of the replaced advisor";
    EXPECT_EQ(second->refcount(), 2u);
}

TEST_F(CacheEviction, asksNobodyOnceTheAdvisorIsRemoved) {
    putThree();
    const auto advisor = advise([](int) { return true; });
    EXPECT_TRUE(cache->setEvictionAdvisor(nullptr).success());
    EXPECT_EQ(advisor->refcount(), 1u);
    EXPECT_EQ(evict(evict_all, evict_advised), 0u);
    EXPECT_THAT(advisor->asked, IsEmpty());
}

TEST_F(CacheEviction, refusesAnUnknownModeOrStrategyAndDropsNothing) {
    putThree();
    const auto advisor = advise([](int) { return true; });
    const auto refused = [&](int mode, int strategy) {
        size_t numEvicted = 77;
        EXPECT_EQ(cache
                      ->evict(static_cast<cache_eviction_mode_t>(mode),
                              static_cast<cache_eviction_strategy_t>(strategy), numEvicted)
                      .get(),
                  Status::invalid_argument);
        EXPECT_EQ(numEvicted, 0u);
    };
    refused(2, 2);
    refused(-1, 3);
    refused(0, 0);
    refused(0, 1);
    refused(1, 4);
    EXPECT_EQ(cache->size(), 3u);
}

TEST_F(CacheEviction, leavesItsRoomToTheNextEntry) {
    if (!AllocationCounter::works()) GTEST_SKIP() << "allocations are not counted in sanitizer builds";
    putThree();
    const std::vector<SharedPtr<CacheData>> records = {makeRecord(4), makeRecord(5), makeRecord(6), makeRecord(7)};
    const auto replaceOne = [&](size_t i) {
        size_t numEvicted = 0;
        (void)cache->evict(evict_one, evict_least_recently_used, numEvicted);
        (void)cache->put(i % 2 == 0 ? "even" : "odd", records[i]);
    };
    replaceOne(0);
    replaceOne(1);
    const AllocationCounter allocations;
    replaceOne(2);
    replaceOne(3);
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_EQ(numbersIn(*cache), (std::vector<int>{7, 6}));
}

}  // namespace
}  // namespace QRT_0_81
