#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtSoundSource.h"

namespace qrtplay {

/// The sound of a media file at an output's rate and number of channels (1 to 8).
///
/// `zero`:   when sample 0 is heard, in the file's own counting; without: when the sound begins.
/// `source`: null for a file without sound, which is no failure.
/// Failures name the file.
Outcome openSound(std::string const& path, std::optional<ExactTime> const& zero, int sampleRate, int channels,
                  std::unique_ptr<SoundSource>& source);

}  // namespace qrtplay
