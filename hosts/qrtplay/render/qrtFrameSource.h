#pragma once

#include <QSize>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "foundation/core/qrtRational.h"
#include "options/qrtFrameRange.h"

namespace qrtplay {

/// Frames and sound by number: what the commands know of a player.
///
/// Threading: the thread of the application object.
class FrameSource {
public:
    struct Counts {
        int64 delivered = 0;
        int64 cacheHits = 0;  ///< were rendered ahead, some while their turn was waited for
        int64 onDemand = 0;   ///< had to be waited for
    };

    virtual ~FrameSource() = default;

    [[nodiscard]] virtual int64 frameCount() const = 0;
    /// Frames per second.
    [[nodiscard]] virtual Rational rate() const = 0;
    [[nodiscard]] virtual QSize resolution() const = 0;
    /// What a clock in the picture shows at frame 0.
    [[nodiscard]] virtual ExactTime clockStart() const = 0;
    [[nodiscard]] virtual bool hasSound() const = 0;
    [[nodiscard]] virtual Counts counts() const = 0;

    /// Has the frames of `range` rendered ahead, in its order; it has to lie inside.
    virtual Outcome start(FrameRange const& range) = 0;
    virtual void stop() = 0;
    /// Fetches a frame, in the depth that the source was opened with. Failures name it.
    virtual Outcome fetch(int64 frame, PixelBlock& block) = 0;
    /// Reads sound of 48000 samples a second, both channels in turn; sample 0 is heard when frame 0 begins.
    virtual Outcome readSound(int64 firstSample, int64 count, std::vector<float>& samples) = 0;
    /// What has been noticed since the last call and is worth a line.
    [[nodiscard]] virtual std::vector<std::string> takeWarnings() = 0;
};

}  // namespace qrtplay
