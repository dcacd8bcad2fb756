#include "foundation/core/qrtList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/core/qrtSharedPtr.h"
#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;

TEST(List, isEmptyByDefault) {
    List<int> list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0u);
    EXPECT_FALSE(list.begin() != list.end());
}

TEST(List, growsAtItsEnd) {
    List<int> list;
    list.append(3);
    list.append(1);
    list.append(2);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(list.size(), 3u);
    EXPECT_THAT(itemsOf(list), ElementsAre(3, 1, 2));
}

TEST(List, isWalkedWithAnIterator) {
    List<int> list;
    list.append(10);
    list.append(20);
    int sum = 0;
    for (List<int>::Iterator it = list.begin(); it != list.end(); ++it) {
        sum += *it;
        *it += 1;
    }
    EXPECT_EQ(sum, 30);
    EXPECT_THAT(itemsOf(list), ElementsAre(11, 21));
}

TEST(List, isWalkedWithAnIteratorWhenConst) {
    List<int> list;
    list.append(5);
    List<int> const& constant = list;
    List<int>::ConstIterator it = constant.begin();
    EXPECT_EQ(*it, 5);
    EXPECT_FALSE(++it != constant.end());
}

TEST(List, keepsIteratorsValidWhileItGrows) {
    List<int> list;
    list.append(1);
    List<int>::Iterator first = list.begin();
    for (int i = 2; i <= 1000; ++i)
        list.append(i);
    EXPECT_EQ(*first, 1);
    EXPECT_EQ(*++first, 2);
}

TEST(List, isIndependentOfItsCopies) {
    List<int> list;
    list.append(1);
    List<int> copy(list);
    copy.append(2);
    EXPECT_THAT(itemsOf(list), ElementsAre(1));
    EXPECT_THAT(itemsOf(copy), ElementsAre(1, 2));
    copy.clear();
    EXPECT_TRUE(copy.empty());
    EXPECT_FALSE(list.empty());
}

TEST(List, holdsAReferenceToEachSharedObject) {
    std::atomic<int> alive{0};
    SharedPtr<Tracked> object(new Tracked(alive));
    {
        List<SharedPtr<Tracked>> list;
        list.append(object);
        const List<SharedPtr<Tracked>> copy = list;
        EXPECT_EQ(object->refcount(), 3u);
    }
    EXPECT_EQ(object->refcount(), 1u);
}

}  // namespace
}  // namespace QRT_0_81
