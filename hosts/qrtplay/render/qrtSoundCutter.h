#pragma once

#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"
#include "options/qrtFrameRange.h"

namespace qrtplay {

/// Which samples are heard during which frame of a movie that is cut together from ranges of frames. The frames'
/// beginnings are rounded to samples once, in the movie, so that it has its exact length however many ranges there are.
class SoundCutter final {
public:
    struct Part {
        int64 firstSample = 0;  ///< of what is played
        int64 count = 0;

        [[nodiscard]] bool operator==(Part const&) const noexcept = default;
    };

    explicit SoundCutter(Rational const& rate) : m_rate(rate) {}

    /// Whether sound can go with these frames: none is left out and none runs backwards.
    [[nodiscard]] static bool canFollow(std::vector<FrameRange> const& ranges) noexcept;

    /// A range begins with frame number `frame` at this place of the movie.
    void begin(int64 frame);
    /// The part for the frame that comes next.
    [[nodiscard]] Part next();

private:
    [[nodiscard]] int64 sampleOf(int64 frame) const;

    const Rational m_rate;
    int64 m_position = 0;    // of the next frame in the movie
    int64 m_rangeBegin = 0;  // first sample of the range in what is played ...
    int64 m_movieBegin = 0;  // ... and in the movie
};

}  // namespace qrtplay
