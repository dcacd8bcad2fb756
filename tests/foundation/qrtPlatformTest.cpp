#include "foundation/core/qrtPlatform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

#if defined(__linux__)
#include <pthread.h>
#endif

namespace QRT_0_81 {
namespace {

constexpr char variable[] = "QRT_PLATFORM_TEST_VARIABLE";

class PlatformEnvironment : public ::testing::Test {
protected:
    ~PlatformEnvironment() override { ::unsetenv(variable); }
};

TEST_F(PlatformEnvironment, givesTheValueOfAVariable) {
    ASSERT_EQ(::setenv(variable, "some value", 1), 0);
    EXPECT_STREQ(Platform::getenv(variable), "some value");
}

TEST_F(PlatformEnvironment, tellsAnEmptyVariableFromOneThatIsNotSet) {
    ASSERT_EQ(::setenv(variable, "", 1), 0);
    EXPECT_STREQ(Platform::getenv(variable), "");
    ASSERT_EQ(::unsetenv(variable), 0);
    EXPECT_EQ(Platform::getenv(variable), nullptr);
}

TEST_F(PlatformEnvironment, hasNoVariableWithoutAName) {
    EXPECT_EQ(Platform::getenv(nullptr), nullptr);
    EXPECT_EQ(Platform::getenv(""), nullptr);
}

#if defined(__linux__)
std::string nameOfAThreadNamed(String const& name, int& result) {
    char seen[64] = {};
    std::jthread([&] {
        result = Platform::setThreadName(name);
        ::pthread_getname_np(::pthread_self(), seen, sizeof seen);
    }).join();
    return seen;
}

TEST(PlatformThreadName, isWhatDebuggersSee) {
    int result = -1;
    EXPECT_EQ(nameOfAThreadNamed("QRT-PLAYER", result), "QRT-PLAYER");
    EXPECT_EQ(result, 0);
}

TEST(PlatformThreadName, isCutToWhatTheSystemTakes) {
    int result = -1;
    EXPECT_EQ(nameOfAThreadNamed("0123456789ABCDEFGHIJ", result), "0123456789ABCDE");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(nameOfAThreadNamed("0123456789ABCDE", result), "0123456789ABCDE");
    EXPECT_EQ(result, 0);
}

TEST(PlatformThreadName, belongsToTheCallingThreadOnly) {
    char before[64] = {};
    char after[64] = {};
    ::pthread_getname_np(::pthread_self(), before, sizeof before);
    int result = -1;
    EXPECT_EQ(nameOfAThreadNamed("another", result), "another");
    ::pthread_getname_np(::pthread_self(), after, sizeof after);
    EXPECT_STREQ(after, before);
}
#endif

}  // namespace
}  // namespace QRT_0_81
