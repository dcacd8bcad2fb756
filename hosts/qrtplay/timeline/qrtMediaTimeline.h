#pragma once

#include <memory>
#include <string>
#include <vector>

#include "timeline/qrtMediaReference.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// A media of which is known what it holds.
struct MeasuredMedia {
    MediaReference reference;
    ExactTime length;
    Rational rate{24, 1};  ///< of the pictures; without meaning when there are none
    bool hasVideo = false;
    bool hasSound = false;
};

/// A timeline that plays media one after the other, at the rate of the first one with pictures (24 when none has any).
[[nodiscard]] std::shared_ptr<Timeline const> makeMediaTimeline(std::string const& name,
                                                                std::vector<MeasuredMedia> const& media);

}  // namespace qrtplay
