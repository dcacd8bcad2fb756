#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtVideoFacts.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// What is known of a media without decoding it.
struct MediaInfo {
    struct Sound {
        std::string codec;
        int channels = 0;
        int sampleRate = 0;
        std::string layout;  ///< such as "stereo"
    };

    std::string container;  ///< in FFmpeg's words, such as "QuickTime / MOV"
    int64 bytes = 0;        ///< 0: not a single file
    ExactTime duration;
    std::string timecode;  ///< of the first frame as the file states it; empty when it does not
    std::optional<VideoFacts> video;
    std::vector<Sound> sounds;
};

/// Failures name the media.
Outcome readMediaInfo(MediaReference const& reference, MediaInfo& info);

}  // namespace qrtplay
