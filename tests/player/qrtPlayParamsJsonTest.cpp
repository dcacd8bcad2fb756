// The play parameters as text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "harness/qrtPlayParamsDocument.h"
#include "sanitizers/qrtSanitizer.h"

namespace QRT_0_81 {

namespace {

using ::testing::HasSubstr;

/// What a document has stored in a `sentinel`. Fails the test when a stored value is not the one in
/// `PlayParamsDocument`.
struct Stored {
    bool step = false;
    bool playMode = false;
    bool productionMode = false;
    bool frames = false;
    bool frameRate = false;
    bool operator==(Stored const& other) const = default;
};

std::ostream& operator<<(std::ostream& stream, Stored const& stored) {
    return stream << "step " << stored.step << ", play mode " << stored.playMode << ", production mode "
                  << stored.productionMode << ", frames " << stored.frames << ", rate " << stored.frameRate;
}

constexpr Stored nothing{};
constexpr Stored stepOnly{true, false, false, false, false};
constexpr Stored stepAndPlayMode{true, true, false, false, false};
constexpr Stored stepAndModes{true, true, true, false, false};
constexpr Stored allButTheRate{true, true, true, true, false};
constexpr Stored everything{true, true, true, true, true};

/// Whether `value` was stored; anything that is neither is a failure of the test.
template <class Value>
bool isStored(Value const& value, Value const& before, Value const& inDocument, char const* what) {
    EXPECT_TRUE(value == before || value == inDocument) << what;
    return value == inDocument;
}

Stored storedIn(PlayParams const& params) {
    const auto before = sentinel();
    Stored stored;
    stored.step = isStored(params.getStep(), before->getStep(), -2, "step");
    stored.playMode = isStored(params.getPlayMode(), before->getPlayMode(), PlayParams::loop, "play mode");
    stored.productionMode =
        isStored(params.getProductionMode(), before->getProductionMode(), PlayParams::audio_only, "production mode");
    const bool current = isStored<int64>(params.getCurrentFrame(), before->getCurrentFrame(), 11, "current frame");
    stored.frames = current;
    EXPECT_EQ(isStored<int64>(params.getStartFrame(), before->getStartFrame(), 10, "start frame"), current);
    EXPECT_EQ(isStored<int64>(params.getEndFrame(), before->getEndFrame(), 99, "end frame"), current);
    stored.frameRate = isStored(params.getFrameRate(), before->getFrameRate(), Rational(30000, 1001), "frame rate");
    return stored;
}

std::string nested(size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

std::string nestedObjects(size_t depth) {
    std::string text;
    for (size_t i = 0; i < depth; ++i)
        text += R"({"a":)";
    return text + "0" + std::string(depth, '}');
}

}  // namespace

// ---- Writing --------------------------------------------------------------------------------------------------------

TEST(PlayParamsJson, isOneCompactObjectWithItsMembersInOrder) {
    const auto params = makeParams(10, 0, 99, Rational(30000, 1001), -1, PlayParams::ping_pong, PlayParams::all);
    EXPECT_STREQ(params->toJson().c_str(), R"({"current_frame":10,"start_frame":0,"end_frame":99,)"
                                           R"("frame_rate":{"numerator":30000,"denominator":1001},)"
                                           R"("step":-1,"play_mode":"ping_pong","production_mode":"all"})");
}

TEST(PlayParamsJson, holdsFrameNumbersOfAll64BitsAndStepsOfAll32) {
    const auto params = makeParams(LLONG_MIN, LLONG_MAX, -1, Rational(INT_MIN, UINT_MAX), INT_MIN, PlayParams::single,
                                   PlayParams::video_only);
    EXPECT_STREQ(params->toJson().c_str(),
                 R"({"current_frame":-9223372036854775808,"start_frame":9223372036854775807,"end_frame":-1,)"
                 R"("frame_rate":{"numerator":-2147483648,"denominator":4294967295},)"
                 R"("step":-2147483648,"play_mode":"single","production_mode":"video_only"})");
}

TEST(PlayParamsJson, namesEveryMode) {
    const auto params = sentinel();
    constexpr char const* playModes[] = {"single", "loop", "ping_pong"};
    constexpr char const* productionModes[] = {"video_only", "audio_only", "all"};
    for (int value = 0; value < 3; ++value) {
        params->setPlayMode(static_cast<PlayParams::PlayMode>(value));
        params->setProductionMode(static_cast<PlayParams::ProductionMode>(value));
        const std::string modes = std::string(R"("play_mode":")") + playModes[value] + R"(","production_mode":")" +
                                  productionModes[value] + "\"}";
        EXPECT_THAT(params->toJson().c_str(), ::testing::EndsWith(modes));
    }
}

TEST(PlayParamsJson, writesAModeOutsideItsEnumerationAsTheEmptyText) {
    const auto params = makeParams(0, 0, 0, Rational(24, 1), 1, PlayParams::single, PlayParams::all);
    for (const int value : {7, 3, -1, INT_MIN, INT_MAX}) {
        params->setPlayMode(static_cast<PlayParams::PlayMode>(value));
        EXPECT_THAT(params->toJson().c_str(), HasSubstr(R"("play_mode":"","production_mode":"all"})"));
    }
    params->setPlayMode(PlayParams::loop);
    for (const int value : {7, 3, -1, INT_MIN, INT_MAX}) {
        params->setProductionMode(static_cast<PlayParams::ProductionMode>(value));
        EXPECT_THAT(params->toJson().c_str(), HasSubstr(R"("play_mode":"loop","production_mode":""})"));
    }
}

TEST(PlayParamsJson, readByAnotherObjectMakesTheTwoEqual) {
    const auto source = makeParams(-5, 100, -7, Rational(25, 2), 3, PlayParams::loop, PlayParams::audio_only);
    const auto target = sentinel();
    EXPECT_EQ(target->fromJson(source->toJson()).get(), Status::ok);
    EXPECT_TRUE(*target == *source);
}

TEST(PlayParamsJson, ofExtremeNumbersIsReadBack) {
    const auto source = makeParams(LLONG_MIN, LLONG_MAX, LLONG_MIN, Rational(INT_MIN, UINT_MAX), INT_MIN,
                                   PlayParams::single, PlayParams::all);
    const auto target = sentinel();
    EXPECT_EQ(target->fromJson(source->toJson()).get(), Status::ok);
    EXPECT_TRUE(*target == *source);
}

TEST(PlayParamsJson, ofAModeOutsideItsEnumerationIsRefusedWhenRead) {
    const auto source = makeParams(1, 2, 3, Rational(24, 1), 4, unknownPlayMode, PlayParams::all);
    EXPECT_EQ(sentinel()->fromJson(source->toJson()).get(), 532);
}

// ---- Reading: what each document stores -----------------------------------------------------------------------------

struct ReadCase {
    char const* name;
    String text;
    int status;
    Stored stored;
};

class PlayParamsJsonReading : public ::testing::TestWithParam<ReadCase> {};

TEST_P(PlayParamsJsonReading, storesWhatTheOrderOfTheChecksAllows) {
    const auto params = sentinel();
    EXPECT_EQ(params->fromJson(GetParam().text).get(), GetParam().status);
    EXPECT_EQ(storedIn(*params), GetParam().stored);
}

namespace {

std::string nameOf(::testing::TestParamInfo<ReadCase> const& info) {
    return info.param.name;
}

const std::string whole = PlayParamsDocument().text().c_str();

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Texts, PlayParamsJsonReading,
    ::testing::Values(ReadCase{"aCompleteDocument", PlayParamsDocument().text(), 0, everything},
                      ReadCase{"whiteSpaceAround", String(" \t\r\n" + whole + "\n\r\t "), 0, everything},
                      ReadCase{"emptyText", "", 532, nothing}, ReadCase{"onlyBlanks", " \n", 532, nothing},
                      ReadCase{"noJson", "current_frame=1", 532, nothing},
                      ReadCase{"cutOff", String(whole.substr(0, whole.size() - 1)), 532, nothing},
                      ReadCase{"otherTextBehind", String(whole + "x"), 532, nothing},
                      ReadCase{"aSecondObjectBehind", String(whole + whole), 532, nothing},
                      ReadCase{"aZeroByteBehind", String(whole + std::string(1, '\0')), 532, nothing},
                      ReadCase{"otherTextBehindAZeroByte", String(whole + std::string(1, '\0') + "x"), 532, nothing},
                      ReadCase{"aByteOrderMark", String("\xEF\xBB\xBF" + whole), 532, nothing},
                      ReadCase{"aFormFeedAround", String("\f" + whole), 532, nothing},
                      ReadCase{"aNonBreakingSpaceAround", String("\xC2\xA0" + whole), 532, nothing},
                      ReadCase{"aComment", String("/* */" + whole), 532, nothing},
                      ReadCase{"aTrailingComma", String(whole.substr(0, whole.size() - 1) + ",}"), 532, nothing},
                      ReadCase{"singleQuotes", with(&PlayParamsDocument::playMode, "'play_mode':'loop'"), 532, nothing},
                      ReadCase{"notANumber", with(&PlayParamsDocument::step, R"("step":NaN)"), 532, nothing}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Roots, PlayParamsJsonReading,
    ::testing::Values(ReadCase{"null", "null", 532, nothing}, ReadCase{"boolean", "true", 532, nothing},
                      ReadCase{"number", "12", 532, nothing}, ReadCase{"string", R"("frame_rate")", 532, nothing},
                      ReadCase{"array", String("[" + whole + "]"), 532, nothing},
                      ReadCase{"emptyArray", "[]", 532, nothing}, ReadCase{"emptyObject", "{}", 532, nothing}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    FrameRates, PlayParamsJsonReading,
    ::testing::Values(
        ReadCase{"missing", with(&PlayParamsDocument::frameRate, ""), 532, nothing},
        ReadCase{"keyInOtherCase",
                 with(&PlayParamsDocument::frameRate, R"("Frame_rate":{"numerator":1,"denominator":1})"), 532, nothing},
        ReadCase{"number", with(&PlayParamsDocument::frameRate, R"("frame_rate":24)"), 532, nothing},
        ReadCase{"string", with(&PlayParamsDocument::frameRate, R"("frame_rate":"24/1")"), 532, nothing},
        ReadCase{"null", with(&PlayParamsDocument::frameRate, R"("frame_rate":null)"), 532, nothing},
        ReadCase{"array", with(&PlayParamsDocument::frameRate, R"("frame_rate":[24,1])"), 532, nothing},
        // An object that is no ratio is noticed last of all, when everything else has been stored.
        ReadCase{"emptyObject", with(&PlayParamsDocument::frameRate, R"("frame_rate":{})"), 532, allButTheRate},
        ReadCase{"zeroDenominator",
                 with(&PlayParamsDocument::frameRate, R"("frame_rate":{"numerator":24,"denominator":0})"), 532,
                 allButTheRate},
        ReadCase{"fractions",
                 with(&PlayParamsDocument::frameRate, R"("frame_rate":{"numerator":24.0,"denominator":1})"), 532,
                 allButTheRate},
        ReadCase{"numeratorThatIsAnObject",
                 with(&PlayParamsDocument::frameRate, R"("frame_rate":{"numerator":{"a":[1,{}]},"denominator":1})"),
                 532, allButTheRate},
        ReadCase{"furtherMembers",
                 with(&PlayParamsDocument::frameRate,
                      R"("frame_rate":{"a":{"b":[null,true,false,"\u0000\"",-1.5e3,{}]},"c":[],"numerator":30000,)"
                      R"("d":"\\","denominator":1001,"numerator":1})"),
                 0, everything}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Steps, PlayParamsJsonReading,
    ::testing::Values(ReadCase{"missing", with(&PlayParamsDocument::step, ""), 532, nothing},
                      ReadCase{"fraction", with(&PlayParamsDocument::step, R"("step":1.5)"), 532, nothing},
                      ReadCase{"wholeNumberWrittenAsFraction", with(&PlayParamsDocument::step, R"("step":-2.0)"), 532,
                               nothing},
                      ReadCase{"exponent", with(&PlayParamsDocument::step, R"("step":-2e0)"), 532, nothing},
                      ReadCase{"tooLarge", with(&PlayParamsDocument::step, R"("step":2147483648)"), 532, nothing},
                      ReadCase{"tooSmall", with(&PlayParamsDocument::step, R"("step":-2147483649)"), 532, nothing},
                      ReadCase{"string", with(&PlayParamsDocument::step, R"("step":"-2")"), 532, nothing},
                      ReadCase{"boolean", with(&PlayParamsDocument::step, R"("step":true)"), 532, nothing},
                      ReadCase{"leadingZero", with(&PlayParamsDocument::step, R"("step":-02)"), 532, nothing}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Modes, PlayParamsJsonReading,
    ::testing::Values(
        // The kinds of both are checked before anything is stored, their words after the step.
        ReadCase{"noPlayMode", with(&PlayParamsDocument::playMode, ""), 532, nothing},
        ReadCase{"playModeNumber", with(&PlayParamsDocument::playMode, R"("play_mode":1)"), 532, nothing},
        ReadCase{"noProductionMode", with(&PlayParamsDocument::productionMode, ""), 532, nothing},
        ReadCase{"productionModeNull", with(&PlayParamsDocument::productionMode, R"("production_mode":null)"), 532,
                 nothing},
        ReadCase{"playModeInOtherCase", with(&PlayParamsDocument::playMode, R"("play_mode":"Loop")"), 532, stepOnly},
        ReadCase{"emptyPlayMode", with(&PlayParamsDocument::playMode, R"("play_mode":"")"), 532, stepOnly},
        ReadCase{"playModeAndMore", with(&PlayParamsDocument::playMode, R"("play_mode":"loop ")"), 532, stepOnly},
        ReadCase{"playModeCut", with(&PlayParamsDocument::playMode, R"("play_mode":"loo")"), 532, stepOnly},
        ReadCase{"playModeAndAZeroByte", with(&PlayParamsDocument::playMode, R"("play_mode":"loop\u0000")"), 532,
                 stepOnly},
        ReadCase{"playModeEscaped", with(&PlayParamsDocument::playMode, R"("play_mode":"l\u006fop")"), 0, everything},
        ReadCase{"productionModeInOtherCase",
                 with(&PlayParamsDocument::productionMode, R"("production_mode":"Audio_only")"), 532, stepAndPlayMode},
        ReadCase{"emptyProductionMode", with(&PlayParamsDocument::productionMode, R"("production_mode":"")"), 532,
                 stepAndPlayMode}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Frames, PlayParamsJsonReading,
    ::testing::Values(
        ReadCase{"noCurrentFrame", with(&PlayParamsDocument::currentFrame, ""), 532, stepAndModes},
        ReadCase{"noStartFrame", with(&PlayParamsDocument::startFrame, ""), 532, stepAndModes},
        ReadCase{"noEndFrame", with(&PlayParamsDocument::endFrame, ""), 532, stepAndModes},
        ReadCase{"currentFrameFraction", with(&PlayParamsDocument::currentFrame, R"("current_frame":11.0)"), 532,
                 stepAndModes},
        ReadCase{"startFrameNull", with(&PlayParamsDocument::startFrame, R"("start_frame":null)"), 532, stepAndModes},
        ReadCase{"endFrameString", with(&PlayParamsDocument::endFrame, R"("end_frame":"99")"), 532, stepAndModes},
        ReadCase{"endFrameTooLarge", with(&PlayParamsDocument::endFrame, R"("end_frame":9223372036854775808)"), 532,
                 stepAndModes},
        ReadCase{"endFrameTooSmall", with(&PlayParamsDocument::endFrame, R"("end_frame":-9223372036854775809)"), 532,
                 stepAndModes},
        // A frame rate that is no ratio comes behind the frames.
        ReadCase{"badFramesAndABadRate",
                 String(R"({"current_frame":11,"start_frame":10,"frame_rate":{},"step":-2,"play_mode":"loop",)"
                        R"("production_mode":"audio_only"})"),
                 532, stepAndModes}),
    nameOf);

TEST(PlayParamsJson, takesTheFirstOfDuplicateKeys) {
    const auto params = sentinel();
    EXPECT_EQ(params
                  ->fromJson(String(whole.substr(0, whole.size() - 1) +
                                    R"(,"step":5,"play_mode":"single","production_mode":"all","current_frame":1,)"
                                    R"("start_frame":2,"end_frame":3,"frame_rate":{"numerator":1,"denominator":1}})"))
                  .get(),
              0);
    EXPECT_EQ(storedIn(*params), everything);
    const auto refused = sentinel();  // the first is the one that counts even when only a later one is right
    EXPECT_EQ(refused->fromJson(String(R"({"step":"x",)" + whole.substr(1))).get(), 532);
    EXPECT_EQ(storedIn(*refused), nothing);
}

TEST(PlayParamsJson, acceptsFramesThatMakeNoRange) {
    const auto params = sentinel();
    ASSERT_EQ(params
                  ->fromJson(R"({"current_frame":-50,"start_frame":9,"end_frame":-9,"step":0,"play_mode":"single",)"
                             R"("frame_rate":{"numerator":-1,"denominator":1},"production_mode":"video_only"})")
                  .get(),
              0);
    EXPECT_TRUE(*params == *makeParams(-50, 9, -9, Rational(-1, 1), 0, PlayParams::single, PlayParams::video_only));
}

TEST(PlayParamsJson, ignoresOtherMembersAndTheirOrder) {
    const auto params = sentinel();
    EXPECT_EQ(
        params
            ->fromJson(R"({"production_mode":"audio_only","name":"x","play_mode":"loop","step":-2,"end_frame":99,)"
                       R"("frame_rate":{"denominator":1001,"numerator":30000},"tags":[{}],"start_frame":10,)"
                       R"("current_frame":11})")
            .get(),
        0);
    EXPECT_EQ(storedIn(*params), everything);
}

// ---- Hostile text ---------------------------------------------------------------------------------------------------

// A reader that recursed would run out of stack long before; under a sanitizer, whose frames are larger, even sooner.
constexpr size_t hostileDepth = isUnderSanitizer ? 100'000 : 1'000'000;

TEST(PlayParamsJson, isReadHoweverDeeplyItIsNested) {
    const auto params = sentinel();
    EXPECT_EQ(params->fromJson(String(std::string(hostileDepth, '['))).get(), 532);
    EXPECT_EQ(params->fromJson(String(nested(hostileDepth))).get(), 532);
    EXPECT_EQ(storedIn(*params), nothing);
    EXPECT_EQ(params->fromJson(String(R"({"x":)" + nestedObjects(hostileDepth) + "," + whole.substr(1))).get(), 0);
    EXPECT_EQ(storedIn(*params), everything);
}

TEST(PlayParamsJson, mayNestDeeplyInsideTheFrameRateToo) {
    for (std::string const& deep : {nested(hostileDepth), nestedObjects(hostileDepth)}) {
        const auto params = sentinel();
        EXPECT_EQ(params
                      ->fromJson(with(&PlayParamsDocument::frameRate,
                                      R"("frame_rate":{"deep":)" + deep + R"(,"numerator":30000,"denominator":1001})"))
                      .get(),
                  0);
        EXPECT_EQ(storedIn(*params), everything);
        EXPECT_EQ(params
                      ->fromJson(with(&PlayParamsDocument::frameRate,
                                      R"("frame_rate":{"numerator":)" + deep + R"(,"denominator":1001})"))
                      .get(),
                  532);
    }
}

TEST(RationalJson, isStrictAboutWhatStandsAroundIt) {
    const std::string text = R"({"numerator":30000,"denominator":1001})";
    Rational rate(24, 1);
    EXPECT_EQ(rate.fromJson(String(text + std::string(1, '\0') + "x")).get(), 532);
    EXPECT_EQ(rate.fromJson(String("\xEF\xBB\xBF" + text)).get(), 532);
    EXPECT_EQ(rate, Rational(24, 1));
    EXPECT_EQ(rate.fromJson(String(" \t\r\n" + text + "\n")).get(), 0);
    EXPECT_EQ(rate, Rational(30000, 1001));
}

}  // namespace QRT_0_81
