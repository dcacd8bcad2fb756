#pragma once

#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTypes.h"
#include "player/qrtPlayParams.h"

namespace QRT_0_81 {

/// The values behind `PlayParams`, and the rules by which the current frame moves.
///
/// A plain value: whoever wants to look ahead copies it to the stack and walks the copy, without allocating.
/// Arithmetic wraps around at the ends of 32 and 64 bits instead of overflowing.
struct PlayParamsPrivate {
    int64 currentFrame = 0;
    int64 startFrame = 0;
    int64 endFrame = 0;
    Rational frameRate;
    int32 step = 0;
    PlayParams::PlayMode playMode = PlayParams::single;
    PlayParams::ProductionMode productionMode = PlayParams::video_only;

    [[nodiscard]] bool operator==(PlayParamsPrivate const& other) const = default;

    /// The same values, walking the other way.
    [[nodiscard]] PlayParamsPrivate reversed() const;

    bool next();
    Status seek(int64 frame);
};

}  // namespace QRT_0_81
