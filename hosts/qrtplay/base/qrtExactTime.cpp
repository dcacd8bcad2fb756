#include "base/qrtExactTime.h"

#include <limits>
#include <numeric>

namespace qrtplay {

namespace {

// Products of two numbers of 64 bits.
__extension__ using Wide = __int128;

constexpr Wide largest = std::numeric_limits<int64>::max();

// The smallest unit that frames of all common video rates and samples of all common audio rates have in common.
constexpr Wide finestDenominator = 705'600'000;

Wide gcd(Wide a, Wide b) {
    if (a < 0) a = -a;
    while (b != 0) {
        const Wide rest = a % b;
        a = b;
        b = rest;
    }
    return a;
}

Wide floorOf(Wide dividend, Wide divisor) {  // divisor > 0
    const Wide quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

int64 fitting(Wide value) {
    if (value > largest) return std::numeric_limits<int64>::max();
    if (value < -largest) return -std::numeric_limits<int64>::max();
    return static_cast<int64>(value);
}

/// `numerator` / `denominator` as an exact time, rounded only when it has to be. Both fit 127 bits, denominator > 0.
ExactTime reduced(Wide numerator, Wide denominator) {
    const Wide divisor = gcd(numerator, denominator);
    if (divisor > 1) {
        numerator /= divisor;
        denominator /= divisor;
    }
    if (denominator <= largest && numerator <= largest && numerator >= -largest)
        return {static_cast<int64>(numerator), static_cast<int64>(denominator)};
    const Wide whole = floorOf(numerator, denominator);
    if (whole > largest / finestDenominator || whole < -(largest / finestDenominator)) return {fitting(whole), 1};
    // The rest is below the denominator, so halving both until the product fits costs nothing that the rounding keeps.
    Wide rest = numerator - whole * denominator;
    while (denominator > largest) {
        rest /= 2;
        denominator /= 2;
    }
    const Wide ticks = (rest * finestDenominator + denominator / 2) / denominator;
    return {fitting(whole * finestDenominator + ticks), static_cast<int64>(finestDenominator)};
}

bool isUsable(Rational const& rate) {
    return rate.getNumerator() > 0 && rate.getDenominator() > 0;
}

/// Frames, as `dividend` / `divisor`, that pass until `time`; the divisor is positive.
struct FrameCount {
    FrameCount(ExactTime const& time, Rational const& rate)
        : dividend(Wide{time.numerator()} * rate.getNumerator()),
          divisor(Wide{time.denominator()} * rate.getDenominator()) {}

    Wide dividend;
    Wide divisor;
};

}  // namespace

ExactTime::ExactTime(int64 numerator, int64 denominator) noexcept {
    if (denominator == 0) return;
    Wide top = numerator;
    Wide bottom = denominator;
    if (bottom < 0) {
        top = -top;
        bottom = -bottom;
    }
    const Wide divisor = gcd(top, bottom);
    m_numerator = fitting(top / divisor);
    m_denominator = fitting(bottom / divisor);
}

ExactTime ExactTime::ofFrame(int64 frame, Rational const& rate) noexcept {
    if (!isUsable(rate)) return {};
    return reduced(Wide{frame} * rate.getDenominator(), rate.getNumerator());
}

double ExactTime::seconds() const noexcept {
    return static_cast<double>(m_numerator) / static_cast<double>(m_denominator);
}

int64 ExactTime::frameAt(Rational const& rate) const noexcept {
    if (!isUsable(rate)) return 0;
    const FrameCount count(*this, rate);
    return fitting(floorOf(count.dividend, count.divisor));
}

int64 ExactTime::frameFrom(Rational const& rate) const noexcept {
    if (!isUsable(rate)) return 0;
    const FrameCount count(*this, rate);
    return fitting(-floorOf(-count.dividend, count.divisor));
}

int64 ExactTime::nearestFrame(Rational const& rate) const noexcept {
    if (!isUsable(rate)) return 0;
    const FrameCount count(*this, rate);
    const Wide whole = floorOf(count.dividend, count.divisor);
    const Wide rest = count.dividend - whole * count.divisor;
    return fitting(rest >= count.divisor - rest ? whole + 1 : whole);
}

ExactTime ExactTime::operator-() const noexcept {
    ExactTime negated = *this;
    negated.m_numerator = fitting(-Wide{m_numerator});
    return negated;
}

ExactTime operator+(ExactTime const& a, ExactTime const& b) noexcept {
    const int64 shared = std::gcd(a.m_denominator, b.m_denominator);
    // At most 2^126 and 2^126 in size, whose sum still fits.
    const Wide top =
        Wide{a.m_numerator} * (b.m_denominator / shared) + Wide{b.m_numerator} * (a.m_denominator / shared);
    return reduced(top, Wide{a.m_denominator} * (b.m_denominator / shared));
}

ExactTime operator-(ExactTime const& a, ExactTime const& b) noexcept {
    return a + -b;
}

ExactTime operator*(ExactTime const& a, ExactTime const& factor) noexcept {
    return reduced(Wide{a.m_numerator} * factor.m_numerator, Wide{a.m_denominator} * factor.m_denominator);
}

std::strong_ordering operator<=>(ExactTime const& a, ExactTime const& b) noexcept {
    const Wide left = Wide{a.m_numerator} * b.m_denominator;
    const Wide right = Wide{b.m_numerator} * a.m_denominator;
    if (left < right) return std::strong_ordering::less;
    return left > right ? std::strong_ordering::greater : std::strong_ordering::equal;
}

}  // namespace qrtplay
