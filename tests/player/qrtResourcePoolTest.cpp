// What every pool has in common: its size, its format, and when it is rebuilt.
#include "qrtResourcePool.h"

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>

#include "harness/qrtTestResolutions.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

namespace {

using SizeUnit = ResourcePool::SizeUnit;

constexpr VideoBufferResolution hd(1920, 1080, 4, 8, false);  // 8,294,400 bytes
constexpr VideoBufferResolution invalid;
constexpr auto unknownUnit = static_cast<SizeUnit>(2);

/// A pool of nothing that counts how often it is built.
class CountingPool final : public ResourcePool {
public:
    [[nodiscard]] PoolType getType() const override { return PoolType::fbo; }
    Status initialize() override {
        const std::lock_guard lock(m_mutex);
        ++numInitialized;
        numResourcesAtInitialize = getNumResources();
        if (initializeResult.success()) m_initialized = true;
        return initializeResult;
    }
    Status uninitialize() override {
        const std::lock_guard lock(m_mutex);
        ++numUninitialized;
        m_initialized = false;
        return uninitializeResult;
    }
    [[nodiscard]] bool isSameResolution(VideoBufferResolution const& a, VideoBufferResolution const& b) const override {
        ++numCompared;
        return a == b;
    }

    [[nodiscard]] uint64 size() const { return m_size; }
    [[nodiscard]] SizeUnit unit() const { return m_sizeUnit; }

    int numInitialized = 0;
    int numUninitialized = 0;
    mutable int numCompared = 0;
    uint32 numResourcesAtInitialize = 0;
    Status initializeResult;
    Status uninitializeResult;
};

}  // namespace

class ResourcePoolTest : public ::testing::Test {
protected:
    /// A pool that has been built once.
    void build() {
        ASSERT_EQ(pool.setup(3, SizeUnit::buffers, small).get(), Status::ok);
        ASSERT_TRUE(pool.isInitialized());
        ASSERT_EQ(pool.numInitialized, 1);
        ASSERT_EQ(pool.numUninitialized, 0);
    }

    CountingPool pool;
};

TEST_F(ResourcePoolTest, aNewPoolIsUninitializedWithoutSizeOrFormat) {
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.getNumResources(), 0u);
    EXPECT_EQ(pool.getBufferSize(), 0u);
    EXPECT_FALSE(pool.getResolution().isValid());
    EXPECT_EQ(pool.size(), 0u);
    EXPECT_EQ(pool.unit(), SizeUnit::buffers);
}

TEST_F(ResourcePoolTest, keepsASizeAndAUnitUntilAFormatGivesThemAMeaning) {
    EXPECT_EQ(pool.setSize(2, SizeUnit::megabytes).get(), Status::ok);
    EXPECT_EQ(pool.size(), 2u);
    EXPECT_EQ(pool.unit(), SizeUnit::megabytes);
    EXPECT_EQ(pool.setResolution(VideoBufferResolution(512, 512, 4, 8, false)).get(), Status::ok);
    EXPECT_EQ(pool.numResourcesAtInitialize, 2u);
}

TEST_F(ResourcePoolTest, theHintsOfItsEventsDifferByTheirTypeAlone) {
    using LockHint = ResourcePoolInterface::LockHint;
    using ReleaseHint = ResourcePoolInterface::ReleaseHint;
    static_assert(std::is_base_of_v<NotificationHint, LockHint> && std::is_base_of_v<NotificationHint, ReleaseHint>);
    static_assert(!std::is_base_of_v<InvalidationHint, LockHint> && !std::is_base_of_v<InvalidationHint, ReleaseHint>);
    EXPECT_EQ(sizeof(LockHint), sizeof(NotificationHint));
    EXPECT_EQ(sizeof(ReleaseHint), sizeof(NotificationHint));
    const LockHint lockHint;
    NotificationHint const& hint = lockHint;
    EXPECT_NE(dynamic_cast<LockHint const*>(&hint), nullptr);
    EXPECT_EQ(dynamic_cast<ReleaseHint const*>(&hint), nullptr);
}

TEST_F(ResourcePoolTest, theBufferSizeIsThatOfTheFormatAndZeroWhenTheFormatIsInvalid) {
    (void)pool.setResolution(hd);
    EXPECT_EQ(pool.getBufferSize(), 8294400u);
    (void)pool.setResolution(VideoBufferResolution(1920, 0, 4, 8, false));
    EXPECT_EQ(pool.getBufferSize(), 0u);
}

TEST_F(ResourcePoolTest, aSizeInBuffersIsTheNumberOfResources) {
    (void)pool.setSize(7, SizeUnit::buffers);
    EXPECT_EQ(pool.getNumResources(), 7u);
}

TEST_F(ResourcePoolTest, aSizeInBuffersIsTruncatedTo32Bits) {
    (void)pool.setSize((uint64{1} << 32) + 5, SizeUnit::buffers);
    EXPECT_EQ(pool.getNumResources(), 5u);
}

TEST_F(ResourcePoolTest, aBudgetOf100MegabytesHoldsTwelve1080pFramesOf8Bits) {
    (void)pool.setup(100, SizeUnit::megabytes, hd);
    EXPECT_EQ(pool.getNumResources(), 12u);
}

TEST_F(ResourcePoolTest, aBudgetHoldsWholeFramesOnly) {
    constexpr VideoBufferResolution mebibyte(512, 512, 4, 8, false);
    (void)pool.setup(2, SizeUnit::megabytes, mebibyte);
    EXPECT_EQ(pool.getNumResources(), 2u);
    (void)pool.setResolution(VideoBufferResolution(512, 513, 4, 8, false));
    EXPECT_EQ(pool.getNumResources(), 1u);
    (void)pool.setup(7, SizeUnit::megabytes, hd);
    EXPECT_EQ(pool.getNumResources(), 0u);
}

TEST_F(ResourcePoolTest, aBudgetWithoutAValidFormatHoldsNothing) {
    (void)pool.setSize(100, SizeUnit::megabytes);
    EXPECT_EQ(pool.getNumResources(), 0u);
}

TEST_F(ResourcePoolTest, anUnknownUnitMeansNoResourcesAndThePoolIsBuiltWithNone) {
    EXPECT_EQ(pool.setup(3, unknownUnit, small).get(), Status::ok);
    EXPECT_TRUE(pool.isInitialized());
    EXPECT_EQ(pool.numResourcesAtInitialize, 0u);
    EXPECT_EQ(pool.getNumResources(), 0u);
}

TEST_F(ResourcePoolTest, isBuiltAsSoonAsItHasASizeAndAValidFormat) {
    EXPECT_EQ(pool.setSize(3, SizeUnit::buffers).get(), Status::ok);
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.setResolution(invalid).get(), Status::ok);
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.setResolution(small).get(), Status::ok);
    EXPECT_TRUE(pool.isInitialized());
    EXPECT_EQ(pool.numInitialized, 1);
    EXPECT_EQ(pool.getResolution(), small);
}

TEST_F(ResourcePoolTest, withoutASizeItStaysUninitializedAndTheCallSucceeds) {
    EXPECT_EQ(pool.setup(0, SizeUnit::buffers, small).get(), Status::ok);
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.numInitialized, 0);
    EXPECT_EQ(pool.getResolution(), small);
}

TEST_F(ResourcePoolTest, theSameConfigurationAgainDoesNothingAndSucceeds) {
    build();
    EXPECT_EQ(pool.setup(3, SizeUnit::buffers, small).get(), Status::ok);
    EXPECT_EQ(pool.setSize(3, SizeUnit::buffers).get(), Status::ok);
    EXPECT_EQ(pool.setResolution(small).get(), Status::ok);
    EXPECT_EQ(pool.numInitialized, 1);
    EXPECT_EQ(pool.numUninitialized, 0);
}

TEST_F(ResourcePoolTest, sizeZeroUninitializesItAndSucceeds) {
    build();
    EXPECT_EQ(pool.setSize(0, SizeUnit::buffers).get(), Status::ok);
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(pool.numInitialized, 1);
}

TEST_F(ResourcePoolTest, anotherSizeRebuildsIt) {
    build();
    EXPECT_EQ(pool.setSize(4, SizeUnit::buffers).get(), Status::ok);
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(pool.numInitialized, 2);
    EXPECT_EQ(pool.numResourcesAtInitialize, 4u);
}

TEST_F(ResourcePoolTest, anotherUnitOfTheSameSizeRebuildsIt) {
    build();
    EXPECT_EQ(pool.setup(3, SizeUnit::megabytes, small).get(), Status::ok);
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(pool.numInitialized, 2);
}

TEST_F(ResourcePoolTest, anotherFormatRebuildsIt) {
    build();
    EXPECT_EQ(pool.setResolution(hd).get(), Status::ok);
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(pool.numInitialized, 2);
    EXPECT_EQ(pool.getResolution(), hd);
}

TEST_F(ResourcePoolTest, anotherSizeAndFormatAtOnceRebuildItOnce) {
    build();
    EXPECT_EQ(pool.setup(5, SizeUnit::buffers, hd).get(), Status::ok);
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(pool.numInitialized, 2);
}

TEST_F(ResourcePoolTest, anInvalidFormatUninitializesItAndSucceeds) {
    build();
    EXPECT_EQ(pool.setResolution(invalid).get(), Status::ok);
    EXPECT_FALSE(pool.isInitialized());
    EXPECT_EQ(pool.numUninitialized, 1);
}

TEST_F(ResourcePoolTest, aFailureToInitializeIsTheResultAndIsTriedAgain) {
    pool.initializeResult = Status::invalid_pool_configuration;
    EXPECT_EQ(pool.setup(3, SizeUnit::buffers, small).get(), 262);
    EXPECT_FALSE(pool.isInitialized());
    pool.initializeResult = Status();
    EXPECT_EQ(pool.setup(3, SizeUnit::buffers, small).get(), Status::ok);
    EXPECT_TRUE(pool.isInitialized());
    EXPECT_EQ(pool.numInitialized, 2);
}

TEST_F(ResourcePoolTest, aFailureToUninitializeIsNotLookedAt) {
    build();
    pool.uninitializeResult = Status::general_failure;
    EXPECT_EQ(pool.setSize(4, SizeUnit::buffers).get(), Status::ok);
    EXPECT_EQ(pool.setResolution(hd).get(), Status::ok);
    EXPECT_EQ(pool.numInitialized, 3);
}

TEST_F(ResourcePoolTest, asksThePoolsOwnComparisonWhetherTheFormatChanges) {
    build();
    const int before = pool.numCompared;
    (void)pool.setResolution(small);
    EXPECT_GT(pool.numCompared, before);
}

TEST_F(ResourcePoolTest, mayBeReconfiguredAndAskedFromSeveralThreads) {
    constexpr int rounds = 200;
    std::thread other([this] {
        for (int i = 0; i < rounds; ++i) {
            (void)pool.setSize(static_cast<uint64>(1 + i % 3), SizeUnit::buffers);
            (void)pool.setResolution(i % 2 == 0 ? small : hd);
        }
    });
    for (int i = 0; i < rounds; ++i) {
        EXPECT_LE(pool.getNumResources(), 3u);
        const VideoBufferResolution now = pool.getResolution();
        EXPECT_TRUE(now == small || now == hd || !now.isValid());
        EXPECT_LE(pool.getBufferSize(), 8294400u);
        (void)pool.isInitialized();
    }
    other.join();
    EXPECT_TRUE(pool.isInitialized());
}

TEST_F(ResourcePoolTest, theUnitsAndTypesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(SizeUnit::buffers), 0);
    EXPECT_EQ(static_cast<int>(SizeUnit::megabytes), 1);
    EXPECT_EQ(static_cast<int>(ResourcePoolInterface::PoolType::ram), 0);
    EXPECT_EQ(static_cast<int>(ResourcePoolInterface::PoolType::fbo), 1);
}

TEST_F(ResourcePoolTest, theSlotsAreInTheirOrder) {
    ResourcePool* const base = &pool;
    callSlot<void>(1, base);
    EXPECT_EQ(callSlot<uint32>(3, base), 1u);
    EXPECT_TRUE(callSlot<bool>(2, base));
    EXPECT_EQ(callSlot<ResourcePoolInterface::PoolType>(4, base), ResourcePoolInterface::PoolType::fbo);
    build();
    EXPECT_EQ(callSlot<uint32>(5, base), 3u);
    EXPECT_EQ(callSlot<Status>(7, base).get(), Status::ok);
    EXPECT_EQ(pool.numUninitialized, 1);
    EXPECT_EQ(callSlot<Status>(6, base).get(), Status::ok);
    EXPECT_EQ(pool.numInitialized, 2);
    EXPECT_TRUE((callSlot<bool, ResourcePool, VideoBufferResolution const*, VideoBufferResolution const*>(
        8, base, &small, &small)));
    EXPECT_FALSE((callSlot<bool, ResourcePool, VideoBufferResolution const*, VideoBufferResolution const*>(
        8, base, &small, &hd)));
}

}  // namespace QRT_0_81
