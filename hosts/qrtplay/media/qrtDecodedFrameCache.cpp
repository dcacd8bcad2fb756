#include "media/qrtDecodedFrameCache.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

size_t bytesOf(AVFrame const& picture) {
    size_t bytes = sizeof(AVFrame);
    for (const AVBufferRef* const buffer : picture.buf) {
        if (buffer) bytes += static_cast<size_t>(buffer->size);
    }
    return bytes;
}

}  // namespace

// Pictures that leave are let go of after the lock: freeing one may take as long as the operating system likes.
void DecodedFrameCache::takeSurplus(Entries& surplus) {
    while (m_bytes > m_budget && m_entries.size() > 1) {
        const auto last = std::prev(m_entries.end());
        m_bytes -= last->bytes;
        m_byFrame.erase(last->frame);
        surplus.splice(surplus.end(), m_entries, last);
    }
}

void DecodedFrameCache::setBudget(size_t bytes) {
    Entries surplus;
    const std::lock_guard lock(m_mutex);
    m_budget = bytes;
    takeSurplus(surplus);
}

size_t DecodedFrameCache::budgetInBytes() const {
    const std::lock_guard lock(m_mutex);
    return m_budget;
}

size_t DecodedFrameCache::sizeInBytes() const {
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

FramePtr DecodedFrameCache::get(int64 frame) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_byFrame.find(frame);
    if (found == m_byFrame.end()) return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->picture;
}

void DecodedFrameCache::put(int64 frame, FramePtr picture) {
    if (!picture) return;
    const size_t bytes = bytesOf(*picture);
    Entries surplus;
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_byFrame.find(frame); found != m_byFrame.end()) {
        m_bytes -= found->second->bytes;
        surplus.splice(surplus.end(), m_entries, found->second);
        m_byFrame.erase(found);
    }
    m_entries.push_front({frame, std::move(picture), bytes});
    m_byFrame.emplace(frame, m_entries.begin());
    m_bytes += bytes;
    takeSurplus(surplus);
}

void DecodedFrameCache::clear() {
    Entries all;
    const std::lock_guard lock(m_mutex);
    all.swap(m_entries);
    m_byFrame.clear();
    m_bytes = 0;
}

std::vector<int64> DecodedFrameCache::frames() const {
    std::vector<int64> frames;
    {
        const std::lock_guard lock(m_mutex);
        frames.reserve(m_entries.size());
        for (Entry const& entry : m_entries) frames.push_back(entry.frame);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

}  // namespace qrtplay
