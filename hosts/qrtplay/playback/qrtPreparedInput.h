#pragma once

#include <QSize>
#include <string>

#include "base/qrtOutcome.h"
#include "graph/qrtTimelineComposition.h"
#include "input/qrtPlayInput.h"
#include "media/qrtVideoFacts.h"
#include "playback/qrtPlaySettings.h"

namespace qrtplay {

/// Why nothing can be played, as far as a program's exit status tells.
enum class OpenFailure {
    input_missing,  ///< what is to be played is not there
    refused,        ///< it is there and cannot be played
    no_opengl,      ///< there is no OpenGL, or not one that a player can work with
    failed,         ///< something else, such as a setting that cannot be had
};

/// What a user has named, opened and measured: all that a player needs and that takes its time.
struct PreparedInput {
    std::string name;  ///< what messages call it
    /// What the timeline's reader left out has been noted there as warnings.
    SharedPtr<TimelineComposition> composition;
    QSize ownResolution;  ///< that of the first pictures, in square pixels; that of HD when there are none
};

/// Failures name what is wrong (the file, the colour configuration) and say in `why` of which kind they are.
///
/// Threading: any thread; needs no OpenGL.
Outcome prepareInput(PlayInput const& input, PlaySettings const& settings, PreparedInput& prepared, OpenFailure& why);

/// How the pictures are to be shown by these settings. Fails when the colours cannot be had.
Outcome makePresentation(PlaySettings const& settings, Presentation& presentation);

/// The size at which a clip is as wide and high as it is meant to be when it stands upright in square pixels, without
/// losing any.
[[nodiscard]] QSize squarePixelSize(VideoFacts const& facts);

/// The size of the first media that has pictures; that of HD when the timeline has none but what the host draws.
[[nodiscard]] QSize ownSize(OpenedInput const& input);

}  // namespace qrtplay
