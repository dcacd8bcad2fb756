#pragma once

#include <QSize>
#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "foundation/core/qrtRational.h"
#include "input/qrtPlayInput.h"
#include "playback/qrtPlaySettings.h"
#include "render/qrtConsole.h"
#include "render/qrtFrameSource.h"

namespace qrtplay {

/// What can be said of an input without playing it.
struct InputFacts {
    int64 frameCount = 0;
    Rational rate{24, 1};
    QSize resolution;
    bool hasSound = false;
    std::vector<std::string> warnings;
};

/// Looks at what is to be played; needs no OpenGL. Failures name what is wrong and set `status` to what the program
/// ends with for it.
Outcome describeInput(PlayInput const& input, PlaySettings const& settings, InputFacts& facts, ExitStatus& status);

/// What the program ends with for a failure to open.
[[nodiscard]] ExitStatus statusOf(InputFailure kind) noexcept;

/// Opens it in a player, otherwise alike.
Outcome openFrameSource(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<FrameSource>& source,
                        ExitStatus& status);

}  // namespace qrtplay
