#include "foundation/core/qrtSharedPtr.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

class Derived final : public Tracked {
public:
    using Tracked::Tracked;
    int value = 7;
};

class SharedPointer : public ::testing::Test {
protected:
    ~SharedPointer() override { EXPECT_EQ(alive, 0) << "objects left behind"; }

    std::atomic<int> alive{0};
};

TEST_F(SharedPointer, isEmptyUntilItIsGivenAnObject) {
    const SharedPtr<Tracked> defaulted;
    const SharedPtr<Tracked> fromNull(nullptr);
    const SharedPtr<Tracked> fromNullObject(static_cast<Tracked*>(nullptr));
    for (auto const& pointer : {defaulted, fromNull, fromNullObject}) {
        EXPECT_FALSE(static_cast<bool>(pointer));
        EXPECT_EQ(pointer.get(), nullptr);
        EXPECT_TRUE(pointer == nullptr);
    }
}

TEST_F(SharedPointer, holdsOneReference) {
    auto* const object = new Derived(alive);
    const SharedPtr<Derived> pointer(object);
    EXPECT_EQ(object->refcount(), 1u);
    EXPECT_TRUE(static_cast<bool>(pointer));
    EXPECT_FALSE(pointer == nullptr);
    EXPECT_EQ(pointer.get(), object);
    EXPECT_EQ(&*pointer, object);
    EXPECT_EQ(pointer->value, 7);
}

TEST_F(SharedPointer, addsAReferenceWhenCopiedAndDropsItWhenDestroyed) {
    const SharedPtr<Derived> first(new Derived(alive));
    {
        const SharedPtr<Derived> second(first);
        EXPECT_EQ(first->refcount(), 2u);
        EXPECT_EQ(second.get(), first.get());
    }
    EXPECT_EQ(first->refcount(), 1u);
}

TEST_F(SharedPointer, deletesTheObjectWithTheLastReference) {
    SharedPtr<Tracked> first(new Derived(alive));
    SharedPtr<Tracked> second = first;
    first.reset();
    EXPECT_EQ(alive, 1);
    EXPECT_TRUE(first == nullptr);
    second.reset();
    EXPECT_EQ(alive, 0);
    second.reset();
    EXPECT_TRUE(second == nullptr);
}

TEST_F(SharedPointer, movesWithoutTouchingTheCount) {
    SharedPtr<Derived> first(new Derived(alive));
    auto* const object = first.get();
    SharedPtr<Derived> second(std::move(first));
    EXPECT_TRUE(first == nullptr);
    EXPECT_EQ(second.get(), object);
    EXPECT_EQ(object->refcount(), 1u);
}

TEST_F(SharedPointer, dropsWhatItHeldWhenAssigned) {
    SharedPtr<Derived> pointer(new Derived(alive));
    const SharedPtr<Derived> other(new Derived(alive));
    pointer = other;
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(other->refcount(), 2u);
    pointer = SharedPtr<Derived>(new Derived(alive));
    EXPECT_EQ(alive, 2);
    EXPECT_EQ(other->refcount(), 1u);
    pointer = nullptr;
    EXPECT_EQ(alive, 1);
}

TEST_F(SharedPointer, survivesBeingAssignedToItself) {
    SharedPtr<Derived> pointer(new Derived(alive));
    auto const& same = pointer;
    pointer = same;
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(pointer->refcount(), 1u);
}

TEST_F(SharedPointer, swapsObjectsWithoutTouchingTheCounts) {
    SharedPtr<Derived> first(new Derived(alive));
    SharedPtr<Derived> second;
    auto* const object = first.get();
    first.swap(second);
    EXPECT_TRUE(first == nullptr);
    EXPECT_EQ(second.get(), object);
    EXPECT_EQ(object->refcount(), 1u);
}

TEST_F(SharedPointer, convertsFromDerivedToBaseAndFromMutableToConst) {
    const SharedPtr<Derived> derived(new Derived(alive));
    const SharedPtr<Tracked> base(derived);
    const ConstSharedPtr<Derived> constant(derived);
    const ConstSharedPtr<Tracked> both = derived;
    EXPECT_EQ(derived->refcount(), 4u);
    EXPECT_TRUE(base == derived);
    EXPECT_TRUE(constant == derived);
    EXPECT_TRUE(both == base);
}

TEST_F(SharedPointer, neverConvertsTheOtherWay) {
    EXPECT_FALSE((std::is_constructible_v<SharedPtr<Derived>, SharedPtr<Tracked>>));
    EXPECT_FALSE((std::is_constructible_v<SharedPtr<Derived>, ConstSharedPtr<Derived>>));
    EXPECT_FALSE((std::is_convertible_v<Derived*, SharedPtr<Derived>>)) << "a raw pointer is adopted only explicitly";
}

TEST_F(SharedPointer, givesNoWayToChangeAnObjectHeldAsConst) {
    using ConstReference = decltype(*std::declval<ConstSharedPtr<Derived>>());
    EXPECT_TRUE((std::is_same_v<ConstReference, Derived const&>));
}

TEST_F(SharedPointer, comparesTheObjectsNotTheirContents) {
    const SharedPtr<Derived> first(new Derived(alive));
    const SharedPtr<Derived> second(new Derived(alive));
    const SharedPtr<Derived> sameAsFirst = first;
    EXPECT_TRUE(first == sameAsFirst);
    EXPECT_FALSE(first == second);
    EXPECT_TRUE(first != second);
}

TEST_F(SharedPointer, castsToTheTypeThatTheObjectReallyHas) {
    const SharedPtr<Tracked> base(new Derived(alive));
    const auto derived = dynamicPtrCast<Derived>(base);
    EXPECT_TRUE(derived == base);
    EXPECT_EQ(base->refcount(), 2u);
}

TEST_F(SharedPointer, castsToAnEmptyPointerWhenTheObjectIsNone) {
    const SharedPtr<Tracked> base(new Tracked(alive));
    EXPECT_TRUE(dynamicPtrCast<Derived>(base) == nullptr);
    EXPECT_EQ(base->refcount(), 1u);
    EXPECT_TRUE(dynamicPtrCast<Derived>(SharedPtr<Tracked>()) == nullptr);
}

TEST_F(SharedPointer, copiesMayBeTakenAndDroppedOnManyThreads) {
    constexpr int numThreads = 4;
    SharedPtr<Derived> pointer(new Derived(alive));
    std::latch start(numThreads);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < numThreads; ++i) {
            threads.emplace_back([own = pointer, &start]() mutable {
                start.arrive_and_wait();
                for (int round = 0; round < 1000; ++round) {
                    const SharedPtr<Derived> copy = own;
                    EXPECT_EQ(copy->value, 7);
                }
                own.reset();
            });
        }
        pointer.reset();
    }
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace QRT_0_81
