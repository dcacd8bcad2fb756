#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

class SoundFeed;

/// Where sound is heard: 48000 samples a second, two channels, 32-bit floats.
///
/// Threading: one thread; the feed is read on whichever thread the output likes.
class SoundOutput {
public:
    virtual ~SoundOutput() = default;

    /// Begins to play the feed, which has to last until `stop`. Fails when there is no device, naming what is missing.
    virtual Outcome start(SoundFeed& feed) = 0;
    virtual void stop() = 0;
    /// Linear, 0 to 1.
    virtual void setVolume(double volume) = 0;
    /// How much of the feed has been heard, in nanoseconds, going on evenly between the device's own reports; nothing
    /// when the device was lost or the output is not playing.
    [[nodiscard]] virtual std::optional<int64> heard() const = 0;
};

}  // namespace qrtplay
