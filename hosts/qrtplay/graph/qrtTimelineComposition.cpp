#include "graph/qrtTimelineComposition.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

TimelineComposition::TimelineComposition(std::shared_ptr<Timeline const> timeline, Files files,
                                         Presentation presentation)
    : m_timeline(std::move(timeline)),
      m_files(std::move(files)),
      m_presentation(std::move(presentation)),
      m_rate(m_presentation.rate.value_or(m_timeline->rate())) {}

SharedPtr<TimelineComposition> TimelineComposition::create(std::shared_ptr<Timeline const> timeline, Files files,
                                                           Presentation presentation) {
    return SharedPtr<TimelineComposition>(
        new TimelineComposition(std::move(timeline), std::move(files), std::move(presentation)));
}

SharedPtr<TimelineComposition> TimelineComposition::presentedAs(Presentation presentation) const {
    return create(m_timeline, m_files, std::move(presentation));
}

Status TimelineComposition::getStartTime(Time& start) const {
    start = Time(0, m_rate);
    return Status();
}

Status TimelineComposition::getDuration(Time& duration) const {
    duration = Time(frameCount(), m_rate);
    return Status();
}

std::shared_ptr<MediaFile const> TimelineComposition::file(size_t media) const {
    return media < m_files.size() ? m_files[media] : nullptr;
}

void TimelineComposition::noteFailure(int64 frame, std::string const& why) {
    constexpr size_t mostNotes = 512;
    const std::lock_guard lock(m_mutex);
    if (m_failures.size() >= mostNotes) m_failures.clear();
    m_failures[frame] = why;
}

std::string TimelineComposition::failureOf(int64 frame) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_failures.find(frame);
    return found == m_failures.end() ? std::string() : found->second;
}

void TimelineComposition::noteWarning(std::string const& line) {
    constexpr size_t mostWarnings = 10000;
    const std::lock_guard lock(m_mutex);
    if (m_warnings.size() >= mostWarnings || std::find(m_warnings.begin(), m_warnings.end(), line) != m_warnings.end())
        return;
    m_warnings.push_back(line);
}

std::vector<std::string> TimelineComposition::takeWarnings() {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> taken(m_warnings.begin() + static_cast<std::ptrdiff_t>(m_takenWarnings), m_warnings.end());
    m_takenWarnings = m_warnings.size();
    return taken;
}

}  // namespace qrtplay
