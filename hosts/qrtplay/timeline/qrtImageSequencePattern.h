#pragma once

#include <string>

#include "base/qrtOutcome.h"
#include "foundation/core/qrtRational.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// Whether a path names numbered files: its last part has a run of '#' or '@', "%d" or "%04d".
[[nodiscard]] bool isImageSequencePattern(std::string const& pattern);

/// The name that `pattern` stands for, without the numbers of the files that exist. Failures name the pattern: no place
/// for the number, or two.
Outcome parseImageSequencePattern(std::string const& pattern, ImageSequenceName& images);

/// Sets the first and the last number to those of the files that are there; there may be holes in between. Failures
/// name the pattern: the folder cannot be read, or no file is there.
Outcome findNumbers(ImageSequenceName& images);

/// Both of these: the files that `pattern` stands for, as a clip of `rate` pictures per second.
Outcome findImages(std::string const& pattern, Rational const& rate, ImageSequenceName& images);

}  // namespace qrtplay
