// The smallest host there is: loads the player's library, uses it once, and says so.
#include <cstdio>

#include "player/qrtPlayParams.h"

int main() {
    using namespace QRT_0_81;
    std::printf("frame %lld\n", static_cast<long long>(PlayParams::getFrame(Time(1, Rational(1, 1)), Rational(24, 1))));
    return 0;
}
