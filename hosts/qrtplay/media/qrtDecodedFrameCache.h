#pragma once

#include <list>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "media/qrtAv.h"
#include "base/qrtKit.h"

namespace qrtplay {

/// Decoded pictures by frame number, the least recently used of which give way when a budget of memory is spent.
///
/// Threading: any thread may call any method.
class DecodedFrameCache final {
public:
    static constexpr size_t defaultBudgetInBytes = size_t{256} << 20;

    /// Takes effect at once. One picture is kept even when it is larger than the budget.
    void setBudget(size_t bytes);
    [[nodiscard]] size_t budgetInBytes() const;
    [[nodiscard]] size_t sizeInBytes() const;

    /// The picture, or null. Counts as a use.
    [[nodiscard]] FramePtr get(int64 frame);
    void put(int64 frame, FramePtr picture);
    void clear();
    /// Ascending.
    [[nodiscard]] std::vector<int64> frames() const;

private:
    struct Entry {
        int64 frame;
        FramePtr picture;
        size_t bytes;
    };
    using Entries = std::list<Entry>;

    void takeSurplus(Entries& surplus);  // under the lock

    mutable std::mutex m_mutex;
    // All under m_mutex.
    Entries m_entries;  // most recently used first
    std::unordered_map<int64, Entries::iterator> m_byFrame;
    size_t m_bytes = 0;
    size_t m_budget = defaultBudgetInBytes;
};

}  // namespace qrtplay
