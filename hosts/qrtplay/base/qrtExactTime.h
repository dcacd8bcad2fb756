#pragma once

#include <compare>

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// A time or a length in seconds, kept as a fraction, so that frames of 24000/1001 a second stay exact over years.
///
/// Always reduced, the denominator positive. What does not fit the fraction (no rates in use lead there) is rounded to
/// a 705,600,000th of a second, of which all common frame and sample rates take a whole number; what does not fit even
/// then is the largest or the smallest time.
class ExactTime final {
public:
    constexpr ExactTime() noexcept = default;
    /// `numerator` / `denominator` seconds; 0 when the denominator is 0.
    ExactTime(int64 numerator, int64 denominator) noexcept;

    /// The moment at which frame number `frame` begins; 0 when the rate is not positive.
    [[nodiscard]] static ExactTime ofFrame(int64 frame, Rational const& rate) noexcept;

    [[nodiscard]] constexpr int64 numerator() const noexcept { return m_numerator; }
    [[nodiscard]] constexpr int64 denominator() const noexcept { return m_denominator; }
    [[nodiscard]] double seconds() const noexcept;

    /// The frame that is on show at this time, which is the last one that has begun.
    [[nodiscard]] int64 frameAt(Rational const& rate) const noexcept;
    /// The first frame that begins at this time or later.
    [[nodiscard]] int64 frameFrom(Rational const& rate) const noexcept;
    /// The frame that begins nearest to this time; the later one when two are as near.
    [[nodiscard]] int64 nearestFrame(Rational const& rate) const noexcept;

    [[nodiscard]] ExactTime operator-() const noexcept;
    friend ExactTime operator+(ExactTime const& a, ExactTime const& b) noexcept;
    friend ExactTime operator-(ExactTime const& a, ExactTime const& b) noexcept;
    /// A length that is played `factor` (a number without unit, kept in the same form) times as fast.
    friend ExactTime operator*(ExactTime const& a, ExactTime const& factor) noexcept;
    [[nodiscard]] friend bool operator==(ExactTime const&, ExactTime const&) noexcept = default;
    friend std::strong_ordering operator<=>(ExactTime const& a, ExactTime const& b) noexcept;

private:
    int64 m_numerator = 0;
    int64 m_denominator = 1;
};

}  // namespace qrtplay
