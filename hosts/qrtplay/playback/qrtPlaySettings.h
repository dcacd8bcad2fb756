#pragma once

#include <QSize>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtPixelBlock.h"
#include "foundation/core/qrtRational.h"
#include "graph/qrtConversionChoice.h"
#include "graph/qrtPlacement.h"

namespace qrtplay {

/// Colour management with OpenColorIO; none when all are empty and the environment variable OCIO is not set.
struct OcioSettings {
    std::string config;   ///< path of a configuration; empty: the one that OCIO names; empty: the one that OCIO names
    std::string display;  ///< empty: the configuration's default
    std::string view;     ///< empty: the display's default
};

/// How it is to be played.
struct PlaySettings {
    std::optional<QSize> resolution;  ///< of the frames; without one the input's own, in square pixels
    bool ramOutputs = false;          ///< frames come as memory instead of textures
    std::optional<int> headFrames;    ///< kept rendered ahead and ...
    std::optional<int> tailFrames;    ///< ... behind; without a number what the player thinks best
    Scaling scaling = Scaling::fit;
    OcioSettings ocio;
    PixelFormat depth = PixelFormat::rgba8;      ///< of the frames
    std::optional<Rational> outputRate;          ///< frames per second; without one the input's own
    unsigned segmentCacheInMiB = 64;             ///< for what the host draws, in textures and in memory each; 0: none
    std::optional<int> decodeCacheInMiB;         ///< for decoded pictures; without a number what suits
    std::optional<ConversionChoice> conversion;  ///< of decoded pictures; without one what the environment says
};

}  // namespace qrtplay
