#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "encode/qrtMovieSettings.h"
#include "encode/qrtWriteResult.h"
#include "options/qrtOutputPattern.h"

namespace qrtplay {

/// Where rendered frames go, in the order of playing. Encoding runs beside the caller, so that what becomes of a frame
/// is known later.
///
/// Threading: one thread.
class FrameSink {
public:
    virtual ~FrameSink() = default;

    /// Waits while too many frames wait. `sound`: what is heard during the frame, both channels in turn.
    virtual void write(int64 frame, PixelBlock block, std::vector<float> sound) = 0;
    /// A frame that could not be had.
    virtual void writeMissing(int64 frame, std::vector<float> sound) = 0;
    /// Waits until everything is written. Failures are those of the whole; those of single frames are results.
    virtual Outcome finish() = 0;
    /// Whether everything is lost without `finish`; otherwise every frame stands for itself.
    [[nodiscard]] virtual bool isLostWhenUnfinished() const = 0;
    /// Whether it is no use to go on.
    [[nodiscard]] virtual bool isBroken() const = 0;
    /// What has become of frames since the last call.
    [[nodiscard]] virtual std::vector<WriteResult> takeResults() = 0;
    /// What the user should know of the missing frames; may be empty.
    [[nodiscard]] virtual std::string noteOnMissing() const = 0;
};

/// A file a frame; there is none for missing frames.
[[nodiscard]] std::unique_ptr<FrameSink> makeImageSink(OutputPattern const& output, int quality);
/// One movie. For a missing frame the one before is repeated, so that what follows keeps its time; before the first
/// frame it is black. Nothing is left of a movie that is not finished.
Outcome makeMovieSink(std::string const& path, MovieSettings const& settings, std::unique_ptr<FrameSink>& sink);
/// Takes frames and keeps nothing.
[[nodiscard]] std::unique_ptr<FrameSink> makeNullSink();

}  // namespace qrtplay
