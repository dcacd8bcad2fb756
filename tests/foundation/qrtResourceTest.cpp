#include "foundation/core/qrtResource.h"

#include <gtest/gtest.h>

namespace QRT_0_81 {
namespace {

TEST(Resource, numbersMemoryZeroAndVideoMemoryOne) {
    EXPECT_EQ(static_cast<int>(Resource::Type::ram), 0);
    EXPECT_EQ(static_cast<int>(Resource::Type::vram), 1);
}

TEST(ResourceConstraint, numbersFixedZeroAndAutomaticOne) {
    EXPECT_EQ(static_cast<int>(ResourceConstraint::ResizeMode::fixed), 0);
    EXPECT_EQ(static_cast<int>(ResourceConstraint::ResizeMode::automatic), 1);
}

}  // namespace
}  // namespace QRT_0_81
