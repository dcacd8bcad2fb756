#include "timeline/qrtMediaComposition.h"

namespace qrtplay {

Outcome MediaComposition::open(std::string const& path, SharedPtr<MediaComposition>& composition) {
    std::shared_ptr<MediaFile const> file;
    if (Outcome outcome = MediaFile::open(path, file); outcome.failed()) return outcome;
    composition = SharedPtr<MediaComposition>(new MediaComposition(std::move(file)));
    return Outcome();
}

Status MediaComposition::getStartTime(Time& start) const {
    start = Time(0, m_file->facts().frameRate);
    return Status();
}

Status MediaComposition::getDuration(Time& duration) const {
    duration = Time(m_file->facts().frameCount, m_file->facts().frameRate);
    return Status();
}

void MediaComposition::noteFailure(int64 frame, std::string const& why) {
    constexpr size_t mostNotes = 512;
    const std::lock_guard lock(m_mutex);
    if (m_failures.size() >= mostNotes) m_failures.clear();
    m_failures[frame] = why;
}

std::string MediaComposition::failureOf(int64 frame) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_failures.find(frame);
    return found == m_failures.end() ? std::string() : found->second;
}

}  // namespace qrtplay
