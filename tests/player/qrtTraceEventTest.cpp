#include "qrtTraceEvent.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace QRT_0_81 {

TEST(TraceEvents, haveTheirTimesInMicroseconds) {
    TraceEvent event('X', {"render"}, 12, 34);
    event.setTime(5'000'070);
    event.setDuration(1'009);
    EXPECT_EQ(event.text(), R"({"name":"render","cat":"player","ph":"X","pid":12,"tid":34,"ts":5000.070,"dur":1.009})");
}

TEST(TraceEvents, haveNumbersAndTextsAsArguments) {
    TraceEvent event('C', {"frames of player", 2}, 1, 1);
    event.add({"low", std::numeric_limits<int64>::min()});
    event.add({"command", "CmdSetPref"});
    event.add("thread", {"QRT-PLAYER", 3});
    EXPECT_EQ(event.text(), R"({"name":"frames of player 2","cat":"player","ph":"C","pid":1,"tid":1,)"
                            R"("args":{"low":-9223372036854775808,"command":"CmdSetPref","thread":"QRT-PLAYER 3"}})");
}

TEST(TraceEvents, replaceWhatWouldEndAText) {
    TraceEvent event('M', {"a\"b\\c\nd\xc3\xa4"}, 1, 1);
    EXPECT_EQ(event.text(), R"({"name":"a?b?c?d??","cat":"player","ph":"M","pid":1,"tid":1})");
}

TEST(TraceEvents, areEmptyWhenTheyWouldBeTooLong) {
    const std::string text(1000, 'x');
    TraceEvent event('X', {"render"}, 1, 1);
    event.add({"text", text.c_str()});
    EXPECT_EQ(event.text(), "");
}

}  // namespace QRT_0_81
