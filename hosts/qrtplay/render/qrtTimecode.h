#pragma once

#include <string>

#include "foundation/core/qrtRational.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// "HH:MM:SS:FF" of a frame, counting full frames per second: at 30000/1001 thirty to a second, no number dropped.
[[nodiscard]] std::string timecode(int64 frame, Rational const& rate);

/// A length of time for people: "0.4 s", "59.9 s", "3:05 min", "2:00:07 h".
[[nodiscard]] std::string durationText(double seconds);

/// A frame rate for people: "24", "29.97", "23.976".
[[nodiscard]] std::string rateText(Rational const& rate);

}  // namespace qrtplay
