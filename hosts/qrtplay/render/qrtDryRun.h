#pragma once

#include "options/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay render --dry-run`: says which files would be written and which are there, and writes nothing. Needs no
/// display. As JSON it is an object a line with the member "event":
///
///     plan     action ("write", "replace" or "skip"), path, frame (null: a movie)
///     error    message
///     summary  exit, dry_run, total, to_write, to_replace, to_skip, output, codec (null: images), depth, width,
///     height, rate,
///              sound
int runDryRun(RenderOptions const& options);

}  // namespace qrtplay
