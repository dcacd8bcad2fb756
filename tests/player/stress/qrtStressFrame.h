#pragma once

#include <string>
#include <vector>

#include "foundation/core/qrtVideoBuffer.h"
#include "harness/qrtHostContext.h"
#include "qrtStressWorld.h"

namespace QRT_0_81 {

/// A frame's pixels, four bytes each, bottom row first.
struct StressPixels {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;  ///< empty: they cannot be read here

    [[nodiscard]] unsigned char const* at(int x, int y) const {
        return bytes.data() + (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 4;
    }
};

/// The pixels of a frame in memory, and of a texture where `host` is the context that is current on this thread.
[[nodiscard]] StressPixels readPixels(VideoBuffer& buffer, HostContext const* host);

/// Complains when a frame is not the one with the number `frame`, is torn, or is of a composition that had been
/// replaced before `oldest` was the generation. `where` says how the frame was come by.
void checkPixels(StressWorld& world, StressPixels const& pixels, int64 frame, uint32 oldest, std::string const& where);

}  // namespace QRT_0_81
