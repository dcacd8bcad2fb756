#pragma once

#include <optional>
#include <string>

#include "timeline/qrtMediaReference.h"
#include "timeline/qrtOtioObject.h"
#include "timeline/qrtOtioRun.h"
#include "timeline/qrtOtioTime.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What a clip's media reference leads to.
struct OtioSource {
    enum class Kind { nothing, media, generator, timeline };

    Kind kind = Kind::nothing;
    MediaReference media;
    Generator generator;                 ///< still without id, rate and length
    std::string path;                    ///< of another .otio file
    std::optional<OtioRange> available;  ///< what the file says there is
};

/// Reads the active media reference of a clip of a file that lies in `folder`. What leads nowhere is a missing media,
/// with a warning.
[[nodiscard]] OtioSource readOtioSource(OtioObject const& clip, std::string const& folder, OtioRun& run);

/// Reads kind and parameters of a GeneratorReference; none, with a warning, when the kind is not known.
[[nodiscard]] std::optional<Generator> readOtioGenerator(OtioObject const& reference, OtioRun& run);

}  // namespace qrtplay
