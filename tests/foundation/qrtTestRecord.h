#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/cache/qrtCacheBase.h"
#include "foundation/cache/qrtCacheData.h"

namespace QRT_0_81 {

using Cache = CacheBase<SharedPtr<CacheData>>;

/// A cache record with a number, hooks, and a count of how many records are alive.
class TestRecord final : public CacheData {
public:
    explicit TestRecord(int number) : m_number(number) { ++alive; }
    ~TestRecord() override {
        if (atEnd) atEnd();
        --alive;
    }

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool expire(Reason reason) const override { return whenAsked && whenAsked(reason); }

    std::function<void()> atEnd;            ///< called when the record is destroyed
    std::function<bool(Reason)> whenAsked;  ///< answers whether the record has expired; never, when empty

    static inline std::atomic<int> alive{0};

private:
    const int m_number;
};

[[nodiscard]] inline SharedPtr<TestRecord> makeRecord(int number) {
    return SharedPtr<TestRecord>(new TestRecord(number));
}

/// The record's number, or -1 for an empty pointer.
[[nodiscard]] inline int numberOf(SharedPtr<CacheData> const& data) {
    const auto record = dynamicPtrCast<TestRecord>(data);
    return record ? record->number() : -1;
}

/// The numbers of a cache's records, in the order in which `for_each` visits them.
[[nodiscard]] inline std::vector<int> numbersIn(Cache const& cache) {
    struct Collector final : ForEachFunctorInterface<SharedPtr<CacheData>> {
        bool visit(SharedPtr<CacheData> const& data) override {
            numbers.push_back(numberOf(data));
            return true;
        }
        std::vector<int> numbers;
    };
    Collector collector;
    static_cast<void>(cache.for_each(collector));
    return std::move(collector.numbers);
}

/// Lets go the entries that `allows` says yes to, and remembers what it was asked.
class TestAdvisor final : public EvictionAdvisorInterfaceBase<SharedPtr<CacheData>> {
public:
    explicit TestAdvisor(std::function<bool(int)> allows) : m_allows(std::move(allows)) {}
    ~TestAdvisor() override {
        if (atEnd) atEnd();
    }

    [[nodiscard]] bool canEvict(String const& key, SharedPtr<CacheData> const& data) override {
        asked.push_back(std::string(key.c_str()) + "=" + std::to_string(numberOf(data)));
        return m_allows(numberOf(data));
    }

    std::vector<std::string> asked;
    std::function<void()> atEnd;

private:
    const std::function<bool(int)> m_allows;
};

/// A cache, and the certainty that no record outlives the test.
class CacheTest : public ::testing::Test {
protected:
    ~CacheTest() override {
        cache.reset();
        EXPECT_EQ(TestRecord::alive, 0) << "records left behind";
    }

    void put(String const& key, int number) { EXPECT_TRUE(cache->put(key, makeRecord(number)).success()); }

    /// The number under `key`, or -1.
    [[nodiscard]] int get(String const& key) {
        SharedPtr<CacheData> data;
        const Status status = cache->get(key, data);
        EXPECT_EQ(status.get(), data ? Status::ok : Status::not_in_cache);
        return numberOf(data);
    }

    SharedPtr<Cache> cache = Cache::create();
};

}  // namespace QRT_0_81
