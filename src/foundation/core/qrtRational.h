#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// An exact ratio, such as a frame rate of 24000/1001. Kept as given: 48/2 stays 48/2.
class QRT_CORE_EXPORT Rational final {
public:
    /// 0/1.
    constexpr Rational() noexcept = default;
    /// Nothing is checked or reduced; a zero denominator is stored too.
    constexpr Rational(int32 numerator, uint32 denominator) noexcept
        : m_numerator(numerator), m_denominator(denominator) {}

    /// The number above the line, which carries the sign.
    [[nodiscard]] constexpr int32 getNumerator() const noexcept { return m_numerator; }
    /// The number below the line.
    [[nodiscard]] constexpr uint32 getDenominator() const noexcept { return m_denominator; }

    /// The quotient. A zero denominator gives 0, so that neither NaN nor infinity enters a frame computation.
    [[nodiscard]] constexpr double getValue() const noexcept {
        return m_denominator == 0 ? 0.0 : static_cast<double>(m_numerator) / static_cast<double>(m_denominator);
    }

    /// Same numerator and same denominator: 24/1 and 48/2 differ, as their JSON texts do.
    [[nodiscard]] constexpr bool operator==(Rational const& other) const noexcept = default;

    /// A compact JSON object: {"numerator":24000,"denominator":1001}.
    [[nodiscard]] String toJson() const;

    /// Reads what `toJson` writes; further members are ignored.
    /// `Status::invalid_text` (532), with nothing changed, when the text is no JSON object, a member is missing, is no
    /// integer or does not fit its type, or the denominator is 0.
    Status fromJson(String const& text);

private:
    int32 m_numerator = 0;
    uint32 m_denominator = 1;
};

}  // namespace QRT_0_81
