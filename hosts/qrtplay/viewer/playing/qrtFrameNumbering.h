#pragma once

#include <QString>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// How positions are told.
enum class Numbering { timecode, frames, seconds };

/// Positions of one timeline in words. Frames count from 0 as everywhere in this program; timecode begins with the
/// timeline's own clock.
class FrameNumbering final {
public:
    FrameNumbering() = default;
    FrameNumbering(Rational const& rate, ExactTime const& clockStart) : m_rate(rate), m_clockStart(clockStart) {}

    [[nodiscard]] QString text(int64 frame, Numbering numbering, bool dropFrame) const;
    /// "01:00:00:12", or with drop frames, where the rate has them, "01:00:00;12".
    [[nodiscard]] QString timecode(int64 frame, bool dropFrame) const;
    /// Drop-frame timecode is defined for 30000/1001 and 60000/1001 frames a second.
    [[nodiscard]] bool hasDropFrame() const noexcept;
    [[nodiscard]] Rational const& rate() const noexcept { return m_rate; }

private:
    Rational m_rate{24, 1};
    ExactTime m_clockStart;
};

}  // namespace qrtplay
