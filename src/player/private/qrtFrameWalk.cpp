#include "qrtFrameWalk.h"

#include <limits>

#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

constexpr uint64 never = std::numeric_limits<uint64>::max();

bool walksTo(PlayParamsPrivate walk, int32 numSteps, int64 frame) {
    for (int32 i = 0; i < numSteps; ++i) {
        if (walk.next() && walk.currentFrame == frame) return true;
    }
    return false;
}

/// 2^31 steps of 2^30 frames from here do not leave 64 bits.
bool isWithoutWrapping(PlayParamsPrivate const& from) {
    constexpr int64 farthest = int64{1} << 61;
    constexpr int32 widest = 1 << 30;
    return from.startFrame >= -farthest && from.endFrame <= farthest && from.startFrame <= from.currentFrame &&
           from.currentFrame <= from.endFrame && from.step >= -widest && from.step <= widest;
}

/// A walk in positions: counted in the direction of the step from the end of the range that it leaves behind.
struct Positions {
    uint64 current;
    uint64 target;
    uint64 last;
    uint64 step;

    /// The steps to the target when it lies ahead, on this side of the end of the range.
    [[nodiscard]] uint64 stepsAhead() const {
        if (target <= current) return never;
        const uint64 distance = target - current;
        if (step == 1) return distance;  // most walks, and a division takes as long as all the rest
        return distance % step == 0 ? distance / step : never;
    }
    [[nodiscard]] uint64 stepsToLast() const { return (last - current) / step; }
};

uint64 stepsInLoop(Positions const& walk) {
    if (const uint64 ahead = walk.stepsAhead(); ahead != never) return ahead;
    // The step over the end lands on the very first frame, whatever is left over.
    return walk.target % walk.step == 0 ? walk.stepsToLast() + 1 + walk.target / walk.step : never;
}

uint64 stepsInPingPong(Positions const& walk) {
    if (const uint64 ahead = walk.stepsAhead(); ahead != never) return ahead;
    if (walk.target % walk.step != walk.current % walk.step) return never;
    const uint64 stepsUp = walk.stepsToLast();
    const uint64 turn = walk.current + stepsUp * walk.step;
    if (walk.target != turn) return stepsUp + (turn - walk.target) / walk.step;
    // The walk starts on the turning point: down to the other one and back, or standing where both are the same.
    const uint64 stepsDown = turn / walk.step;
    return stepsDown == 0 ? 1 : 2 * stepsDown;
}

uint64 stepsTo(PlayParamsPrivate const& from, int64 frame) {
    if (from.step == 0 || frame < from.startFrame || frame > from.endFrame) return never;
    const bool isForward = from.step > 0;
    const auto position = [&](int64 of) {
        return static_cast<uint64>(isForward ? of - from.startFrame : from.endFrame - of);
    };
    const auto step = static_cast<uint64>(isForward ? int64{from.step} : -int64{from.step});
    const Positions walk{position(from.currentFrame), position(frame),
                         static_cast<uint64>(from.endFrame - from.startFrame), step};
    switch (from.playMode) {
        case PlayParams::single: return walk.stepsAhead();
        case PlayParams::loop: return stepsInLoop(walk);
        case PlayParams::ping_pong:
        default: return stepsInPingPong(walk);
    }
}

}  // namespace

bool walkReachesInGeneral(PlayParamsPrivate const& from, int32 numSteps, int64 frame) {
    if (numSteps <= 0) return false;
    if (!isWithoutWrapping(from)) return walksTo(from, numSteps, frame);
    return stepsTo(from, frame) <= static_cast<uint64>(numSteps);
}

}  // namespace QRT_0_81
