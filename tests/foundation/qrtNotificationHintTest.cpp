#include "foundation/core/qrtNotificationHint.h"

#include <gtest/gtest.h>

#include <memory>

namespace QRT_0_81 {
namespace {

TEST(NotificationHint, isToldFromAnInvalidationByItsType) {
    const auto isInvalidation = [](NotificationHint const& hint) {
        return dynamic_cast<InvalidationHint const*>(&hint) != nullptr;
    };
    EXPECT_FALSE(isInvalidation(NotificationHint()));
    EXPECT_TRUE(isInvalidation(InvalidationHint(1, 2)));
}

TEST(NotificationHint, isDestroyedThroughItsBase) {
    struct Flagging final : NotificationHint {
        explicit Flagging(bool& flag) : gone(flag) {}
        ~Flagging() override { gone = true; }
        bool& gone;
    };
    bool gone = false;
    std::unique_ptr<NotificationHint> hint = std::make_unique<Flagging>(gone);
    hint.reset();
    EXPECT_TRUE(gone);
}

TEST(InvalidationHint, namesTheFirstAndTheLastFrame) {
    const InvalidationHint hint(-3, 12);
    EXPECT_EQ(hint.getStartFrame(), -3);
    EXPECT_EQ(hint.getEndFrame(), 12);
}

TEST(InvalidationHint, keepsARangeThatNamesNoFrame) {
    const InvalidationHint hint(5, 4);
    EXPECT_EQ(hint.getStartFrame(), 5);
    EXPECT_EQ(hint.getEndFrame(), 4);
}

}  // namespace
}  // namespace QRT_0_81
