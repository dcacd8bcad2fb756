#pragma once

#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// "HH:MM:SS:FF" of a frame, counting full frames per second: at 30000/1001 thirty to a second, no number dropped.
[[nodiscard]] std::string timecode(int64 frame, Rational const& rate);

/// A length of time for people: "0.4 s", "59.9 s", "3:05 min", "2:00:07 h".
[[nodiscard]] std::string durationText(double seconds);

/// A frame rate for people: "24", "29.97", "23.976".
[[nodiscard]] std::string rateText(Rational const& rate);

/// "24/1", "24000/1001"
[[nodiscard]] std::string fractionText(Rational const& rate);

/// Reads frames per second: "25", "12.5", "24000/1001"; the usual short forms such as 23.976, 23.98 and 29.97 mean the
/// fractions with 1001. Failures name the text.
Outcome parseRate(std::string const& text, Rational& rate);

}  // namespace qrtplay
