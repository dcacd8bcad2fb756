#include "timeline/qrtRetiming.h"

#include <limits>

namespace qrtplay {

namespace {

// Three factors of 64, 32 and 32 bits need 128.
__extension__ using Wide = __int128;

bool isUsable(int64 frame, Rational const& a, Rational const& b) {
    return frame >= 0 && a.getNumerator() > 0 && a.getDenominator() > 0 && b.getNumerator() > 0 && b.getDenominator() > 0;
}

int64 fitting(Wide value) {
    constexpr Wide largest = std::numeric_limits<int64>::max();
    return static_cast<int64>(value > largest ? largest : value);
}

Wide scaled(int64 frame, Rational const& to) {
    return Wide{frame} * to.getNumerator();
}

}  // namespace

int64 sourceFrameOf(int64 frame, Rational const& outputRate, Rational const& sourceRate) {
    if (!isUsable(frame, outputRate, sourceRate)) return -1;
    const Wide dividend = scaled(frame, sourceRate) * outputRate.getDenominator();
    const Wide divisor = Wide{sourceRate.getDenominator()} * outputRate.getNumerator();
    return fitting(dividend / divisor);
}

int64 firstOutputFrameOf(int64 frame, Rational const& outputRate, Rational const& sourceRate) {
    if (!isUsable(frame, outputRate, sourceRate)) return -1;
    const Wide dividend = scaled(frame, outputRate) * sourceRate.getDenominator();
    const Wide divisor = Wide{outputRate.getDenominator()} * sourceRate.getNumerator();
    return fitting((dividend + divisor - 1) / divisor);
}

}  // namespace qrtplay
