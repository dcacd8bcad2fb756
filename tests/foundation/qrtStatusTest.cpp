#include "foundation/core/qrtStatus.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace QRT_0_81 {
namespace {

TEST(Status, isSuccessWhenDefaultConstructed) {
    const Status status;
    EXPECT_EQ(status.get(), Status::ok);
    EXPECT_TRUE(status.success());
    EXPECT_FALSE(status.failure());
    EXPECT_TRUE(static_cast<bool>(status));
}

TEST(Status, isFailureWithAnyTypeOtherThanZero) {
    for (const Status::Type type : {Status::general_failure, Status::not_in_cache, static_cast<Status::Type>(-1)}) {
        const Status status(type);
        EXPECT_FALSE(status.success());
        EXPECT_TRUE(status.failure());
        EXPECT_FALSE(static_cast<bool>(status));
    }
}

TEST(Status, takesTheTypeThatItIsSetTo) {
    Status status;
    status.set(Status::no_resource);
    EXPECT_EQ(status.get(), Status::no_resource);
    EXPECT_TRUE(status.failure());
    status.set(Status::ok);
    EXPECT_TRUE(status.success());
}

TEST(Status, comparesWithTypesAndWithOthers) {
    const Status status(Status::out_of_range);
    EXPECT_TRUE(status == Status::out_of_range);
    EXPECT_FALSE(status == Status::no_resource);
    EXPECT_TRUE(status == Status(Status::out_of_range));
    EXPECT_FALSE(status == Status());
}

TEST(Status, isMadeFromATypeWithoutACast) {
    const auto fails = []() -> Status { return Status::no_composition; };
    EXPECT_TRUE(fails() == Status::no_composition);
}

TEST(Status, convertsToBoolOnlyWhereAConditionIsMeant) {
    EXPECT_FALSE((std::is_convertible_v<Status, bool>));
    EXPECT_FALSE((std::is_convertible_v<Status, int>));
}

TEST(Status, isOneNumberThatIsCheapToCopy) {
    EXPECT_EQ(sizeof(Status), sizeof(int));
    EXPECT_TRUE(std::is_trivially_copyable_v<Status>);
}

TEST(Status, passesOnNumbersOutsideItsList) {
    const Status status(static_cast<Status::Type>(17));
    EXPECT_EQ(static_cast<int>(status.get()), 17);
    EXPECT_EQ(status.toString(), "unknown status 17");
    EXPECT_EQ(Status(static_cast<Status::Type>(-3)).toString(), "unknown status -3");
}

struct KnownType {
    char const* name;
    Status::Type type;
    int number;
    char const* words;
};

constexpr KnownType knownTypes[] = {
    {"success", Status::ok, 0, "success"},
    {"generalFailure", Status::general_failure, 1, "general failure"},
    {"invalidArgument", Status::invalid_argument, 3, "invalid argument"},
    {"invalidQuery", Status::invalid_query, 4, "invalid query"},
    {"notInitialized", Status::not_initialized, 256, "not initialized"},
    {"alreadyProducing", Status::already_producing, 257, "already producing"},
    {"outOfRange", Status::out_of_range, 258, "frame out of range"},
    {"invalidPlayParams", Status::invalid_play_params, 259, "invalid play parameters"},
    {"noResource", Status::no_resource, 260, "no pooled resource is free"},
    {"invalidPoolConfiguration", Status::invalid_pool_configuration, 262,
     "video format not supported by the resource pool"},
    {"noComposition", Status::no_composition, 265, "no composition"},
    {"compositionIncomplete", Status::composition_incomplete, 269,
     "composition adopted although parts of it cannot be rendered"},
    {"notProducing", Status::not_producing, 271, "not producing"},
    {"alreadyInitialized", Status::already_initialized, 272, "already initialized"},
    {"noCompositionToUpdate", Status::no_composition_to_update, 273, "no composition to update"},
    {"graphicsFailure", Status::graphics_failure, 274, "graphics failure during read-back"},
    {"notWhileProducing", Status::not_while_producing, 275, "not allowed while producing"},
    {"invalidText", Status::invalid_text, 532, "text is not valid"},
    {"notInCache", Status::not_in_cache, 1536, "not in the cache"},
};

class StatusNumbers : public ::testing::TestWithParam<KnownType> {};

TEST_P(StatusNumbers, arePartOfTheBinaryInterface) {
    EXPECT_EQ(static_cast<int>(GetParam().type), GetParam().number);
}

TEST_P(StatusNumbers, haveAPhraseForPeople) {
    EXPECT_EQ(Status(GetParam().type).toString(), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(Known, StatusNumbers, ::testing::ValuesIn(knownTypes),
                         [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

}  // namespace
}  // namespace QRT_0_81
