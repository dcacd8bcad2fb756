#include "media/qrtPictureCache.h"

namespace qrtplay {

size_t PictureCache::bytesOf(AVFrame const& picture) {
    size_t bytes = sizeof(AVFrame);
    for (const AVBufferRef* const buffer : picture.buf) {
        if (buffer) bytes += static_cast<size_t>(buffer->size);
    }
    return bytes;
}

PictureCache::Surplus PictureCache::setBudget(size_t bytes) {
    m_budget = bytes;
    return takeSurplus();
}

FramePtr PictureCache::get(Key const& key) {
    const auto found = m_entries.find(key);
    if (found == m_entries.end()) return nullptr;
    found->second.lastUse = ++m_now;
    setWorth(key, found->second);
    return found->second.picture;
}

size_t PictureCache::bytesAt(Key const& key) const {
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? 0 : found->second.bytes;
}

PictureCache::Surplus PictureCache::put(Key const& key, FramePtr picture) {
    if (!picture) return {};
    const size_t bytes = bytesOf(*picture);
    Entry& entry = m_entries[key];
    m_bytes += bytes - entry.bytes;
    m_otherBytes += entry.worth != 0 && !entry.isWishedFor ? bytes - entry.bytes : 0;
    entry.bytes = bytes;
    entry.lastUse = ++m_now;
    entry.picture.swap(picture);
    setWorth(key, entry);
    Surplus surplus = takeSurplus();
    if (picture) surplus.push_back(std::move(picture));  // the one that was there before
    return surplus;
}

void PictureCache::setWishes(std::vector<Key> const& wishes) {
    m_wishes.clear();
    Worth worth = std::numeric_limits<Worth>::max();
    for (Key const& wish : wishes)
        m_wishes.emplace(wish, worth--);
    m_byWorth.clear();
    m_otherBytes = 0;
    for (auto& [key, entry] : m_entries) {
        entry.worth = 0;
        setWorth(key, entry);
    }
}

PictureCache::Surplus PictureCache::setRoomForOthers(size_t bytes) {
    m_roomForOthers = bytes;
    return takeSurplus();
}

PictureCache::Surplus PictureCache::clear() {
    Surplus all;
    all.reserve(m_entries.size());
    for (auto& [key, entry] : m_entries)
        all.push_back(std::move(entry.picture));
    m_entries.clear();
    m_byWorth.clear();
    m_bytes = m_otherBytes = 0;
    return all;
}

void PictureCache::setWorth(Key const& key, Entry& entry) {
    if (entry.worth != 0) m_byWorth.erase(entry.worth);
    if (entry.worth == 0) {
        const auto wish = m_wishes.find(key);
        entry.isWishedFor = wish != m_wishes.end();
        entry.worth = entry.isWishedFor ? wish->second : entry.lastUse;
        if (!entry.isWishedFor) m_otherBytes += entry.bytes;
    } else if (!entry.isWishedFor) {
        entry.worth = entry.lastUse;
    }
    m_byWorth.emplace(entry.worth, key);
}

// One that nobody wishes for is kept in any case: it may be on its way to who has asked for it.
bool PictureCache::isOverfull() const {
    if (m_bytes > m_budget) return m_entries.size() > 1;
    if (m_otherBytes <= m_roomForOthers) return false;
    return m_otherBytes > m_entries.at(m_byWorth.begin()->second).bytes;
}

PictureCache::Surplus PictureCache::takeSurplus() {
    Surplus surplus;
    while (isOverfull()) {
        const auto least = m_byWorth.begin();
        const auto entry = m_entries.find(least->second);
        m_bytes -= entry->second.bytes;
        if (!entry->second.isWishedFor) m_otherBytes -= entry->second.bytes;
        surplus.push_back(std::move(entry->second.picture));
        m_entries.erase(entry);
        m_byWorth.erase(least);
    }
    return surplus;
}

}  // namespace qrtplay
