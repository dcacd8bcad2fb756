// The form of the player's log lines, and when they are posted.
#include "qrtDebugLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>

#include "harness/qrtLogCapture.h"

namespace QRT_0_81 {

namespace {

using ::testing::StartsWith;

constexpr char place[] = "src/player/private/somePlace";

/// Sets or unsets a variable of the environment for one scope.
class ScopedVariable final {
public:
    ScopedVariable(char const* name, char const* value) : m_name(name) {
        if (char const* const old = std::getenv(name)) m_old = old, m_wasSet = true;
        set(value);
    }
    ~ScopedVariable() { set(m_wasSet ? m_old.c_str() : nullptr); }
    ScopedVariable(ScopedVariable const&) = delete;
    ScopedVariable& operator=(ScopedVariable const&) = delete;

    void set(char const* value) const {
        if (value) {
            setenv(m_name, value, 1);
        } else {
            unsetenv(m_name);
        }
    }

private:
    char const* const m_name;
    std::string m_old;
    bool m_wasSet = false;
};

/// "thread_id=", this thread's id in a field of 14, "-".
std::string prefixOfThisThread() {
    std::ostringstream id;
    id << std::this_thread::get_id();
    std::string field = id.str();
    if (field.size() < 14) field.insert(0, 14 - field.size(), ' ');
    return "thread_id=" + field + "-";
}

/// A place of its own each, since a place decides only once; the argument counts how often it is evaluated.
int numFormatted = 0;
char const* formatted() {
    ++numFormatted;
    return "formatted";
}
void emitAtPlaceA() {
    QRT_DEBUG_LINE(place, "A %s", formatted());
}
void emitAtPlaceB() {
    QRT_DEBUG_LINE(place, "B %s", formatted());
}
void emitAtPlaceC() {
    QRT_DEBUG_LINE(place, "C %s", formatted());
}
void emitAtPlaceD() {
    QRT_DEBUG_LINE(place, "D");
}

}  // namespace

TEST(DebugLineTest, readsThreadIdInAFieldOf14ThenADashThenTheMessage) {
    const LogCapture log;
    DebugLine::post(place, 12, "%s %d", "frames", 7);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].text(), prefixOfThisThread() + "frames 7");
}

TEST(DebugLineTest, namesTheThreadThatPosts) {
    const LogCapture log;
    std::string prefix;
    std::thread other([&] {
        prefix = prefixOfThisThread();
        DebugLine::post(place, 12, "hello");
    });
    other.join();
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].text(), prefix + "hello");
    EXPECT_NE(prefix, prefixOfThisThread());
}

TEST(DebugLineTest, goesToThePlayersChannelUnderTheSourceAndLineThatSpeak) {
    const LogCapture log;
    DebugLine::post(place, 1234, "hello");
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), place);
    EXPECT_EQ(log.messages()[0].line(), 1234);
}

TEST(DebugLineTest, isCutTo1023Characters) {
    const LogCapture log;
    const std::string prefix = prefixOfThisThread();
    const std::string whole(1023 - prefix.size(), 'x');
    DebugLine::post(place, 1, "%s", whole.c_str());
    DebugLine::post(place, 1, "%s", (whole + "y").c_str());
    DebugLine::post(place, 1, "%s", std::string(5000, 'x').c_str());
    const auto messages = log.messages();
    ASSERT_EQ(messages.size(), 3u);
    for (LogMsg const& message : messages)
        EXPECT_EQ(message.text(), prefix + whole);
}

TEST(DebugLineTest, keepsOnlyTheFirstLineOfItsMessage) {
    const LogCapture log;
    DebugLine::post(place, 1, "first\nsecond\n");
    DebugLine::post(place, 1, "with an end\n");
    DebugLine::post(place, 1, "\nnothing but more");
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("first", "with an end", ""));
}

TEST(DebugLineTest, takesPercentSignsInItsMessageAsTheyAre) {
    const LogCapture log;
    DebugLine::post(place, 1, "%s", "100%s of %d");
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("100%s of %d"));
}

TEST(DebugLineTest, isOffWithTheVariableUnsetAndThenNothingIsFormattedOrPosted) {
    const ScopedVariable variable("QRT_DEBUG_PLAYER", nullptr);
    const LogCapture log;
    numFormatted = 0;
    EXPECT_FALSE(DebugLine::isOn());
    emitAtPlaceA();
    EXPECT_EQ(numFormatted, 0);
    EXPECT_TRUE(log.messages().empty());
}

TEST(DebugLineTest, isOnForAnyValueAnEmptyOneIncluded) {
    const ScopedVariable variable("QRT_DEBUG_PLAYER", "");
    const LogCapture log;
    EXPECT_TRUE(DebugLine::isOn());
    emitAtPlaceB();
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("B formatted"));
    variable.set("0");
    EXPECT_TRUE(DebugLine::isOn());
}

TEST(DebugLineTest, everyPlaceDecidesOnceAndForGood) {
    const ScopedVariable variable("QRT_DEBUG_PLAYER", "1");
    const LogCapture log;
    emitAtPlaceC();
    variable.set(nullptr);
    emitAtPlaceC();  // has decided
    emitAtPlaceD();  // decides now
    variable.set("1");
    emitAtPlaceC();
    emitAtPlaceD();
    EXPECT_THAT(log.lines(), ::testing::ElementsAre("C formatted", "C formatted", "C formatted"));
}

TEST(DebugLineTest, aPlaceNamesTheLineThatItStandsOn) {
    const ScopedVariable variable("QRT_DEBUG_PLAYER", "1");
    const LogCapture log;
    const int before = __LINE__;
    QRT_DEBUG_LINE(place, "here");
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].line(), before + 1);
    EXPECT_THAT(log.messages()[0].text(), StartsWith("thread_id="));
}

}  // namespace QRT_0_81
