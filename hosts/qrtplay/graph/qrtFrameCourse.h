#pragma once

#include "base/qrtKit.h"

namespace qrtplay {

/// Which frames are going to be rendered next, as far as those that were rendered tell: further ones in the direction
/// of playing, or against it after a single step back, or those of a loop, once playing has gone round twice. After a
/// jump, forward play has to go on before anything is expected of it: who looks here and there needs no frames between.
///
/// Threading: none of its own.
class FrameCourse final {
public:
    /// `frame` is being rendered; `step`: how far the one after it lies, its sign the direction; not 0.
    void note(int64 frame, int64 step);
    /// The frame that follows `frame`.
    [[nodiscard]] int64 next(int64 frame) const;
    /// How many frames from the one that was noted last on, itself included, are worth planning.
    [[nodiscard]] int64 framesAhead() const;

private:
    struct Jump {
        int64 from = 0;
        int64 to = 0;
        [[nodiscard]] bool operator==(Jump const&) const noexcept = default;
    };

    [[nodiscard]] bool isInLoop() const;

    int64 m_frame = 0;
    int64 m_step = 0;     // 0 before the first frame
    int64 m_advance = 0;  // to the frame that is expected next
    Jump m_jump;          // the last one against the direction of playing
    int m_timesJumped = 0;
    bool m_isElsewhere = false;  // the last frame does not go on from the one before
};

}  // namespace qrtplay
