#pragma once

#include "foundation/composition/qrtComposition.h"
#include "foundation/core/qrtSharedPtr.h"

namespace examples {

using namespace QRT_0_81;

constexpr Rational frameRate(24, 1);

/// A composition that is nothing but its extent: `numFrames` frames, the first of which is number 0.
class Clip : public Composition {
public:
    explicit Clip(int64 numFrames) : m_numFrames(numFrames) {}

    Status getStartTime(Time& start) const override {
        start = Time(0, frameRate);
        return Status();
    }
    Status getDuration(Time& duration) const override {
        duration = Time(m_numFrames, frameRate);
        return Status();
    }

private:
    const int64 m_numFrames;
};

}  // namespace examples
