#pragma once

#include <string>

#include "base/qrtKit.h"
#include "encode/qrtOutputFormat.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// The sample rate of the sound of a movie, which has two channels.
constexpr int32 movieSampleRate = 48000;
constexpr int movieChannels = 2;

/// What a movie is.
struct MovieSettings {
    OutputFormat format;
    int32 width = 0;
    int32 height = 0;
    Rational rate{24, 1};  ///< frames per second
    bool hasSound = false;
    std::string timecode;  ///< of the first frame, "01:00:00:00"; empty: none is written
};

}  // namespace qrtplay
