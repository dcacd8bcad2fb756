#include "generators/qrtCountdown.h"

#include <algorithm>
#include <limits>

namespace qrtplay {

Countdown::Countdown(int64 frame, int64 frameCount, Rational const& rate) {
    const bool isRate = rate.getNumerator() > 0 && rate.getDenominator() > 0;
    const int64 perSecond = isRate ? rate.getNumerator() : 24;
    const int64 frameLength = isRate ? int64{rate.getDenominator()} : 1;  // of which `perSecond` make a second
    const int64 count = std::clamp<int64>(frameCount, 1, std::numeric_limits<int64>::max() / 2 / frameLength);
    const int64 left = (count - std::clamp<int64>(frame, 0, count - 1)) * frameLength;

    number = (left - 1) / perSecond + 1;
    const int64 passed = number * perSecond - left;
    turn = static_cast<double>(passed) / static_cast<double>(perSecond);
    isPop = number == 2 && passed < 2 * frameLength;
}

}  // namespace qrtplay
