#pragma once

#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// A point in time or a length: a count of ticks at a rate in ticks per second. The default is 0 ticks at rate 1.
class Time final {
public:
    /// 0 ticks at a rate of 1/1.
    constexpr Time() noexcept = default;
    /// Nothing is checked: a rate of 0 is stored too, and whoever converts such a time gets frame 0.
    constexpr Time(int64 ticks, Rational const& rate) noexcept : m_ticks(ticks), m_rate(rate) {}

    /// The count of ticks; negative before time 0.
    [[nodiscard]] constexpr int64 getNbTicks() const noexcept { return m_ticks; }
    /// Ticks per second.
    [[nodiscard]] constexpr Rational const& getRate() const noexcept { return m_rate; }

private:
    int64 m_ticks = 0;
    Rational m_rate{1, 1};
};

}  // namespace QRT_0_81
