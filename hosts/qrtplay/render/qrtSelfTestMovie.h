#pragma once

#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// A small movie of which every pixel and every sample is known, kept by codecs that lose nothing.
struct SelfTestMovie {
    static constexpr int width = 64;
    static constexpr int height = 36;
    static constexpr int frameRate = 24;
    static constexpr int64 frameCount = 12;

    [[nodiscard]] static PixelBlock picture(int64 frame);
    /// Both channels in turn; as many samples as the movie is long.
    [[nodiscard]] static std::vector<float> sound();
    /// Failures name the path.
    static Outcome write(std::string const& path);
};

}  // namespace qrtplay
