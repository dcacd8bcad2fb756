#include "foundation/core/qrtString.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <unordered_map>

namespace QRT_0_81 {
namespace {

TEST(String, isEmptyByDefault) {
    const String text;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.size(), 0u);
    EXPECT_STREQ(text.c_str(), "");
}

TEST(String, keepsACopyOfTheCharacters) {
    char characters[] = "frame";
    const String text(characters);
    characters[0] = 'b';
    EXPECT_STREQ(text.c_str(), "frame");
    EXPECT_EQ(text.size(), 5u);
    EXPECT_FALSE(text.empty());
}

TEST(String, takesANullPointerForTheEmptyText) {
    char const* const nothing = nullptr;
    EXPECT_EQ(String(nothing), "");
    EXPECT_EQ(nothing + String("tail"), "tail");
    String text("head");
    text.append(nothing);
    EXPECT_EQ(text, "head");
}

TEST(String, appendsInPlace) {
    String text("QRT");
    EXPECT_EQ(&text.append("_").append("PLAYER"), &text);
    EXPECT_STREQ(text.c_str(), "QRT_PLAYER");
}

TEST(String, appendsItsOwnCharacters) {
    String text("ab");
    text.append(text.c_str());
    EXPECT_EQ(text, "abab");
}

TEST(String, isIndependentOfItsCopies) {
    const String original("one");
    String copy(original);
    copy.append(" more");
    EXPECT_EQ(original, "one");
    EXPECT_EQ(copy, "one more");
    copy = original;
    EXPECT_EQ(copy, "one");
}

TEST(String, comparesByContent) {
    EXPECT_TRUE(String("a") == String("a"));
    EXPECT_FALSE(String("a") == String("A"));
    EXPECT_TRUE(String("a") != String("ab"));
    EXPECT_TRUE(String("a") < String("b"));
    EXPECT_FALSE(String("b") < String("a"));
    EXPECT_FALSE(String("a") < String("a"));
}

TEST(String, joinsCharactersInFront) {
    const String name("HEAD");
    EXPECT_EQ("QRT_PREF_" + name, "QRT_PREF_HEAD");
    EXPECT_EQ(name, "HEAD");
}

TEST(String, keepsBytesThatAreNoAscii) {
    const String text("Bl\xC3\xBCte \xE2\x82\xAC");
    EXPECT_EQ(text.size(), 10u);
    EXPECT_STREQ(text.c_str(), "Bl\xC3\xBCte \xE2\x82\xAC");
}

TEST(String, takesTheTextOfAStandardString) {
    EXPECT_EQ(String(std::string(3000, 'x')).size(), 3000u);
}

TEST(String, isAKeyOfHashedContainers) {
    std::unordered_map<String, int> frames;
    frames["12"] = 12;
    frames["-1"] = -1;
    EXPECT_EQ(frames.at(String("12")), 12);
    EXPECT_EQ(frames.at("-1"), -1);
    EXPECT_EQ(frames.count("1"), 0u);
}

TEST(String, isWrittenToStreamsAsItIs) {
    std::ostringstream stream;
    stream << String("frame ") << 3;
    EXPECT_EQ(stream.str(), "frame 3");
}

}  // namespace
}  // namespace QRT_0_81
