#include "foundation/cache/qrtCacheBase.h"

#include <chrono>
#include <iterator>

namespace QRT_0_81 {

template <class Data>
SharedPtr<CacheBase<Data>> CacheBase<Data>::create() {
    return SharedPtr<CacheBase>(new CacheBase);
}

template <class Data>
CacheBase<Data>::~CacheBase() {
    // While the cache is still whole: a record's end may use it.
    static_cast<void>(clear());
}

template <class Data>
CacheBase<Data>::Dropped::~Dropped() {
    if (m_entries.empty()) return;
    for (Entry& entry : m_entries)
        Data().swap(entry.data);
    const std::lock_guard lock(m_cache.m_mutex);
    m_entries.clear();
}

template <class Data>
Data const* CacheBase<Data>::lookUp(std::string_view key, Dropped& expired) {
    const auto found = m_index.find(key);
    if (found == m_index.end()) return nullptr;
    if (found->second->data->expire(CacheData::Reason::lookup)) {
        moveOut(found->second, expired);
        return nullptr;
    }
    letGoOf(found->second);
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return &found->second->data;
}

template <class Data>
typename CacheBase<Data>::Position CacheBase<Data>::moveOut(Position position, Dropped& dropped) {
    const Position next = std::next(position);
    letGoOf(position);
    m_index.erase(position->key);
    dropped.entries().splice(dropped.entries().end(), m_entries, position);
    ++m_numRemoved;
    return next;
}

template <class Data>
typename CacheBase<Data>::Position CacheBase<Data>::nextNewer(Position position) {
    return position == m_entries.begin() ? std::prev(m_entries.end()) : std::prev(position);
}

template <class Data>
void CacheBase<Data>::letGoOf(Position position) {
    if (m_hand == position) m_hand = position == m_entries.begin() ? m_entries.end() : std::prev(position);
}

template <class Data>
Status CacheBase<Data>::visit(std::string_view key, ForEachFunctorInterface<Data>& visitor) {
    Dropped dropped(*this);
    const std::lock_guard lock(m_mutex);
    Data const* const data = lookUp(key, dropped);
    if (!data) return Status::not_in_cache;
    (void)visitor.visit(*data);
    return Status();
}

template <class Data>
Status CacheBase<Data>::get(String const& key, Data& data) {
    return get(key, 0, data);
}

template <class Data>
Status CacheBase<Data>::get(String const& key, int32 timeoutMs, Data& data) {
    Dropped dropped(*this);
    Data found;  // so that what `data` held before is dropped without the lock
    {
        std::unique_lock lock(m_mutex);
        Data const* hit = lookUp(key.view(), dropped);
        if (!hit && timeoutMs > 0) {
            m_added.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                             [&] { return (hit = lookUp(key.view(), dropped)) != nullptr; });
        }
        if (!hit) return Status::not_in_cache;
        found = *hit;
    }
    data.swap(found);
    return Status();
}

template <class Data>
Status CacheBase<Data>::put(String const& key, Data const& data) {
    if (!data) return Status::invalid_argument;
    Dropped dropped(*this);
    {
        const std::lock_guard lock(m_mutex);
        Entries added(&m_room);
        added.push_back({key, data});
        const auto known = m_index.find(key);
        if (known != m_index.end()) moveOut(known->second, dropped);
        m_index.emplace(key, added.begin());
        m_entries.splice(m_entries.begin(), added);
    }
    m_added.notify_all();
    return Status();
}

template <class Data>
Status CacheBase<Data>::erase(String const& key) {
    Dropped dropped(*this);
    const std::lock_guard lock(m_mutex);
    const auto found = m_index.find(key);
    if (found != m_index.end()) moveOut(found->second, dropped);
    return Status();
}

template <class Data>
Status CacheBase<Data>::eraseIf(std::function<bool(String const& key)> const& isMatch) {
    Dropped dropped(*this);
    const std::lock_guard lock(m_mutex);
    for (Position position = m_entries.begin(); position != m_entries.end();) {
        position = isMatch(position->key) ? moveOut(position, dropped) : std::next(position);
    }
    return Status();
}

template <class Data>
Status CacheBase<Data>::clear() {
    Dropped dropped(*this);
    const std::lock_guard lock(m_mutex);
    m_numRemoved += m_entries.size();
    m_index.clear();
    dropped.entries().swap(m_entries);
    m_hand = m_entries.end();
    return Status();
}

template <class Data>
bool CacheBase<Data>::empty() const {
    const std::lock_guard lock(m_mutex);
    return m_entries.empty();
}

template <class Data>
size_t CacheBase<Data>::size() const {
    const std::lock_guard lock(m_mutex);
    return m_entries.size();
}

template <class Data>
bool CacheBase<Data>::containsKey(String const& key) const {
    const std::lock_guard lock(m_mutex);
    return m_index.count(key) != 0;
}

template <class Data>
Status CacheBase<Data>::for_each(ForEachFunctorInterface<Data>& visitor) const {
    const std::lock_guard lock(m_mutex);
    for (Entry const& entry : m_entries) {
        if (!visitor.visit(entry.data)) break;
    }
    return Status();
}

template <class Data>
Status CacheBase<Data>::setEvictionAdvisor(SharedPtr<EvictionAdvisorInterfaceBase<Data>> const& advisor) {
    auto previous = advisor;  // the replaced advisor is dropped without the lock
    const std::lock_guard lock(m_mutex);
    m_advisor.swap(previous);
    return Status();
}

template <class Data>
Status CacheBase<Data>::evict(cache_eviction_mode_t mode, cache_eviction_strategy_t strategy, size_t& numEvicted) {
    numEvicted = 0;
    if (mode != evict_one && mode != evict_all) return Status::invalid_argument;
    if (strategy != evict_least_recently_used && strategy != evict_advised) return Status::invalid_argument;

    Dropped dropped(*this);
    const std::lock_guard lock(m_mutex);
    if (strategy == evict_advised) {
        numEvicted = m_advisor ? evictAdvised(mode, dropped) : 0;
        return Status();
    }
    while (!m_entries.empty()) {
        moveOut(std::prev(m_entries.end()), dropped);
        ++numEvicted;
        if (mode == evict_one) break;
    }
    return Status();
}

template <class Data>
size_t CacheBase<Data>::evictAdvised(cache_eviction_mode_t mode, Dropped& dropped) {
    size_t numEvicted = 0;
    Position candidate = m_hand == m_entries.end() && !m_entries.empty() ? std::prev(m_entries.end()) : m_hand;
    for (size_t left = m_entries.size(); left > 0; --left) {
        const Position next = nextNewer(candidate);
        if (m_advisor->canEvict(candidate->key, candidate->data)) {
            m_hand = next;
            moveOut(candidate, dropped);
            ++numEvicted;
            if (mode == evict_one) break;
        }
        candidate = next;
    }
    return numEvicted;
}

template class CacheBase<SharedPtr<CacheData>>;

}  // namespace QRT_0_81
