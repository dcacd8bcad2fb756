#pragma once

#include <cstddef>
#include <list>
#include <utility>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// A sequence that grows at its end. A thin value type over `std::list`: iterators stay valid while it grows.
template <class T>
class QRT_VISIBLE_TEMPLATE List final {
public:
    /// Walks over the items; they can be changed through it.
    using Iterator = typename std::list<T>::iterator;
    /// The same for items that cannot be changed.
    using ConstIterator = typename std::list<T>::const_iterator;

    /// Adds an item at the end.
    void append(T value) { m_items.push_back(std::move(value)); }
    /// Takes the items of `others`, which is empty afterwards. Needs no memory.
    void splice(List&& others) noexcept { m_items.splice(m_items.end(), others.m_items); }
    /// Drops all items.
    void clear() noexcept { m_items.clear(); }

    /// Whether there is no item.
    [[nodiscard]] bool empty() const noexcept { return m_items.empty(); }
    /// The number of items.
    [[nodiscard]] size_t size() const noexcept { return m_items.size(); }

    /// The ends of the sequence, for loops and algorithms.
    /// @{
    [[nodiscard]] Iterator begin() noexcept { return m_items.begin(); }
    [[nodiscard]] Iterator end() noexcept { return m_items.end(); }
    [[nodiscard]] ConstIterator begin() const noexcept { return m_items.begin(); }
    [[nodiscard]] ConstIterator end() const noexcept { return m_items.end(); }
    /// @}

private:
    std::list<T> m_items;
};

}  // namespace QRT_0_81
