#include "foundation/logger/qrtMsgBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace QRT_0_81 {
namespace {

class MsgBuilderPosts : public ::testing::Test {
protected:
    MsgBuilderPosts() { posted().clear(); }

    static std::vector<LogMsg>& posted() {
        static std::vector<LogMsg> messages;
        return messages;
    }
    static void post(LogMsg const& message) { posted().push_back(message); }

    /// The one message that was posted.
    static LogMsg only() {
        EXPECT_EQ(posted().size(), 1u);
        return posted().empty() ? LogMsg("none", "none", -1, "none") : posted().front();
    }
};

TEST_F(MsgBuilderPosts, oneMessageWithChannelAndSource) {
    MsgBuilder<2>("src/some.cpp", 42, post)("QRT_PLAYER", "frame %d of %s", 7, "clip");
    EXPECT_EQ(only().channel(), "QRT_PLAYER");
    EXPECT_EQ(only().file(), "src/some.cpp");
    EXPECT_EQ(only().line(), 42);
    EXPECT_EQ(only().text(), "frame 7 of clip");
}

TEST_F(MsgBuilderPosts, oneMessageWithoutAChannel) {
    MsgBuilder<0>("src/other.cpp", 3, post)("%lld frames", 9000000000LL);
    EXPECT_EQ(only().channel(), "");
    EXPECT_EQ(only().file(), "src/other.cpp");
    EXPECT_EQ(only().line(), 3);
    EXPECT_EQ(only().text(), "9000000000 frames");
}

TEST_F(MsgBuilderPosts, oneMessagePerCall) {
    const MsgBuilder<2> builder("file", 1, post);
    builder("A", "%s", "first");
    builder("B", "%s", "second");
    ASSERT_EQ(posted().size(), 2u);
    EXPECT_EQ(posted()[0].text(), "first");
    EXPECT_EQ(posted()[1].channel(), "B");
}

TEST_F(MsgBuilderPosts, textOfAnyLengthUncut) {
    const std::string text(100'000, 'x');
    MsgBuilder<2>("file", 1, post)("C", "<%s>", text.c_str());
    EXPECT_EQ(only().text(), "<" + text + ">");
}

TEST_F(MsgBuilderPosts, anEmptyText) {
    MsgBuilder<2>("file", 1, post)("C", "%s", "");
    EXPECT_EQ(only().text(), "");
}

TEST_F(MsgBuilderPosts, argumentsThatLookLikeFormatsAsTheyAre) {
    MsgBuilder<2>("file", 1, post)("C", "%s", "100%s of %n %d");
    EXPECT_EQ(only().text(), "100%s of %n %d");
}

TEST_F(MsgBuilderPosts, nullPointersAsEmptyTexts) {
    char const* const nothing = nullptr;
    MsgBuilder<2>(nothing, 1, post)(nothing, nothing);
    EXPECT_EQ(only().channel(), "");
    EXPECT_EQ(only().file(), "");
    EXPECT_EQ(only().text(), "");
    posted().clear();
    MsgBuilder<0>(nothing, 1, post)(nothing);
    EXPECT_EQ(only().text(), "");
}

}  // namespace
}  // namespace QRT_0_81
