#pragma once

#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// A point in time or a length: a count of ticks at a rate in ticks per second. The default is 0 ticks at rate 1.
class Time final {
public:
    constexpr Time() noexcept = default;
    constexpr Time(int64 ticks, Rational const& rate) noexcept : m_ticks(ticks), m_rate(rate) {}

    [[nodiscard]] constexpr int64 getNbTicks() const noexcept { return m_ticks; }
    [[nodiscard]] constexpr Rational const& getRate() const noexcept { return m_rate; }

private:
    int64 m_ticks = 0;
    Rational m_rate{1, 1};
};

}  // namespace QRT_0_81
