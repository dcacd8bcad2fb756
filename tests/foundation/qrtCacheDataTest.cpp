#include "foundation/cache/qrtCacheData.h"

#include <gtest/gtest.h>

#include "foundation/core/qrtSharedPtr.h"

namespace QRT_0_81 {
namespace {

class CacheDataBase : public ::testing::Test {
protected:
    class Record final : public CacheData {};

    const SharedPtr<CacheData> record{new Record};
};

TEST_F(CacheDataBase, cannotBeCopied) {
    EXPECT_TRUE(record->clone() == nullptr);
    EXPECT_TRUE(ConstSharedPtr<CacheData>(record)->clone() == nullptr);
}

TEST_F(CacheDataBase, neverExpires) {
    EXPECT_FALSE(record->expire(CacheData::Reason::lookup));
    EXPECT_FALSE(record->expire(static_cast<CacheData::Reason>(12)));
}

TEST_F(CacheDataBase, hasNoTextForm) {
    String text("before");
    int version = 42;
    EXPECT_EQ(record->serialize(text, version).get(), Status::general_failure);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(version, 42);
    EXPECT_EQ(record->deserialize("{}").get(), Status::general_failure);
}

}  // namespace
}  // namespace QRT_0_81
