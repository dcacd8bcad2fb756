#include "foundation/cache/qrtCacheBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/qrtTestRecord.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CacheEntries : public CacheTest {};

TEST_F(CacheEntries, areNoneAtFirst) {
    EXPECT_EQ(cache->refcount(), 1u);
    EXPECT_TRUE(cache->empty());
    EXPECT_EQ(cache->size(), 0u);
    EXPECT_FALSE(cache->containsKey("1"));
    EXPECT_THAT(numbersIn(*cache), IsEmpty());
}

TEST_F(CacheEntries, belongToOneCacheOnly) {
    const SharedPtr<Cache> other = Cache::create();
    put("1", 1);
    EXPECT_FALSE(other == cache);
    EXPECT_TRUE(other->empty());
}

TEST_F(CacheEntries, areFoundUnderTheirKey) {
    put("1", 1);
    put("-1", 2);
    put("", 3);
    EXPECT_FALSE(cache->empty());
    EXPECT_EQ(cache->size(), 3u);
    EXPECT_TRUE(cache->containsKey("-1"));
    EXPECT_EQ(get("1"), 1);
    EXPECT_EQ(get("-1"), 2);
    EXPECT_EQ(get(""), 3);
    EXPECT_EQ(get("11"), -1);
}

TEST_F(CacheEntries, areTheVeryRecordsThatWerePut) {
    const auto record = makeRecord(5);
    ASSERT_TRUE(cache->put("5", record).success());
    EXPECT_EQ(record->refcount(), 2u);
    SharedPtr<CacheData> found;
    ASSERT_TRUE(cache->get("5", found).success());
    EXPECT_TRUE(found == record);
}

TEST_F(CacheEntries, leaveTheCallersPointerAloneWhenThereIsNone) {
    const SharedPtr<CacheData> before = makeRecord(9);
    for (const int32 timeoutMs : {0, -1, 1}) {
        SharedPtr<CacheData> data = before;
        EXPECT_EQ(cache->get("missing", timeoutMs, data).get(), Status::not_in_cache);
        EXPECT_TRUE(data == before);
    }
    SharedPtr<CacheData> data = before;
    EXPECT_EQ(static_cast<int>(cache->get("missing", data).get()), 1536);
    EXPECT_TRUE(data == before);
}

TEST_F(CacheEntries, areFoundAtOnceWithATimeoutToo) {
    put("1", 1);
    for (const int32 timeoutMs : {-1, 0, 60'000}) {
        SharedPtr<CacheData> data;
        EXPECT_TRUE(cache->get("1", timeoutMs, data).success());
        EXPECT_EQ(numberOf(data), 1);
    }
}

TEST_F(CacheEntries, areReplacedByAPutUnderTheSameKey) {
    put("1", 1);
    put("1", 2);
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(get("1"), 2);
    EXPECT_EQ(TestRecord::alive, 1) << "the replaced record is dropped";
}

TEST_F(CacheEntries, areNeverEmptyPointers) {
    put("1", 1);
    EXPECT_EQ(cache->put("1", nullptr).get(), Status::invalid_argument);
    EXPECT_EQ(cache->put("2", nullptr).get(), Status::invalid_argument);
    EXPECT_EQ(get("1"), 1) << "the entry that was there stays";
    EXPECT_FALSE(cache->containsKey("2"));
}

TEST_F(CacheEntries, areErasedOneByOne) {
    put("1", 1);
    put("2", 2);
    EXPECT_TRUE(cache->erase("1").success());
    EXPECT_FALSE(cache->containsKey("1"));
    EXPECT_EQ(get("2"), 2);
    EXPECT_EQ(TestRecord::alive, 1);
    EXPECT_TRUE(cache->erase("1").success()) << "erasing what is not there succeeds";
    EXPECT_EQ(cache->size(), 1u);
}

TEST_F(CacheEntries, areAllDroppedByClear) {
    EXPECT_TRUE(cache->clear().success());
    put("1", 1);
    put("2", 2);
    EXPECT_TRUE(cache->clear().success());
    EXPECT_TRUE(cache->empty());
    EXPECT_FALSE(cache->containsKey("1"));
    EXPECT_EQ(TestRecord::alive, 0);
    put("1", 3);
    EXPECT_EQ(get("1"), 3);
}

TEST_F(CacheEntries, stayAliveForWhoeverHoldsThemWhenTheyAreDropped) {
    put("1", 1);
    SharedPtr<CacheData> held;
    ASSERT_TRUE(cache->get("1", held).success());
    ASSERT_TRUE(cache->clear().success());
    EXPECT_EQ(numberOf(held), 1);
    EXPECT_EQ(TestRecord::alive, 1);
}

TEST_F(CacheEntries, haveNoLimit) {
    for (int i = 0; i < 3000; ++i)
        put(String(std::to_string(i)), i);
    EXPECT_EQ(cache->size(), 3000u);
    EXPECT_EQ(get("0"), 0);
}

TEST_F(CacheEntries, areVisitedMostRecentlyUsedFirst) {
    put("1", 1);
    put("2", 2);
    put("3", 3);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(3, 2, 1));
    EXPECT_EQ(get("1"), 1);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(1, 3, 2));
    put("2", 20);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(20, 1, 3));
}

TEST_F(CacheEntries, areNoLongerVisitedWhenTheVisitorSaysNo) {
    struct Impatient final : ForEachFunctorInterface<SharedPtr<CacheData>> {
        bool visit(SharedPtr<CacheData> const& data) override {
            seen.push_back(numberOf(data));
            return seen.size() < 2;
        }
        std::vector<int> seen;
    };
    put("1", 1);
    put("2", 2);
    put("3", 3);
    Impatient visitor;
    EXPECT_TRUE(cache->for_each(visitor).success());
    EXPECT_THAT(visitor.seen, ElementsAre(3, 2));
}

class CacheExpiry : public CacheTest {
protected:
    /// Puts a record that has expired as soon as `expired` is set.
    void putExpiring(String const& key, int number) {
        const auto record = makeRecord(number);
        record->whenAsked = [this](CacheData::Reason reason) {
            EXPECT_EQ(reason, CacheData::Reason::lookup);
            return expired;
        };
        ASSERT_TRUE(cache->put(key, record).success());
    }

    bool expired = false;
};

TEST_F(CacheExpiry, hidesNothingBeforeItsTime) {
    putExpiring("1", 1);
    EXPECT_EQ(get("1"), 1);
    EXPECT_TRUE(cache->containsKey("1"));
}

TEST_F(CacheExpiry, dropsTheRecordThatIsLookedUpAndCountsAsNone) {
    putExpiring("1", 1);
    put("2", 2);
    expired = true;
    EXPECT_EQ(get("1"), -1);
    EXPECT_FALSE(cache->containsKey("1"));
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(TestRecord::alive, 1);
}

TEST_F(CacheExpiry, leavesTheCallersPointerAlone) {
    putExpiring("1", 1);
    expired = true;
    SharedPtr<CacheData> data = makeRecord(9);
    EXPECT_EQ(cache->get("1", data).get(), Status::not_in_cache);
    EXPECT_EQ(numberOf(data), 9);
}

TEST_F(CacheExpiry, isAskedForOnlyByLookUp) {
    putExpiring("1", 1);
    expired = true;
    EXPECT_TRUE(cache->containsKey("1"));
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_THAT(numbersIn(*cache), ElementsAre(1));
}

/// Every way in which a cache lets go of a record or an advisor, while the end of that object uses the cache.
class CacheWithoutItsLock : public CacheTest {
protected:
    /// Something to put whose end uses the cache; it would wait for ever if the lock were held.
    [[nodiscard]] SharedPtr<TestRecord> recordThatUsesTheCacheAtItsEnd() {
        auto record = makeRecord(1);
        record->atEnd = [this, raw = cache.get()] { useCache(*raw); };
        return record;
    }

    void useCache(Cache& used) {
        static_cast<void>(used.containsKey("1"));
        EXPECT_TRUE(used.put("left by the record", makeRecord(99)).success());
        ++ends;
    }

    int ends = 0;
};

TEST_F(CacheWithoutItsLock, recordsAreErased) {
    ASSERT_TRUE(cache->put("1", recordThatUsesTheCacheAtItsEnd()).success());
    EXPECT_TRUE(cache->erase("1").success());
    EXPECT_EQ(ends, 1);
}

TEST_F(CacheWithoutItsLock, recordsAreCleared) {
    ASSERT_TRUE(cache->put("1", recordThatUsesTheCacheAtItsEnd()).success());
    ASSERT_TRUE(cache->put("2", recordThatUsesTheCacheAtItsEnd()).success());
    EXPECT_TRUE(cache->clear().success());
    EXPECT_EQ(ends, 2);
}

TEST_F(CacheWithoutItsLock, recordsAreReplaced) {
    ASSERT_TRUE(cache->put("1", recordThatUsesTheCacheAtItsEnd()).success());
    put("1", 2);
    EXPECT_EQ(ends, 1);
}

TEST_F(CacheWithoutItsLock, recordsAreEvicted) {
    for (const auto strategy : {evict_least_recently_used, evict_advised}) {
        const SharedPtr<TestAdvisor> advisor(new TestAdvisor([](int number) { return number == 1; }));
        ASSERT_TRUE(cache->setEvictionAdvisor(advisor).success());
        ends = 0;
        ASSERT_TRUE(cache->clear().success());
        ASSERT_TRUE(cache->put("1", recordThatUsesTheCacheAtItsEnd()).success());
        size_t numEvicted = 0;
        EXPECT_TRUE(cache->evict(evict_one, strategy, numEvicted).success());
        EXPECT_EQ(ends, 1);
    }
}

TEST_F(CacheWithoutItsLock, expiredRecordsAreDropped) {
    auto record = recordThatUsesTheCacheAtItsEnd();
    record->whenAsked = [](CacheData::Reason) { return true; };
    ASSERT_TRUE(cache->put("1", record).success());
    record.reset();
    EXPECT_EQ(get("1"), -1);
    EXPECT_EQ(ends, 1);
}

TEST_F(CacheWithoutItsLock, whatTheCallersPointerHeldIsDropped) {
    put("2", 2);
    SharedPtr<CacheData> data = recordThatUsesTheCacheAtItsEnd();
    EXPECT_TRUE(cache->get("2", data).success());
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(numberOf(data), 2);
}

TEST_F(CacheWithoutItsLock, replacedAdvisorsAreDropped) {
    SharedPtr<TestAdvisor> advisor(new TestAdvisor([](int) { return true; }));
    advisor->atEnd = [this] { useCache(*cache); };
    ASSERT_TRUE(cache->setEvictionAdvisor(advisor).success());
    advisor.reset();
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(cache->setEvictionAdvisor(nullptr).success());
    EXPECT_EQ(ends, 1);
}

TEST_F(CacheWithoutItsLock, recordsAreDroppedWhenTheCacheItselfEnds) {
    auto record = makeRecord(1);
    record->atEnd = [this, raw = cache.get()] {
        EXPECT_FALSE(raw->containsKey("1"));
        EXPECT_TRUE(raw->empty());
        ++ends;
    };
    ASSERT_TRUE(cache->put("1", record).success());
    record.reset();
    cache.reset();
    EXPECT_EQ(ends, 1);
}

}  // namespace
}  // namespace QRT_0_81
