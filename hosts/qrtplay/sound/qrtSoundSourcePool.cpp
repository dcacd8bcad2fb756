#include "sound/qrtSoundSourcePool.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

SoundSource* SoundSourcePool::get(size_t media) {
    if (m_silent.contains(media)) return nullptr;
    const auto known =
        std::find_if(m_entries.begin(), m_entries.end(), [&](Entry const& entry) { return entry.media == media; });
    if (known != m_entries.end()) {
        m_entries.splice(m_entries.begin(), m_entries, known);
        return known->source.get();
    }
    std::unique_ptr<SoundSource> source;
    const Outcome outcome = m_open(media, source);
    if (outcome.failed()) noteFailure(media, outcome.message());
    if (outcome.failed() || !source) {
        m_silent.insert(media);
        return nullptr;
    }
    if (m_entries.size() >= mostOpen) m_entries.pop_back();
    m_entries.push_front({media, std::move(source)});
    return m_entries.front().source.get();
}

void SoundSourcePool::noteFailure(size_t media, std::string const& why) {
    if (m_failed.insert(media).second) m_failures.push_back(why);
}

std::vector<std::string> SoundSourcePool::takeFailures() {
    return std::exchange(m_failures, {});
}

}  // namespace qrtplay
