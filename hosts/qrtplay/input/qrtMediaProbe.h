#pragma once

#include <map>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtMediaFile.h"
#include "sound/qrtSoundFile.h"
#include "timeline/qrtMediaReference.h"
#include "timeline/qrtMediaTimeline.h"

namespace qrtplay {

/// Finds out what media hold, and keeps what it has opened: a file is read through once, however often it is asked for.
///
/// Threading: one thread.
class MediaProbe final {
public:
    /// Fills in all but `media.reference`. Failures name the file.
    Outcome measure(MediaReference const& reference, MeasuredMedia& media);

    /// The pictures of a file that has been measured; null when it has none or was not.
    [[nodiscard]] std::shared_ptr<MediaFile const> pictures(std::string const& path) const;
    /// The same of its sound.
    [[nodiscard]] std::shared_ptr<SoundFile const> sound(std::string const& path) const;

private:
    struct Opened {
        std::shared_ptr<MediaFile const> pictures;
        std::shared_ptr<SoundFile const> sound;
        Outcome outcome;  // a failure when it holds neither
    };

    Opened const& open(std::string const& path);

    std::map<std::string, Opened> m_opened;
};

}  // namespace qrtplay
