#pragma once

#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/qrtLimits.h"
#include "timeline/qrtOtioAddress.h"
#include "timeline/qrtOtioObject.h"
#include "timeline/qrtOtioReader.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What all files of one timeline have in common while they are read: what has been found so far, and what is left of
/// the limits.
class OtioRun final {
public:
    explicit OtioRun(OtioOptions const& options) : allowed(options.allowPaths), m_options(options) {}

    Timeline::Content content;
    AllowedFolders allowed;

    /// Only so many are kept that a person would read them; how many more there were is said by `finishWarnings`.
    void warn(OtioObject const& object, std::string const& what);
    /// Of several things that are alike, the first one.
    void warnOnce(OtioObject const& object, std::string const& what);
    void finishWarnings();

    void countItem(OtioObject const& object, size_t depth);
    /// The same index for the same media, whatever clips call it.
    [[nodiscard]] size_t indexOf(MediaReference const& media);
    [[nodiscard]] size_t add(Generator generator);
    /// What the host says about a media, which is asked once; a failure says why nothing is known.
    Outcome lengthOf(MediaReference const& media, MediaLength& length);

    /// The first rate in which pictures can be counted is that of the timeline, unless the file gives one.
    void noteVideoRate(Rational const& rate);
    [[nodiscard]] bool hasVideoRate() const noexcept { return m_videoRate.has_value(); }
    [[nodiscard]] Rational videoRate() const noexcept { return m_videoRate.value_or(Rational(24, 1)); }
    [[nodiscard]] static bool isVideoRate(Rational const& rate) noexcept { return rate.getValue() <= 240; }

    /// The files that are being read, each referred to by the one before, as canonical paths.
    std::vector<std::string> chain;
    /// Those, by index, whose frames are counted at the timeline's rate, and the time until their end.
    std::vector<std::pair<size_t, ExactTime>> uncountedGenerators;
    size_t bytesLeft = maxTimelineBytes;

private:
    struct Answer {
        Outcome outcome;
        MediaLength length;
    };

    OtioOptions const& m_options;
    size_t m_itemsLeft = maxTimelineItems;
    std::optional<Rational> m_videoRate;
    std::unordered_map<std::string, size_t> m_mediaIndices;
    std::unordered_map<std::string, Answer> m_answers;
    std::set<std::string> m_warnedOnce;
    size_t m_warningsLeftOut = 0;
};

}  // namespace qrtplay
