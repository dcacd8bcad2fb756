#pragma once

#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "base/qrtKit.h"
#include "media/qrtAv.h"
#include "media/qrtPictureStore.h"

namespace qrtplay {

/// Decoded pictures of many media within one budget of memory.
///
/// When the budget is spent, pictures that nobody wishes for give way first, the least recently used one before the
/// others; then those that are wished for, the least urgent one before the others. Pictures that give way are handed to
/// the caller: freeing one may take as long as the operating system likes, so that is done after the lock that guards
/// the cache. Threading: none of its own.
class PictureCache final {
public:
    using Key = PictureStore::Key;
    using Surplus = std::vector<FramePtr>;

    explicit PictureCache(size_t budgetInBytes) : m_budget(budgetInBytes) {}

    /// How much memory a picture takes.
    [[nodiscard]] static size_t bytesOf(AVFrame const& picture);

    /// One picture is kept even when it is larger than the budget.
    [[nodiscard]] Surplus setBudget(size_t bytes);
    [[nodiscard]] size_t budgetInBytes() const noexcept { return m_budget; }
    [[nodiscard]] size_t sizeInBytes() const noexcept { return m_bytes; }

    /// Null when it is not kept. Counts as a use.
    [[nodiscard]] FramePtr get(Key const& key);
    [[nodiscard]] bool contains(Key const& key) const { return m_entries.contains(key); }
    /// 0 when it is not kept.
    [[nodiscard]] size_t bytesAt(Key const& key) const;
    [[nodiscard]] Surplus put(Key const& key, FramePtr picture);
    /// The most urgent first; takes the place of what was wished for before.
    void setWishes(std::vector<Key> const& wishes);
    /// How much of the budget pictures that nobody wishes for may take up; all of it at first.
    [[nodiscard]] Surplus setRoomForOthers(size_t bytes);
    [[nodiscard]] Surplus clear();

private:
    /// The smallest one gives way first: pictures that nobody wishes for have the time of their last use and precede
    /// the others, which have the time at the end of times, less the number of wishes that go before them.
    using Worth = uint64;
    struct Entry {
        FramePtr picture;
        size_t bytes = 0;
        Worth lastUse = 0;
        Worth worth = 0;
        bool isWishedFor = false;
    };

    void setWorth(Key const& key, Entry& entry);
    [[nodiscard]] bool isOverfull() const;
    [[nodiscard]] Surplus takeSurplus();

    std::map<Key, Entry> m_entries;
    std::map<Worth, Key> m_byWorth;
    std::map<Key, Worth> m_wishes;
    Worth m_now = 0;
    size_t m_bytes = 0;
    size_t m_otherBytes = 0;  // of those that nobody wishes for
    size_t m_roomForOthers = std::numeric_limits<size_t>::max();
    size_t m_budget;
};

}  // namespace qrtplay
