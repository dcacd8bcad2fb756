#pragma once

#include <optional>

#include "base/qrtExactTime.h"
#include "foundation/core/qrtRational.h"
#include "timeline/qrtOtioObject.h"

namespace qrtplay {

/// A stretch of time, with the rate that its length is counted in.
struct OtioRange {
    ExactTime start;
    ExactTime duration;
    Rational rate;
};

struct OtioTime {
    ExactTime time;
    Rational rate;
};

/// The rate that a file means by a number, which has not the digits for 24000/1001; none when it is below 0.01 or above
/// 1,000,000.
[[nodiscard]] std::optional<Rational> otioRate(double rate);

/// A speed, as exact as a number tells it.
[[nodiscard]] ExactTime otioFactor(double factor);

/// What follows is a member of `object`; none when it is not there.
[[nodiscard]] std::optional<Rational> readRate(OtioObject const& object, char const* member);
[[nodiscard]] std::optional<OtioTime> readTime(OtioObject const& object, char const* member);
[[nodiscard]] std::optional<OtioTime> readLength(OtioObject const& object, char const* member);  ///< never negative
[[nodiscard]] std::optional<OtioRange> readRange(OtioObject const& object, char const* member);

}  // namespace qrtplay
