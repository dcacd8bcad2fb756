#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

// Unsigned arithmetic wraps; C++20 defines the way back as two's complement.
int64 wrappingAdd(int64 a, int64 b) {
    return static_cast<int64>(static_cast<uint64>(a) + static_cast<uint64>(b));
}

int64 wrappingSubtract(int64 a, int64 b) {
    return static_cast<int64>(static_cast<uint64>(a) - static_cast<uint64>(b));
}

int32 wrappingNegate(int32 a) {
    return static_cast<int32>(0u - static_cast<uint32>(a));
}

int32 wrappingDouble(int32 a) {
    return static_cast<int32>(2u * static_cast<uint32>(a));
}

}  // namespace

PlayParamsPrivate PlayParamsPrivate::reversed() const {
    PlayParamsPrivate other = *this;
    other.step = wrappingNegate(step);
    return other;
}

bool PlayParamsPrivate::next() {
    if (step == 0) return false;

    currentFrame = wrappingAdd(currentFrame, step);
    const bool isForward = step > 0;
    const bool isInside = isForward ? currentFrame <= endFrame : currentFrame >= startFrame;

    switch (playMode) {
        case PlayParams::single: return isInside;
        case PlayParams::loop:
            if (!isInside) currentFrame = isForward ? startFrame : endFrame;
            return true;
        case PlayParams::ping_pong:
        default: break;
    }

    if (isInside) return true;
    currentFrame = wrappingSubtract(currentFrame, wrappingDouble(step));
    const bool isBeyondOtherEnd = isForward ? currentFrame < startFrame : currentFrame > endFrame;
    if (isBeyondOtherEnd) currentFrame = wrappingAdd(currentFrame, step);
    step = wrappingNegate(step);
    return true;
}

Status PlayParamsPrivate::seek(int64 frame) {
    if (frame < startFrame || frame > endFrame) return Status::out_of_range;

    switch (playMode) {
        case PlayParams::single:
        case PlayParams::loop: break;
        case PlayParams::ping_pong:
            if ((frame > currentFrame && step < 0) || (frame < currentFrame && step > 0)) step = wrappingNegate(step);
            break;
        default: {
            Status status;
            if (frame != currentFrame) {
                status.set(Status::general_failure);  // the mode is unknown ...
                status.set(Status::out_of_range);     // ... and callers rely on the answer of an unreachable frame
            }
            return status;
        }
    }
    currentFrame = frame;
    return Status();
}

}  // namespace QRT_0_81
