#include "foundation/core/qrtVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/core/qrtString.h"
#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;

TEST(Vector, isEmptyByDefault) {
    const Vector<String> names;
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(names.size(), 0u);
    EXPECT_EQ(names.begin(), names.end());
}

TEST(Vector, growsAtItsEnd) {
    Vector<String> names;
    names.push_back("HEAD");
    EXPECT_EQ(names.back(), "HEAD");
    names.push_back("TAIL");
    EXPECT_EQ(names.back(), "TAIL");
    EXPECT_FALSE(names.empty());
    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], "HEAD");
    EXPECT_EQ(names[1], "TAIL");
}

TEST(Vector, letsItsElementsBeChanged) {
    Vector<int> numbers;
    numbers.push_back(1);
    numbers.push_back(2);
    numbers[0] = 10;
    numbers.back() = 20;
    for (int& number : numbers)
        number += 1;
    EXPECT_THAT(itemsOf(numbers), ElementsAre(11, 21));
}

TEST(Vector, readsTheSameWhenConst) {
    Vector<int> numbers;
    numbers.push_back(4);
    numbers.push_back(5);
    Vector<int> const& constant = numbers;
    EXPECT_EQ(constant[0], 4);
    EXPECT_EQ(constant.back(), 5);
    EXPECT_THAT(itemsOf(constant), ElementsAre(4, 5));
}

TEST(Vector, isIndependentOfItsCopies) {
    Vector<int> numbers;
    numbers.push_back(1);
    Vector<int> copy = numbers;
    copy.clear();
    EXPECT_TRUE(copy.empty());
    EXPECT_THAT(itemsOf(numbers), ElementsAre(1));
}

}  // namespace
}  // namespace QRT_0_81
