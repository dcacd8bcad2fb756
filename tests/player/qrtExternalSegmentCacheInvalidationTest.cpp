// What an invalidation takes out of the frame cache of external segments, and what that costs.
#include <climits>
#include <utility>
#include <vector>

#include "foundation/qrtAllocationCounter.h"
#include "harness/qrtExternalSegmentCacheFixture.h"

namespace QRT_0_81 {

class ExternalSegmentCacheInvalidation : public ExternalSegmentCacheFixture {
protected:
    ExternalSegmentCacheInvalidation() {
        setBudget(Resource::Type::ram, 1);
        setBudget(Resource::Type::vram, 1);
    }
    void put(char const* id, std::vector<int64> const& frames) {
        for (const int64 frame : frames)
            ASSERT_EQ(putRam(id, frame).get(), Status::ok);
    }
    std::vector<int64> cachedOf(char const* id, std::vector<int64> const& frames) {
        std::vector<int64> cached;
        for (const int64 frame : frames) {
            if (getRam(id, frame) == Status::ok) cached.push_back(frame);
        }
        return cached;
    }
    using Frames = std::vector<int64>;
};

TEST_F(ExternalSegmentCacheInvalidation, dropsOneFrameOfOneSegmentOfOneKind) {
    put("a", {1, 2});
    put("b", {1});
    ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
    EXPECT_EQ(manager.invalidate(false, "a", 1).get(), Status::ok);
    EXPECT_EQ(cachedOf("a", {1, 2}), Frames{2});
    EXPECT_EQ(cachedOf("b", {1}), Frames{1});
    EXPECT_EQ(getTexture("a", 1), Status::ok);
    EXPECT_EQ(manager.invalidate(true, "a", 1).get(), Status::ok);
    EXPECT_TRUE(manager.isEmpty(true));
}

TEST_F(ExternalSegmentCacheInvalidation, ofWhatIsNotCachedSucceeds) {
    EXPECT_EQ(manager.invalidate(false, "a", 1).get(), Status::ok);
    put("a", {1});
    EXPECT_EQ(manager.invalidate(false, "a", 2).get(), Status::ok);
    EXPECT_EQ(manager.invalidate(false, "b", 1).get(), Status::ok);
    EXPECT_EQ(cachedOf("a", {1}), Frames{1});
}

TEST_F(ExternalSegmentCacheInvalidation, ofAKindThatIsOffSucceeds) {
    setBudget(Resource::Type::ram, 0);
    EXPECT_EQ(manager.invalidate(false, "a", 1).get(), Status::ok);
    EXPECT_EQ(manager.invalidate(false, "a", LLONG_MIN, LLONG_MAX).get(), Status::ok);
}

TEST_F(ExternalSegmentCacheInvalidation, ofARangeDropsBothItsEndsAndNothingBeyond) {
    for (const bool isRangeLargerThanTheCache : {false, true}) {
        const Frames frames =
            isRangeLargerThanTheCache ? Frames{9, 10, 12, 13} : Frames{-2, 7, 8, 9, 10, 11, 12, 13, 14};
        put("a", frames);
        EXPECT_EQ(manager.invalidate(false, "a", 10, 12).get(), Status::ok);
        EXPECT_EQ(cachedOf("a", frames), (isRangeLargerThanTheCache ? Frames{9, 13} : Frames{-2, 7, 8, 9, 13, 14}));
        setBudget(Resource::Type::ram, 2);  // empties the cache
        setBudget(Resource::Type::ram, 1);
    }
}

TEST_F(ExternalSegmentCacheInvalidation, ofARangeThatEndsBeforeItStartsDropsNothing) {
    put("a", {10, 11, 12});
    EXPECT_EQ(manager.invalidate(false, "a", 12, 10).get(), Status::ok);
    EXPECT_EQ(manager.invalidate(false, "a", LLONG_MAX, LLONG_MIN).get(), Status::ok);
    EXPECT_EQ(cachedOf("a", {10, 11, 12}), (Frames{10, 11, 12}));
}

TEST_F(ExternalSegmentCacheInvalidation, ofAHugeRangeKeepsTheFramesOfSegmentsWithSimilarNames) {
    const std::vector<char const*> others{"",     "cli",    "clip_1", "clip_",   "clip__1",
                                          "CLIP", "clip-1", "_clip",  "clip_1_2"};
    for (char const* const other : others)
        put(other, {-1, 0, 1});
    put("clip", {-5, 0, 1, 12});
    EXPECT_EQ(manager.invalidate(false, "clip", LLONG_MIN, LLONG_MAX).get(), Status::ok);
    EXPECT_EQ(cachedOf("clip", {-5, 0, 1, 12}), Frames{});
    for (char const* const other : others)
        EXPECT_EQ(cachedOf(other, {-1, 0, 1}), (Frames{-1, 0, 1})) << other;
    // Nor is a frame of "clip" one of "clip_1" because its number begins with a 1.
    put("clip", {1, 12, 123});
    EXPECT_EQ(manager.invalidate(false, "clip_1", LLONG_MIN, LLONG_MAX).get(), Status::ok);
    EXPECT_EQ(cachedOf("clip", {1, 12, 123}), (Frames{1, 12, 123}));
}

TEST_F(ExternalSegmentCacheInvalidation, ofAHugeRangeCostsNoMoreThanTheCacheIsLarge) {
    // The key of every single frame would be at least one allocation.
    constexpr char longName[] = "a segment whose name does not fit into any small string";
    put(longName, {LLONG_MIN, INT_MIN, -1, 0, 1, INT_MAX, LLONG_MAX});
    // The first range shows at once what the second would cost.
    for (auto const& [first, last] : {std::pair<int64, int64>{2, 1'000'000}, {INT_MIN, INT_MAX}}) {
        const AllocationCounter counter;
        EXPECT_EQ(manager.invalidate(false, longName, first, last).get(), Status::ok);
        const size_t numAllocations = counter.count();
        ASSERT_LE(numAllocations, 20u);
    }
    EXPECT_EQ(cachedOf(longName, {LLONG_MIN, INT_MIN, -1, 0, 1, INT_MAX, LLONG_MAX}), (Frames{LLONG_MIN, LLONG_MAX}));
    EXPECT_EQ(manager.invalidate(false, longName, LLONG_MIN, LLONG_MAX).get(), Status::ok);
    EXPECT_TRUE(manager.isEmpty(false));
    EXPECT_EQ(manager.invalidate(false, longName, LLONG_MIN, LLONG_MAX).get(), Status::ok);
}

}  // namespace QRT_0_81
