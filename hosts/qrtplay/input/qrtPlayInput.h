#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "foundation/core/qrtRational.h"
#include "input/qrtMediaProbe.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What is to be played, as a user names it.
struct PlayInput {
    /// Media and image sequences ("plate.####.exr"), played one after the other, or one timeline.
    std::vector<std::string> files;
    /// Folders that a timeline may take media from, and that links among numbered images may lead to; any when there
    /// are none. What `files` names itself is allowed.
    std::vector<std::string> allowPaths;
    /// Of image sequences, whose files do not tell.
    Rational imageRate{24, 1};
};

/// What a user has named, opened.
struct OpenedInput {
    std::shared_ptr<Timeline const> timeline;
    /// Files by path that have been opened to measure them.
    MediaProbe probe;
};

/// Why nothing can be played.
enum class InputFailure {
    missing,  ///< what is named is not there
    refused,  ///< it is there and cannot be played
};

/// Failures name the file and set `kind`. Media that a timeline names may be missing: it plays without.
Outcome openInput(PlayInput const& input, OpenedInput& opened, InputFailure& kind);

/// Whether the ending of a path is that of a timeline: ".otio", ".otiod" or ".otioz".
[[nodiscard]] bool isTimelinePath(std::string const& path);

}  // namespace qrtplay
