#pragma once

#include <utility>

#include "foundation/composition/qrtComposition.h"
#include "foundation/core/qrtSharedPtr.h"

namespace QRT_0_81 {

/// A composition that is nothing but its extent.
class FakeComposition final : public Composition {
public:
    FakeComposition(Time const& start, Time const& duration) : m_start(start), m_duration(duration) {}

    /// Frames `first` to `first + count - 1` at `rate`.
    [[nodiscard]] static SharedPtr<FakeComposition> create(int64 first, int64 count, Rational const& rate = {24, 1}) {
        return SharedPtr<FakeComposition>(new FakeComposition(Time(first, rate), Time(count, rate)));
    }

    Status getStartTime(Time& start) const override {
        start = m_start;
        return startTimeStatus;
    }
    Status getDuration(Time& duration) const override {
        duration = m_duration;
        return durationStatus;
    }

    /// What the two queries answer; set before the composition is handed over.
    Status startTimeStatus;
    Status durationStatus;
    /// Goes into the blue channel of every frame, so that pixels tell compositions apart.
    int identity = 0;

private:
    const Time m_start;
    const Time m_duration;
};

}  // namespace QRT_0_81
