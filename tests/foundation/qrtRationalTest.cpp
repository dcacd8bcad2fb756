#include "foundation/core/qrtRational.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace QRT_0_81 {
namespace {

constexpr int32 smallestNumerator = std::numeric_limits<int32>::min();
constexpr int32 largestNumerator = std::numeric_limits<int32>::max();
constexpr uint32 largestDenominator = std::numeric_limits<uint32>::max();

TEST(Rational, isZeroByDefault) {
    const Rational zero;
    EXPECT_EQ(zero.getNumerator(), 0);
    EXPECT_EQ(zero.getDenominator(), 1u);
    EXPECT_EQ(zero.getValue(), 0.0);
}

TEST(Rational, keepsTheNumbersAsGiven) {
    const Rational rate(48, 2);
    EXPECT_EQ(rate.getNumerator(), 48);
    EXPECT_EQ(rate.getDenominator(), 2u);
    EXPECT_EQ(rate.getValue(), 24.0);
}

TEST(Rational, hasASignedNumeratorAndAnUnsignedDenominator) {
    const Rational smallest(smallestNumerator, largestDenominator);
    EXPECT_EQ(smallest.getNumerator(), smallestNumerator);
    EXPECT_EQ(smallest.getDenominator(), largestDenominator);
    EXPECT_DOUBLE_EQ(smallest.getValue(), -2147483648.0 / 4294967295.0);
    EXPECT_EQ(Rational(-30, 4).getValue(), -7.5);
}

TEST(Rational, givesTheQuotientOfANonIntegralRate) {
    EXPECT_DOUBLE_EQ(Rational(24000, 1001).getValue(), 24000.0 / 1001.0);
}

TEST(Rational, hasTheValueZeroWhenTheDenominatorIsZero) {
    for (const int32 numerator : {smallestNumerator, -1, 0, 1, largestNumerator}) {
        const double value = Rational(numerator, 0).getValue();
        EXPECT_EQ(value, 0.0);
        EXPECT_FALSE(std::signbit(value));
    }
}

TEST(Rational, comparesNumeratorsAndDenominatorsNotQuotients) {
    EXPECT_TRUE(Rational(24, 1) == Rational(24, 1));
    EXPECT_FALSE(Rational(24, 1) == Rational(48, 2));
    EXPECT_TRUE(Rational(24, 1) != Rational(25, 1));
    EXPECT_TRUE(Rational(24, 1) != Rational(24, 2));
}

TEST(Rational, isCopiedAndMovedByAssignment) {
    Rational rate;
    const Rational film(24, 1);
    rate = film;
    EXPECT_EQ(rate, film);
    rate = Rational(30000, 1001);
    EXPECT_EQ(rate, Rational(30000, 1001));
}

TEST(Rational, isWrittenAsACompactJsonObject) {
    EXPECT_STREQ(Rational(24000, 1001).toJson().c_str(), R"({"numerator":24000,"denominator":1001})");
    EXPECT_STREQ(Rational(-1, 4294967295u).toJson().c_str(), R"({"numerator":-1,"denominator":4294967295})");
}

TEST(Rational, readsWhatItWrites) {
    for (const Rational& written : {Rational(), Rational(48, 2), Rational(smallestNumerator, largestDenominator),
                                    Rational(largestNumerator, 1)}) {
        Rational read(5, 7);
        ASSERT_TRUE(read.fromJson(written.toJson()).success());
        EXPECT_EQ(read, written);
    }
}

TEST(Rational, readsAnyOrderWhiteSpaceAndFurtherMembers) {
    Rational rate;
    EXPECT_TRUE(rate.fromJson(" {\n\"note\": [1, {}],\t\"denominator\": 1001, \"numerator\": 30000 } ").success());
    EXPECT_EQ(rate, Rational(30000, 1001));
}

struct BadText {
    char const* name;
    char const* text;
};

class RationalBadText : public ::testing::TestWithParam<BadText> {};

TEST_P(RationalBadText, isRefusedAndChangesNothing) {
    Rational rate(24000, 1001);
    EXPECT_EQ(static_cast<int>(rate.fromJson(GetParam().text).get()), 532);
    EXPECT_EQ(rate, Rational(24000, 1001));
}

constexpr BadText badTexts[] = {
    {"nullPointer", nullptr},
    {"byteOrderMark", "\xEF\xBB\xBF{\"numerator\":24000,\"denominator\":1001}"},
    {"empty", ""},
    {"noJson", "24000/1001"},
    {"cutOff", R"({"numerator":24000,"denominator":1001)"},
    {"textBehindTheObject", R"({"numerator":24000,"denominator":1001}x)"},
    {"array", "[24000,1001]"},
    {"number", "24"},
    {"null", "null"},
    {"string", R"("numerator")"},
    {"emptyObject", "{}"},
    {"noNumerator", R"({"denominator":1001})"},
    {"noDenominator", R"({"numerator":30000})"},
    {"memberInOtherCase", R"({"Numerator":30000,"denominator":1001})"},
    {"numeratorString", R"({"numerator":"30000","denominator":1001})"},
    {"numeratorNull", R"({"numerator":null,"denominator":1001})"},
    {"numeratorBool", R"({"numerator":true,"denominator":1001})"},
    {"numeratorFraction", R"({"numerator":30000.5,"denominator":1001})"},
    {"numeratorWrittenAsFraction", R"({"numerator":30000.0,"denominator":1001})"},
    {"numeratorTooLarge", R"({"numerator":2147483648,"denominator":1})"},
    {"numeratorTooSmall", R"({"numerator":-2147483649,"denominator":1})"},
    {"numeratorHuge", R"({"numerator":1e400,"denominator":1})"},
    {"denominatorString", R"({"numerator":30000,"denominator":"1001"})"},
    {"denominatorObject", R"({"numerator":30000,"denominator":{}})"},
    {"denominatorFraction", R"({"numerator":30000,"denominator":1.5})"},
    {"denominatorZero", R"({"numerator":30000,"denominator":0})"},
    {"denominatorNegative", R"({"numerator":30000,"denominator":-1})"},
    {"denominatorTooLarge", R"({"numerator":30000,"denominator":4294967296})"},
};

INSTANTIATE_TEST_SUITE_P(Texts, RationalBadText, ::testing::ValuesIn(badTexts),
                         [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

TEST(Rational, refusesTextWithAZeroByteWhereverItStands) {
    const std::string good = R"({"numerator":30000,"denominator":1001})";
    Rational rate(25, 1);
    EXPECT_EQ(rate.fromJson(String(good + std::string(1, '\0'))).get(), Status::invalid_text);
    EXPECT_EQ(rate.fromJson(String(good + std::string("\0rest", 5))).get(), Status::invalid_text);
    EXPECT_EQ(rate.fromJson(String(std::string(1, '\0') + good)).get(), Status::invalid_text);
    EXPECT_EQ(rate, Rational(25, 1));
    EXPECT_TRUE(rate.fromJson(String(good)).success());
}

TEST(Rational, refusesTextThatIsNestedVeryDeeply) {
    // A parser that recurses would run out of stack.
    Rational rate(25, 1);
    EXPECT_EQ(rate.fromJson(String(std::string(2'000'000, '['))).get(), Status::invalid_text);
    const std::string closed = std::string(500'000, '[') + std::string(500'000, ']');
    EXPECT_EQ(rate.fromJson(String(closed)).get(), Status::invalid_text);
    EXPECT_EQ(rate, Rational(25, 1));
}

}  // namespace
}  // namespace QRT_0_81
