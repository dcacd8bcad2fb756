#include "foundation/core/qrtRefCountedMT.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/core/qrtSharedPtr.h"
#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

class Plain : public RefCountedMT {};

TEST(RefCountedMT, startsWithoutAReference) {
    const Plain object;
    EXPECT_EQ(object.refcount(), 0u);
}

TEST(RefCountedMT, countsReferencesAndTellsWhenTheLastIsGone) {
    const Plain object;
    object.incref();
    object.incref();
    EXPECT_EQ(object.refcount(), 2u);
    EXPECT_FALSE(object.decref());
    EXPECT_EQ(object.refcount(), 1u);
    EXPECT_TRUE(object.decref());
    EXPECT_EQ(object.refcount(), 0u);
}

TEST(RefCountedMT, neverDeletesItself) {
    std::atomic<int> alive{0};
    const auto object = std::make_unique<Tracked>(alive);
    object->incref();
    EXPECT_TRUE(object->decref());
    EXPECT_EQ(alive, 1);
}

TEST(RefCountedMT, startsACopyWithoutAReference) {
    const Plain object;
    object.incref();
    const Plain copy(object);
    EXPECT_EQ(copy.refcount(), 0u);
    EXPECT_EQ(object.refcount(), 1u);
    EXPECT_TRUE(object.decref());
}

TEST(RefCountedMT, keepsItsOwnCountWhenAssigned) {
    const Plain source;
    Plain target;
    target.incref();
    target.incref();
    target = source;
    EXPECT_EQ(target.refcount(), 2u);
    EXPECT_EQ(source.refcount(), 0u);
    EXPECT_FALSE(target.decref());
    EXPECT_TRUE(target.decref());
}

TEST(RefCountedMT, isDeletedThroughItsVirtualDestructor) {
    std::atomic<int> alive{0};
    SharedPtr<RefCountedMT> pointer(new Tracked(alive));
    EXPECT_EQ(alive, 1);
    pointer.reset();
    EXPECT_EQ(alive, 0);
}

TEST(RefCountedMT, countsExactlyWhenManyThreadsTakeAndDropReferences) {
    constexpr int numThreads = 4;
    constexpr int numRounds = 2000;
    const Plain object;
    std::atomic<int> lastOnes{0};
    std::latch start(numThreads);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < numThreads; ++i) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                for (int round = 0; round < numRounds; ++round)
                    object.incref();
                for (int round = 0; round < numRounds; ++round)
                    lastOnes += object.decref() ? 1 : 0;
            });
        }
    }
    EXPECT_EQ(object.refcount(), 0u);
    EXPECT_GE(lastOnes, 1);
}

TEST(RefCountedMT, showsTheDeletingThreadWhatTheOthersDid) {
    // What each thread writes through its reference must be there when the object is destroyed, without further locks.
    struct Shared final : RefCountedMT {
        explicit Shared(int& result) : sum(result) {}
        ~Shared() override { sum = first + second; }
        int first = 0;
        int second = 0;
        int& sum;
    };
    for (int round = 0; round < 200; ++round) {
        int sum = 0;
        {
            SharedPtr<Shared> one(new Shared(sum));
            SharedPtr<Shared> two = one;
            std::latch start(2);
            std::jthread other([&start, own = std::move(two)]() mutable {
                start.arrive_and_wait();
                own->first = 1;
                own.reset();
            });
            start.arrive_and_wait();
            one->second = 2;
            one.reset();
        }
        ASSERT_EQ(sum, 3);
    }
}

}  // namespace
}  // namespace QRT_0_81
