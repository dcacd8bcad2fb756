#pragma once

#include <string>

#include "base/qrtOutcome.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// The kind of still picture that a file with such a name holds; `AV_CODEC_ID_NONE` for other names.
[[nodiscard]] AVCodecID imageCodecOf(std::string const& path);

/// Decodes a still picture. Its kind is told by how its name ends. Failures name the file.
Outcome readImageFile(std::string const& path, FramePtr& picture);

}  // namespace qrtplay
