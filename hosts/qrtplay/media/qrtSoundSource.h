#pragma once

#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Sound by sample number, at one sample rate, in interleaved floats of one number of channels; sample 0 is heard when
/// frame 0 of the same media begins to be seen.
///
/// Threading: one thread at a time.
class SoundSource {
public:
    virtual ~SoundSource() = default;

    /// Writes `count` samples of every channel from sample `first` on; silence outside of what the media holds.
    /// The same numbers come out however the requests are cut. Failures name the file; the rest is silent then.
    virtual Outcome read(int64 first, int64 count, float* samples) = 0;
};

}  // namespace qrtplay
