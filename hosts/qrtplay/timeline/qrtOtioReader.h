#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/qrtOutcome.h"
#include "timeline/qrtMediaReference.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What a look into a media tells.
struct MediaLength {
    ExactTime duration;
    Rational rate{24, 1};  ///< of the pictures; 0 when there are none
};

struct OtioOptions {
    /// Asked for media whose length the timeline does not tell; once for each. May be empty: then nothing is known.
    std::function<Outcome(MediaReference const&, MediaLength&)> probe;
    /// Media that lie, links followed, in none of these folders count as missing. An empty list allows all.
    std::vector<std::string> allowPaths;
};

/// Reads a timeline from an .otio file, an .otiod folder or an .otioz bundle.
///
/// The media of a bundle are unpacked into a temporary folder, which goes with the timeline. A reference to another
/// .otio file brings in its pictures on a video track and its sound on an audio track.
///
/// What can be done without, such as an unknown effect or a media that is not there, is left out and named in
/// `Timeline::warnings()`. A failure is one line that names the file, and the object by its place and name, such as
///     cut.otio: tracks/children[2]/children[5] "shot_040": duration is negative
/// Limits: 256 MiB of files, with those that are referred to; objects nested 64 deep, files 8 deep; 2,000,000 items.
Outcome readOtio(std::string const& path, OtioOptions const& options, std::shared_ptr<Timeline const>& timeline);

/// The same, of the text of an .otio file that is known as `name` and lies in `folder`.
Outcome readOtioText(std::string const& text, std::string const& name, std::string const& folder,
                     OtioOptions const& options, std::shared_ptr<Timeline const>& timeline);

}  // namespace qrtplay
