#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/composition/qrtComposition.h"
#include "foundation/core/qrtSharedPtr.h"
#include "graph/qrtPresentation.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

class MediaFile;

/// A timeline as the player takes it, with how it is to be shown: it begins at time 0 and counts in output frames. To
/// show the same timeline in another way, update the player with a new composition of it.
///
/// A `Status` carries no text, so the graph engine leaves here what went wrong, for the host to show.
/// Threading: any thread may call any method.
class TimelineComposition final : public Composition {
public:
    /// The timeline's media that have been opened already, by the same index; the rest may be null.
    using Files = std::vector<std::shared_ptr<MediaFile const>>;

    [[nodiscard]] static SharedPtr<TimelineComposition> create(std::shared_ptr<Timeline const> timeline,
                                                               Files files = {}, Presentation presentation = {});

    /// The same timeline and files, to be shown in another way. Notes are not taken over.
    [[nodiscard]] SharedPtr<TimelineComposition> presentedAs(Presentation presentation) const;

    Status getStartTime(Time& start) const override;
    Status getDuration(Time& duration) const override;

    [[nodiscard]] std::shared_ptr<Timeline const> const& timeline() const noexcept { return m_timeline; }
    /// Output frames per second.
    [[nodiscard]] Rational const& rate() const noexcept { return m_rate; }
    [[nodiscard]] int64 frameCount() const noexcept { return m_timeline->duration().frameFrom(m_rate); }
    [[nodiscard]] Presentation const& presentation() const noexcept { return m_presentation; }
    /// Null when it has not been opened beforehand.
    [[nodiscard]] std::shared_ptr<MediaFile const> file(size_t media) const;

    /// Why an output frame failed. Only the last few hundred are kept.
    void noteFailure(int64 frame, std::string const& why);
    /// What was noted last for the frame; empty when nothing was.
    [[nodiscard]] std::string failureOf(int64 frame) const;

    /// How long the frame rendered last took the graph engine, in nanoseconds: waiting for its pictures and drawing
    /// them, without what OpenGL does of it afterwards.
    void noteRenderTime(int64 nanoseconds) noexcept { m_renderTime = nanoseconds; }
    [[nodiscard]] int64 renderTime() const noexcept { return m_renderTime; }

    /// Something that playing goes on without, such as missing media. The same line is noted once.
    void noteWarning(std::string const& line);
    /// Those noted since the last call.
    [[nodiscard]] std::vector<std::string> takeWarnings();

private:
    TimelineComposition(std::shared_ptr<Timeline const> timeline, Files files, Presentation presentation);

    const std::shared_ptr<Timeline const> m_timeline;
    const Files m_files;
    const Presentation m_presentation;
    const Rational m_rate;
    std::atomic<int64> m_renderTime = 0;
    mutable std::mutex m_mutex;
    // Under m_mutex.
    std::map<int64, std::string> m_failures;
    std::vector<std::string> m_warnings;
    size_t m_takenWarnings = 0;  // of m_warnings
};

}  // namespace qrtplay
