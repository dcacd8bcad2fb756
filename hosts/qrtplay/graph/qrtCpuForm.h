#pragma once

#include <optional>

#include "base/qrtKit.h"
#include "graph/qrtLayerProvider.h"
#include "graph/qrtPlacement.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// What the CPU is to make of a picture: opaque RGBA of 8 bits in this size.
struct CpuForm {
    int width = 0;
    int height = 0;
    ColourFacts colour;  ///< complete
    AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
};

/// Where the layer's picture lies, upright, in an output of `outputWidth` x `outputHeight` pixels.
[[nodiscard]] PixelRect placeOf(LayerPicture const& layer, Scaling scaling, int outputWidth, int outputHeight);

/// Where the chroma of the picture lies: its own statement, else that of its clip.
[[nodiscard]] AVChromaLocation chromaLocationOf(LayerPicture const& layer);

/// The one place that says which pictures the CPU converts as well as a shader: `place` is where the picture lies.
/// Empty for those that a shader has to draw, which are pictures
/// - whose colours are managed, of high dynamic range, or of other primaries than the display's;
/// - with alpha, of floats, or of formats that `RgbaLines` does not know;
/// - that are turned or mirrored;
/// - that are scaled, when they are RGB, or have two fields, or get wider but less high or the other way round.
[[nodiscard]] std::optional<CpuForm> cpuForm(LayerPicture const& layer, PixelRect const& place, bool hasManagedColours);

}  // namespace qrtplay
