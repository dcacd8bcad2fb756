#include "foundation/core/qrtCacheStats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;

TEST(CacheStats, isCreatedWithoutRanges) {
    const SharedPtr<CacheStats> stats = CacheStats::create();
    ASSERT_TRUE(static_cast<bool>(stats));
    EXPECT_EQ(stats->refcount(), 1u);
    EXPECT_TRUE(stats->getFrameRanges().empty());
}

TEST(CacheStats, isCreatedAnewEachTime) {
    const SharedPtr<CacheStats> first = CacheStats::create();
    const SharedPtr<CacheStats> second = CacheStats::create();
    first->getFrameRanges().push_back({1, 2});
    EXPECT_FALSE(first == second);
    EXPECT_TRUE(second->getFrameRanges().empty());
}

TEST(CacheStats, showsReadersTheRangesThatWereAdded) {
    const SharedPtr<CacheStats> stats = CacheStats::create();
    stats->getFrameRanges().push_back({-4, -1});
    stats->getFrameRanges().push_back({std::numeric_limits<int64>::max() - 1, std::numeric_limits<int64>::max()});
    stats->getFrameRanges().back().first = 10;

    const ConstSharedPtr<CacheStats> seen = stats;
    EXPECT_TRUE((std::is_same_v<decltype(seen->getFrameRanges()), Vector<CacheStats::FrameRange> const&>));
    EXPECT_THAT(
        itemsOf(seen->getFrameRanges()),
        ElementsAre(CacheStats::FrameRange{-4, -1}, CacheStats::FrameRange{10, std::numeric_limits<int64>::max()}));
}

TEST(CacheStats, hasRangesThatCompareByTheirEnds) {
    const CacheStats::FrameRange range{3, 7};
    EXPECT_EQ(range, (CacheStats::FrameRange{3, 7}));
    EXPECT_FALSE(range == (CacheStats::FrameRange{3, 8}));
    EXPECT_FALSE(range == (CacheStats::FrameRange{2, 7}));
}

TEST(CacheStats, numbersTheProducerCacheZeroAndTheGraphEngineOne) {
    EXPECT_EQ(static_cast<int>(CacheStats::CacheType::producer), 0);
    EXPECT_EQ(static_cast<int>(CacheStats::CacheType::graph_engine), 1);
}

}  // namespace
}  // namespace QRT_0_81
