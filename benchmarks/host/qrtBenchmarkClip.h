#pragma once

#include <cstdint>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// A frame in memory: RGBA, 8 bits a channel.
struct FrameView {
    std::uint8_t const* pixels = nullptr;  ///< of the row that comes first in memory
    int width = 0;
    int height = 0;
    bool isBottomFirst = false;
};

/// A clip that the benchmark makes for itself: a moving test pattern with some noise, and in each frame its number, so
/// that whoever delivers another frame than the one asked for is found out.
struct BenchmarkClip {
    std::string name;
    std::string source;   ///< of the picture, in FFmpeg's words
    std::string encoder;  ///< the program's options for it
    std::string ending;
    int width;
    int64 frameCount;
    int groupSize;  ///< frames from one key frame to the next
};

/// The clip of that name, null when there is none: "h264-24", "h264-250", "prores".
[[nodiscard]] BenchmarkClip const* benchmarkClip(std::string const& name);

/// Makes the clip's file in `folder` unless it is there, with the program `ffmpeg`.
Outcome makeClip(BenchmarkClip const& clip, std::string const& folder, std::string& path);

/// The number that is painted into a frame, which may be scaled down: `clipWidth` is the clip's own width.
[[nodiscard]] int64 paintedNumber(FrameView const& frame, int clipWidth);

}  // namespace qrtplay
