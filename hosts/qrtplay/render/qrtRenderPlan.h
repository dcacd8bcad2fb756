#pragma once

#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "options/qrtOptions.h"

namespace qrtplay {

/// What a run is going to write, and what it leaves out because it is there.
struct RenderPlan {
    struct Skipped {
        int64 frame = 0;
        std::string path;
    };

    std::vector<FrameRange> asked;   ///< with both ends
    std::vector<FrameRange> frames;  ///< of these those that are to be rendered, in the same order
    std::vector<Skipped> skipped;
    bool isWholeMovieThere = false;  ///< and is left as it is
};

/// Failures name the part of the command line that does not fit the input.
Outcome planRender(RenderOptions const& options, int64 frameCount, RenderPlan& plan);

/// Whether a file stands there already. Since files get their names when they are whole it is whole; an empty one is no
/// picture.
[[nodiscard]] bool isWritten(std::string const& path);

}  // namespace qrtplay
