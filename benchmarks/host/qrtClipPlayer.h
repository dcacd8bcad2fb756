#pragma once

#include "base/qrtKit.h"
#include "qrtBenchmarkClip.h"

namespace qrtplay {

/// One side of the comparison: delivers the frames of a clip by number, as RGBA in memory.
///
/// Failures are exceptions of the type `std::runtime_error`: a benchmark cannot go on without its frames.
class ClipPlayer {
public:
    enum class Way { once, over_and_over, to_and_fro };

    virtual ~ClipPlayer() = default;

    /// The frames from `first` to `last` are going to be asked for in this order, backwards when `last` is less.
    virtual void play(int64 first, int64 last, Way way) = 0;
    virtual void stop() = 0;
    /// Whether each frame of backwards play costs the same long time, so that a few tell as much as all.
    [[nodiscard]] virtual bool isPlodding(BenchmarkClip const&) const { return false; }
    /// Valid until the next call.
    virtual FrameView frame(int64 number) = 0;
};

}  // namespace qrtplay
