#pragma once

#include "options/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay info`; the result is the exit status of the program. Needs no display.
///
/// As JSON it is one object: "kind" ("media" or "timeline"), "path" and
///     media     container, bytes, seconds, timecode (null: none stated), video (null or an object: codec, width,
///     height,
///               pixel_aspect, rate, frames, pixel_format, colour, rotation, mirrored), sounds (codec, channels,
///               layout, sample_rate)
///     timeline  name, rate, frames, seconds, timecode, tracks (kind, name, items: kind, name, start, seconds, media,
///               generator), media (text, kind, problem), generators (name, text), markers (name, colour, start,
///               seconds), warnings
/// or, when it failed, "error".
int runInfo(InfoOptions const& options);

}  // namespace qrtplay
