#include "timeline/qrtOtioTime.h"

#include <cmath>
#include <limits>
#include <utility>

namespace qrtplay {

namespace {

/// The fraction that comes nearest to a positive number, by its continued fraction.
std::pair<int64, int64> nearestFraction(double number, int64 largestDenominator) {
    constexpr double largestNumerator = std::numeric_limits<int32>::max();
    constexpr double nearEnough = 1e-12;
    std::pair<int64, int64> before{0, 1};
    std::pair<int64, int64> best{1, 0};
    for (double rest = number;;) {
        const double whole = std::floor(rest);
        const double numerator = whole * static_cast<double>(best.first) + static_cast<double>(before.first);
        const double denominator = whole * static_cast<double>(best.second) + static_cast<double>(before.second);
        if (numerator > largestNumerator || denominator > static_cast<double>(largestDenominator)) break;
        before = std::exchange(best, {static_cast<int64>(numerator), static_cast<int64>(denominator)});
        const double error = std::abs(numerator / denominator - number);
        if (error <= nearEnough * number || rest == whole) break;
        rest = 1 / (rest - whole);
    }
    return best;
}

/// n * 1000 / 1001 for the number `rate` when it means that: by four digits, or by two decimals as in 23.98.
std::optional<Rational> ntscRate(double rate) {
    constexpr double largest = 240;
    const double n = std::round(rate * 1001 / 1000);
    if (n < 1 || n > largest) return std::nullopt;
    const double exact = n * 1000 / 1001;
    const bool isNear = std::abs(rate - exact) <= 1e-4 * exact;
    const bool isRounded = std::abs(rate - std::round(exact * 100) / 100) <= 1e-9;
    if (!isNear && !isRounded) return std::nullopt;
    return Rational(static_cast<int32>(n) * 1000, 1001);
}

OtioObject expected(rapidjson::Value const& value, OtioObject const& parent, char const* member, char const* schema) {
    OtioObject object(value, parent, member);
    if (!object.is(schema)) object.fail("is a " + oneLine(object.schema()) + ", not a " + schema);
    return object;
}

OtioTime timeOf(OtioObject const& object) {
    const std::optional<double> value = object.number("value");
    const std::optional<Rational> rate = readRate(object, "rate");
    if (!value) object.fail("value is missing");
    if (!rate) object.fail("rate is missing");
    constexpr double largest = 1e12;
    if (std::abs(*value) > largest) object.fail("value is beyond a million millions");
    const ExactTime frames(std::llround(*value * 1000), 1000);
    return {frames * ExactTime(rate->getDenominator(), rate->getNumerator()), *rate};
}

}  // namespace

std::optional<Rational> otioRate(double rate) {
    if (!(rate >= 0.01 && rate <= 1e6)) return std::nullopt;
    const double whole = std::round(rate);
    if (whole >= 1 && std::abs(rate - whole) <= 1e-9 * rate) return Rational(static_cast<int32>(whole), 1);
    if (const std::optional<Rational> ntsc = ntscRate(rate)) return ntsc;
    const auto [numerator, denominator] = nearestFraction(rate, 10'000);
    return Rational(static_cast<int32>(numerator), static_cast<uint32>(denominator));
}

ExactTime otioFactor(double factor) {
    if (factor == 0) return {};
    const auto [numerator, denominator] = nearestFraction(std::abs(factor), 1'000'000);
    return {factor < 0 ? -numerator : numerator, denominator};
}

std::optional<Rational> readRate(OtioObject const& object, char const* member) {
    const std::optional<double> number = object.number(member);
    if (!number) return std::nullopt;
    const std::optional<Rational> rate = otioRate(*number);
    if (!rate) object.fail(std::string(member) + " is not between 0.01 and 1000000");
    return rate;
}

std::optional<OtioTime> readTime(OtioObject const& object, char const* member) {
    rapidjson::Value const* value = object.findObject(member);
    if (!value) return std::nullopt;
    return timeOf(expected(*value, object, member, "RationalTime"));
}

std::optional<OtioTime> readLength(OtioObject const& object, char const* member) {
    const std::optional<OtioTime> length = readTime(object, member);
    if (length && length->time < ExactTime()) object.fail(std::string(member) + " is negative");
    return length;
}

std::optional<OtioRange> readRange(OtioObject const& object, char const* member) {
    rapidjson::Value const* value = object.findObject(member);
    if (!value) return std::nullopt;
    const OtioObject range = expected(*value, object, member, "TimeRange");
    const std::optional<OtioTime> start = readTime(range, "start_time");
    const std::optional<OtioTime> duration = readLength(range, "duration");
    if (!start) range.fail("start_time is missing");
    if (!duration) range.fail("duration is missing");
    return OtioRange{start->time, duration->time, duration->rate};
}

}  // namespace qrtplay
