// Pooled memory: blocks that are lent, come back, and are freed when the pool was rebuilt meanwhile.
#include "qrtResourcePoolRAM.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "foundation/qrtAllocationCounter.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtPoolObserver.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtThreadChances.h"

namespace QRT_0_81 {

namespace {

using SizeUnit = ResourcePool::SizeUnit;

/// Borrows all that the pool lends.
std::vector<void*> lockAll(ResourcePoolRAM& pool) {
    std::vector<void*> blocks;
    while (void* const block = pool.lock(true))
        blocks.push_back(block);
    return blocks;
}

void releaseAll(ResourcePoolRAM& pool, std::vector<void*> const& blocks) {
    for (void* const block : blocks)
        pool.release(block);
}

/// How many blocks the pool has to lend.
size_t numFree(ResourcePoolRAM& pool) {
    const auto blocks = lockAll(pool);
    releaseAll(pool, blocks);
    return blocks.size();
}

}  // namespace

class ResourcePoolRAMTest : public ::testing::Test {
protected:
    void build(uint64 count) { ASSERT_EQ(pool->setup(count, SizeUnit::buffers, small).get(), Status::ok); }

    const SharedPtr<ResourcePoolRAM> pool = ResourcePoolRAM::create();
};

TEST_F(ResourcePoolRAMTest, isOfTypeZeroAndStartsWithNothing) {
    EXPECT_EQ(static_cast<int>(pool->getType()), 0);
    EXPECT_EQ(pool->refcount(), 1u);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolRAMTest, isAPoolFirstAndASubjectSecond) {
    EXPECT_EQ(static_cast<void*>(static_cast<ResourcePool*>(pool.get())), static_cast<void*>(pool.get()));
    EXPECT_LT(static_cast<void*>(pool.get()), static_cast<void*>(static_cast<Subject*>(pool.get())));
}

TEST_F(ResourcePoolRAMTest, lendsBlocksThatHoldAFrameEach) {
    build(3);
    const auto blocks = lockAll(*pool);
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), 3u);
    for (void* const block : blocks)
        std::memset(block, 0x55, small.getBufferSize());  // the sanitizer knows the size
    releaseAll(*pool, blocks);
}

TEST_F(ResourcePoolRAMTest, withAnInvalidFormatInitializeIsType262AndItStaysUninitialized) {
    EXPECT_EQ(pool->initialize().get(), 262);
    (void)pool->setup(3, SizeUnit::buffers, VideoBufferResolution(16, 8, 0, 8, false));
    EXPECT_EQ(pool->initialize().get(), 262);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolRAMTest, initializingTwiceMakesNothingNew) {
    build(2);
    EXPECT_EQ(pool->initialize().get(), Status::ok);
    EXPECT_EQ(numFree(*pool), 2u);
}

TEST_F(ResourcePoolRAMTest, uninitializingTwiceSucceeds) {
    build(2);
    EXPECT_EQ(pool->uninitialize().get(), Status::ok);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_EQ(pool->lock(true), nullptr);
    EXPECT_EQ(pool->uninitialize().get(), Status::ok);
}

TEST_F(ResourcePoolRAMTest, theLastBlockIsKeptForThoseWhoMayHaveIt) {
    build(1);
    EXPECT_EQ(pool->lock(false), nullptr);
    void* const last = pool->lock(true);
    EXPECT_NE(last, nullptr);
    EXPECT_EQ(pool->lock(true), nullptr);
    pool->release(last);
    build(2);
    void* const first = pool->lock(false);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(pool->lock(false), nullptr);
    pool->release(first);
}

TEST_F(ResourcePoolRAMTest, lendsTheBlockThatCameBackLast) {
    build(3);
    void* const a = pool->lock(true);
    void* const b = pool->lock(true);
    pool->release(a);
    pool->release(b);
    void* const first = pool->lock(true);
    void* const second = pool->lock(true);
    EXPECT_EQ(first, b);
    EXPECT_EQ(second, a);
    pool->release(first);
    pool->release(second);
}

TEST_F(ResourcePoolRAMTest, withoutMemoryForItsBlocksInitializeIsType1WithAMessageAndItStaysUninitialized) {
    const LogCapture log;
    const VideoBufferResolution immense(1000000000, 1000000000, 4, 8, false);
    EXPECT_EQ(pool->setup(2, ResourcePool::SizeUnit::buffers, immense).get(), Status::general_failure);
    EXPECT_FALSE(pool->isInitialized());
    EXPECT_TRUE(log.contains("ResourcePoolRAM::initialize() failed: no memory for 2 blocks"));
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolRAMTest, aBudgetBelowOneFrameGivesAPoolWithoutBlocks) {
    constexpr VideoBufferResolution hd(1920, 1080, 4, 8, false);
    EXPECT_EQ(pool->setup(7, SizeUnit::megabytes, hd).get(), Status::ok);
    EXPECT_TRUE(pool->isInitialized());
    EXPECT_EQ(pool->lock(false), nullptr);
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolRAMTest, aBudgetOfSeveralFramesGivesSoManyBlocks) {
    constexpr VideoBufferResolution mebibyte(512, 512, 4, 8, false);
    EXPECT_EQ(pool->setup(3, SizeUnit::megabytes, mebibyte).get(), Status::ok);
    EXPECT_EQ(numFree(*pool), 3u);
}

TEST_F(ResourcePoolRAMTest, formatsAreTheSameWhateverTheFloatFlagAndValidity) {
    constexpr VideoBufferResolution integers(16, 8, 4, 16, false);
    EXPECT_TRUE(pool->isSameResolution(integers, VideoBufferResolution(16, 8, 4, 16, true)));
    EXPECT_FALSE(pool->isSameResolution(integers, VideoBufferResolution(17, 8, 4, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(integers, VideoBufferResolution(16, 9, 4, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(integers, VideoBufferResolution(16, 8, 3, 16, false)));
    EXPECT_FALSE(pool->isSameResolution(integers, VideoBufferResolution(16, 8, 4, 32, false)));
    EXPECT_TRUE(pool->isSameResolution(VideoBufferResolution(), VideoBufferResolution(0, 0, 0, 0, true)));
    EXPECT_FALSE(pool->isSameResolution(VideoBufferResolution(), VideoBufferResolution(0, 0, 4, 8, false)));
}

TEST_F(ResourcePoolRAMTest, changingFromIntegersToFloatsKeepsTheBlocks) {
    ASSERT_EQ(pool->setup(3, SizeUnit::buffers, VideoBufferResolution(16, 8, 4, 16, false)).get(), Status::ok);
    auto before = lockAll(*pool);
    EXPECT_EQ(pool->setResolution(VideoBufferResolution(16, 8, 4, 16, true)).get(), Status::ok);
    releaseAll(*pool, before);
    auto after = lockAll(*pool);
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    EXPECT_EQ(before, after);
    releaseAll(*pool, after);
}

TEST_F(ResourcePoolRAMTest, aBlockOfAnEarlierLifeIsFreedAndNotLentAgain) {
    build(3);
    void* const old = pool->lock(true);
    ASSERT_EQ(pool->uninitialize().get(), Status::ok);
    ASSERT_EQ(pool->initialize().get(), Status::ok);
    EXPECT_EQ(numFree(*pool), 3u);
    pool->release(old);
    EXPECT_EQ(numFree(*pool), 3u);
}

TEST_F(ResourcePoolRAMTest, blocksLentDuringARebuildForAnotherFormatAreFreedWhenTheyComeBack) {
    build(4);
    void* const a = pool->lock(true);
    void* const b = pool->lock(true);
    ASSERT_EQ(pool->setResolution(twiceAsWide).get(), Status::ok);
    std::memset(a, 1, small.getBufferSize());  // still the borrower's
    pool->release(a);
    pool->release(b);
    EXPECT_EQ(numFree(*pool), 4u);
}

TEST_F(ResourcePoolRAMTest, aBlockMayComeBackAfterThePoolWasUninitialized) {
    build(2);
    void* const block = pool->lock(true);
    ASSERT_EQ(pool->uninitialize().get(), Status::ok);
    pool->release(block);
    EXPECT_EQ(pool->lock(true), nullptr);
}

TEST_F(ResourcePoolRAMTest, announcesEveryLoanAndEveryReturn) {
    build(2);
    PoolObserver observer(*pool);
    void* const block = pool->lock(false);
    EXPECT_EQ(observer.numLockHints, 1);
    EXPECT_EQ(pool->lock(false), nullptr);
    EXPECT_EQ(observer.numLockHints, 1);
    EXPECT_EQ(observer.numReleaseHints, 0);
    pool->release(block);
    EXPECT_EQ(observer.numReleaseHints, 1);
    EXPECT_EQ(observer.numStrangeHints, 0);
}

TEST_F(ResourcePoolRAMTest, announcesTheReturnOfABlockThatIsNotItsOwnAndOfNull) {
    build(2);
    PoolObserver observer(*pool);
    pool->release(nullptr);
    EXPECT_EQ(observer.numReleaseHints, 1);
    pool->release(std::malloc(8));
    EXPECT_EQ(observer.numReleaseHints, 2);
    EXPECT_EQ(numFree(*pool), 2u);
}

TEST_F(ResourcePoolRAMTest, postsNothingWithDebugLinesOff) {
    const LogCapture log;
    build(2);
    pool->release(pool->lock(true));
    (void)pool->uninitialize();
    (void)pool->lock(true);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(ResourcePoolRAMTest, anObserverMayAskThePoolThatNotifiesIt) {
    build(2);
    uint32 numSeen = 0;
    PoolObserver observer(*pool, [&] { numSeen = pool->getNumResources(); });
    pool->release(pool->lock(true));
    EXPECT_EQ(numSeen, 2u);
}

TEST_F(ResourcePoolRAMTest, observersAreToldUnderThePoolsLock) {
    build(2);
    std::atomic<bool> isAnswered{false};
    std::thread asking;
    PoolObserver observer(*pool, [&] {
        asking = std::thread([&] {
            (void)pool->isInitialized();
            isAnswered = true;
        });
        EXPECT_TRUE(staysFalse(isAnswered));
    });
    void* const block = pool->lock(true);
    asking.join();
    EXPECT_TRUE(isAnswered);
    EXPECT_EQ(observer.numLockHints, 1);
    isAnswered = false;
    pool->release(block);
    asking.join();
    EXPECT_TRUE(isAnswered);
}

TEST_F(ResourcePoolRAMTest, manyThreadsBorrowAndNoneSharesABlock) {
    constexpr int numThreads = 4;
    constexpr int rounds = 500;
    build(numThreads);
    std::atomic<int> numShared{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < numThreads; ++thread) {
        threads.emplace_back([this, thread, &numShared] {
            for (int i = 0; i < rounds; ++i) {
                auto* const block = static_cast<int*>(pool->lock(true));
                if (!block) continue;
                *block = thread;
                std::this_thread::yield();
                if (*block != thread) ++numShared;
                pool->release(block);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(numShared, 0);
    EXPECT_EQ(numFree(*pool), static_cast<size_t>(numThreads));
}

TEST_F(ResourcePoolRAMTest, leavesLentBlocksToTheirBorrowersWhenItEnds) {
    void* block = nullptr;
    {
        const auto shortLived = ResourcePoolRAM::create();
        ASSERT_EQ(shortLived->setup(2, SizeUnit::buffers, small).get(), Status::ok);
        block = shortLived->lock(true);
    }
    std::memset(block, 1, small.getBufferSize());
    std::free(block);
}

// ---- With debug lines on --------------------------------------------------------------------------------------------

class ResourcePoolRAMDebugLines : public ResourcePoolRAMTest {};

TEST_F(ResourcePoolRAMDebugLines, lockingAndReleasingSayHowManyRemain) {
    build(3);
    const LogCapture log;
    void* const block = pool->lock(true);
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("Locking a buffer remaining 2"));
    pool->release(block);
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("Locking a buffer remaining 2", "Releasing a buffer remaining 3"));
    for (LogMsg const& message : log.messages()) {
        EXPECT_EQ(message.channel(), "QRT_PLAYER");
        EXPECT_EQ(message.file(), "src/player/private/qrtResourcePoolRAM");
        EXPECT_GT(message.line(), 0);
    }
}

TEST_F(ResourcePoolRAMDebugLines, observersAreToldBeforeTheLineIsPosted) {
    build(3);
    const LogCapture log;
    std::vector<size_t> numPosted;
    PoolObserver observer(*pool, [&] { numPosted.push_back(log.messages().size()); });
    pool->release(pool->lock(true));
    EXPECT_THAT(numPosted, ::testing::ElementsAre(0u, 1u));
    EXPECT_EQ(log.messages().size(), 2u);
}

TEST_F(ResourcePoolRAMDebugLines, releasingNullSaysHowManyRemainToo) {
    build(3);
    const LogCapture log;
    pool->release(nullptr);
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("Releasing a buffer remaining 3"));
}

TEST_F(ResourcePoolRAMDebugLines, buildingClearingAndAnExhaustedPoolSayNothing) {
    const LogCapture log;
    build(1);
    EXPECT_EQ(pool->lock(false), nullptr);
    (void)pool->uninitialize();
    EXPECT_EQ(pool->lock(true), nullptr);
    EXPECT_TRUE(log.messages().empty());
}

TEST(ResourcePoolRAM, needsNoMemoryToLendAgain) {
    if (!AllocationCounter::works()) GTEST_SKIP() << "allocations are not counted in sanitizer builds";
    const auto pool = ResourcePoolRAM::create();
    ASSERT_EQ(pool->setup(3, SizeUnit::buffers, small).get(), Status::ok);
    pool->release(pool->lock(true));
    const AllocationCounter allocations;
    for (int i = 0; i < 10; ++i)
        pool->release(pool->lock(true));
    EXPECT_EQ(allocations.count(), 0u);
}

}  // namespace QRT_0_81
