#pragma once

#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtSoundSource.h"
#include "timeline/qrtFramePlan.h"

namespace qrtplay {

/// Reads the sound of a span at the speed that the span asks for, forward or backwards; the pitch changes along.
///
/// At normal speed, in either direction, samples are those of the source, shifted to the nearest one. At any other
/// speed they are interpolated with a windowed sinc, and what would lie above the output's range is filtered out up to
/// eight times normal speed; faster, some of it is heard as other tones. A frozen picture and more than 64 times normal
/// speed are silent. The same numbers come out however a span is cut.
///
/// Threading: one thread at a time.
class SoundRetimer final {
public:
    SoundRetimer(int32 sampleRate, int channels) : m_rate(sampleRate), m_channels(channels) {}

    /// Writes `count` samples of `span` from output sample `first` on. The failure is that of `source`.
    Outcome read(SoundSource& source, SoundSpan const& span, int64 first, int64 count, float* samples);

private:
    Outcome readBackwards(SoundSource& source, int64 last, int64 count, float* samples);
    Outcome interpolate(SoundSource& source, SoundSpan const& span, int64 anchor, int64 first, int64 count,
                        float* samples);
    void interpolateAt(double position, double width, float* sample) const;

    const int32 m_rate;
    const int m_channels;
    std::vector<float> m_input;
};

}  // namespace qrtplay
