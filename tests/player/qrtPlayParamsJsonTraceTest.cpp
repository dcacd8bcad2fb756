// What reading play parameters from text tells on standard error.
//
// Whether it tells anything is decided once per process: each of these tests has a process of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "harness/qrtPlayParamsDocument.h"

namespace QRT_0_81 {

namespace {

using ::testing::HasSubstr;

constexpr char traceSwitch[] = "ZR_DEBUG_OTIO";

/// Reads the text and ends the process; what the reader wrote to standard error stands between "<<" and ">>".
[[noreturn]] void readAndExit(String const& text) {
    std::fputs("<<", stderr);
    (void)sentinel()->fromJson(text);
    std::fputs(">>", stderr);
    std::_Exit(0);
}

::testing::Matcher<std::string const&> traces(std::string const& lines) {
    return HasSubstr("<<" + lines + ">>");
}

struct TraceCase {
    char const* name;
    String text;
    char const* lines;
};

}  // namespace

class PlayParamsJsonTrace : public ::testing::TestWithParam<TraceCase> {
protected:
    PlayParamsJsonTrace() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_P(PlayParamsJsonTrace, tellsWhatWasFoundAndWhatFailed) {
    const auto read = [] {
        setenv(traceSwitch, "1", 1);
        readAndExit(GetParam().text);
    };
    EXPECT_EXIT(read(), ::testing::ExitedWithCode(0), traces(GetParam().lines));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PlayParamsJsonTrace,
    ::testing::Values(
        TraceCase{"complete", PlayParamsDocument().text(),
                  "Found frame_rate\nFound step\nFound play_mode\nFound production_mode\n"},
        TraceCase{"parseError", "{", ""}, TraceCase{"noObject", "[]", "Cannot find 'frame_rate'\n"},
        TraceCase{"noFrameRate", with(&PlayParamsDocument::frameRate, ""), "Cannot find 'frame_rate'\n"},
        TraceCase{"frameRateNull", with(&PlayParamsDocument::frameRate, R"("frame_rate":null)"),
                  "Expected 'frame_rate' to be Object, found Null\n"},
        TraceCase{"frameRateFalse", with(&PlayParamsDocument::frameRate, R"("frame_rate":false)"),
                  "Expected 'frame_rate' to be Object, found False\n"},
        TraceCase{"frameRateTrue", with(&PlayParamsDocument::frameRate, R"("frame_rate":true)"),
                  "Expected 'frame_rate' to be Object, found True\n"},
        TraceCase{"frameRateArray", with(&PlayParamsDocument::frameRate, R"("frame_rate":[])"),
                  "Expected 'frame_rate' to be Object, found Array\n"},
        TraceCase{"noStep", with(&PlayParamsDocument::step, ""), "Found frame_rate\nCannot find 'step'\n"},
        TraceCase{"stepFraction", with(&PlayParamsDocument::step, R"("step":1.5)"),
                  "Found frame_rate\nExpected 'step' to be Int, found Number\n"},
        TraceCase{"stepTooLarge", with(&PlayParamsDocument::step, R"("step":2147483648)"),
                  "Found frame_rate\nExpected 'step' to be Int, found Number\n"},
        TraceCase{"stepString", with(&PlayParamsDocument::step, R"("step":"1")"),
                  "Found frame_rate\nExpected 'step' to be Int, found String\n"},
        TraceCase{"playModeObject", with(&PlayParamsDocument::playMode, R"("play_mode":{})"),
                  "Found frame_rate\nFound step\nExpected 'play_mode' to be String, found Object\n"},
        TraceCase{"noPlayMode", with(&PlayParamsDocument::playMode, ""),
                  "Found frame_rate\nFound step\nCannot find 'play_mode'\n"},
        TraceCase{"productionModeNumber", with(&PlayParamsDocument::productionMode, R"("production_mode":2)"),
                  "Found frame_rate\nFound step\nFound play_mode\n"
                  "Expected 'production_mode' to be String, found Number\n"},
        TraceCase{"noProductionMode", with(&PlayParamsDocument::productionMode, ""),
                  "Found frame_rate\nFound step\nFound play_mode\nCannot find 'production_mode'\n"},
        TraceCase{"framesAreCheckedSilently", with(&PlayParamsDocument::endFrame, R"("end_frame":"99")"),
                  "Found frame_rate\nFound step\nFound play_mode\nFound production_mode\n"}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

TEST(PlayParamsJsonTraceSwitch, offItWritesNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto read = [] {
        unsetenv(traceSwitch);
        readAndExit("{}");
    };
    EXPECT_EXIT(read(), ::testing::ExitedWithCode(0), traces(""));
}

TEST(PlayParamsJsonTraceSwitch, anyValueTurnsItOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (char const* const value : {"", "0", "no"}) {
        const auto read = [value] {
            setenv(traceSwitch, value, 1);
            readAndExit("{}");
        };
        EXPECT_EXIT(read(), ::testing::ExitedWithCode(0), traces("Cannot find 'frame_rate'\n"));
    }
}

TEST(PlayParamsJsonTraceSwitch, isReadAtTheFirstTraceAndOnlyThen) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto switchOffLater = [] {
        unsetenv(traceSwitch);
        (void)sentinel()->fromJson("no JSON: no trace is attempted");
        setenv(traceSwitch, "1", 1);
        (void)sentinel()->fromJson("{}");
        unsetenv(traceSwitch);
        readAndExit("{}");
    };
    EXPECT_EXIT(switchOffLater(), ::testing::ExitedWithCode(0), traces("Cannot find 'frame_rate'\n"));
    const auto switchOnLater = [] {
        unsetenv(traceSwitch);
        (void)sentinel()->fromJson("{}");
        setenv(traceSwitch, "1", 1);
        readAndExit("{}");
    };
    EXPECT_EXIT(switchOnLater(), ::testing::ExitedWithCode(0), traces(""));
}

}  // namespace QRT_0_81
