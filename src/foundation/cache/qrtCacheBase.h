#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory_resource>
#include <mutex>
#include <unordered_map>

#include "foundation/cache/qrtCacheData.h"
#include "foundation/cache/qrtEvictionAdvisorInterfaceBase.h"
#include "foundation/cache/qrtForEachFunctorInterface.h"
#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// How many entries one `evict` may drop.
enum cache_eviction_mode_t : int {
    evict_one = 0,  ///< the first that the strategy allows
    evict_all = 1   ///< every entry that the strategy allows
};

/// Which entries `evict` may drop, and in what order.
enum cache_eviction_strategy_t : int {
    evict_least_recently_used = 2,  ///< the cache's own order; the advisor is not asked
    evict_advised = 3  ///< the same order, but only entries that the advisor lets go; none without an advisor
};

/// A keyed cache without a limit of its own: whoever fills it evicts when room is needed.
///
/// Threading: every method may be called from any thread. The lock is never held while a record is destroyed, so a
/// record's end may use the cache or take any other lock; it must not end the cache. Recency: `get`, `visit` and `put`
/// count as a use, nothing else does.
template <class Data>
class QRT_CACHE_EXPORT CacheBase final : public RefCountedMT {
public:
    /// An empty cache without an advisor.
    [[nodiscard]] static SharedPtr<CacheBase> create();
    ~CacheBase() override;

    /// Sets `data` to the entry's record. `Status::not_in_cache`, with `data` unchanged, when there is none; a record
    /// that says it has expired is dropped and counts as none.
    Status get(String const& key, Data& data);
    /// The same, but waits up to `timeoutMs` milliseconds for another thread to put the entry; 0 or less does not wait.
    Status get(String const& key, int32 timeoutMs, Data& data);

    /// Shows the entry's record to the visitor, under the lock: for those who need one thing of it and not the record
    /// itself. `Status::not_in_cache` as `get`. What the visitor answers makes no difference.
    Status visit(std::string_view key, ForEachFunctorInterface<Data>& visitor);

    /// Adds or replaces an entry. `Status::invalid_argument` for an empty `data`.
    Status put(String const& key, Data const& data);
    /// Drops an entry; success whether or not there was one.
    Status erase(String const& key);
    /// Drops every entry whose key the predicate names. It is called under the lock: it must not use the cache.
    Status eraseIf(std::function<bool(String const& key)> const& isMatch);
    /// Drops every entry; always succeeds.
    Status clear();

    /// Whether there is no entry at this moment.
    [[nodiscard]] bool empty() const;
    /// How many entries there are at this moment.
    [[nodiscard]] size_t size() const;
    /// Whether there is an entry under the key. That is no use of it, and whether it has expired is not asked.
    [[nodiscard]] bool containsKey(String const& key) const;
    /// How many entries have ever left the cache, on whatever way. While it stays the same, what was in it still is.
    [[nodiscard]] uint64 numRemoved() const noexcept { return m_numRemoved.load(); }

    /// Visits every entry, most recently used first, until the visitor says no.
    Status for_each(ForEachFunctorInterface<Data>& visitor) const;

    /// Installs the advisor of `evict_advised`; an empty pointer removes it.
    Status setEvictionAdvisor(SharedPtr<EvictionAdvisorInterfaceBase<Data>> const& advisor);

    /// Drops entries, the least recently used first, and sets `numEvicted` to their number, which may be 0.
    /// With an advisor each call goes on where the last one ended and comes back to the least recently used entry when
    /// it is through: what the advisor wants to keep is not asked about again and again. `Status::invalid_argument`,
    /// with `numEvicted` 0, for an unknown mode or strategy.
    Status evict(cache_eviction_mode_t mode, cache_eviction_strategy_t strategy, size_t& numEvicted);

private:
    struct Entry {
        String key;
        Data data;
    };
    using Entries = std::pmr::list<Entry>;  // most recently used first
    using Position = typename Entries::iterator;
    struct SameText {
        using is_transparent = void;
        bool operator()(String const& a, String const& b) const { return a == b; }
        bool operator()(std::string_view a, String const& b) const { return a == b.view(); }
    };
    using Index = std::pmr::unordered_map<String, Position, std::hash<String>, SameText>;

    /// Entries on their way out. To be made before the lock is taken: the records end without it, and the entries' room
    /// goes back to the cache under it.
    class Dropped final {
    public:
        explicit Dropped(CacheBase& cache) : m_cache(cache), m_entries(&cache.m_room) {}
        Dropped(Dropped const&) = delete;
        Dropped& operator=(Dropped const&) = delete;
        ~Dropped();
        [[nodiscard]] Entries& entries() noexcept { return m_entries; }

    private:
        CacheBase& m_cache;
        Entries m_entries;
    };

    CacheBase() = default;

    /// The live record under `key`, moved to the front, or null; `expired` receives one that is too old. Needs the
    /// lock.
    [[nodiscard]] Data const* lookUp(std::string_view key, Dropped& expired);
    /// The `evict` of `evict_advised`. Needs the lock.
    size_t evictAdvised(cache_eviction_mode_t mode, Dropped& dropped);
    /// The entry used after this one; after the most recently used one comes the least. Needs the lock.
    [[nodiscard]] Position nextNewer(Position position);
    /// To be called before an entry leaves its place. Needs the lock.
    void letGoOf(Position position);
    /// Moves an entry out of the cache into `dropped`; the one behind it. Needs the lock.
    Position moveOut(Position position, Dropped& dropped);

    mutable std::mutex m_mutex;
    std::condition_variable m_added;
    std::atomic<uint64> m_numRemoved{0};                      // changed under m_mutex
    std::pmr::unsynchronized_pool_resource m_room;            // under m_mutex: an entry takes the room of one that went
    Entries m_entries{&m_room};                               // under m_mutex
    Position m_hand = m_entries.end();                        // under m_mutex: whom the advisor is asked about next
    Index m_index{&m_room};                                   // under m_mutex
    SharedPtr<EvictionAdvisorInterfaceBase<Data>> m_advisor;  // under m_mutex
};

extern template class CacheBase<SharedPtr<CacheData>>;

}  // namespace QRT_0_81
