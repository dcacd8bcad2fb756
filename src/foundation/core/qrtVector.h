#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// A growing array. A thin value type over `std::vector`; indexing and `back` of an empty vector are undefined as
/// there.
template <class T>
class QRT_VISIBLE_TEMPLATE Vector final {
public:
    /// Walks over the items; they can be changed through it.
    using Iterator = typename std::vector<T>::iterator;
    /// The same for items that cannot be changed.
    using ConstIterator = typename std::vector<T>::const_iterator;

    /// Adds an item at the end; references and iterators may become invalid.
    void push_back(T value) { m_items.push_back(std::move(value)); }
    /// Drops all items.
    void clear() noexcept { m_items.clear(); }

    /// Whether there is no item.
    [[nodiscard]] bool empty() const noexcept { return m_items.empty(); }
    /// The number of items.
    [[nodiscard]] size_t size() const noexcept { return m_items.size(); }
    /// The last item.
    /// @{
    [[nodiscard]] T& back() { return m_items.back(); }
    [[nodiscard]] T const& back() const { return m_items.back(); }
    /// @}
    /// The item at a position, counted from 0 and not checked.
    /// @{
    [[nodiscard]] T& operator[](size_t index) { return m_items[index]; }
    [[nodiscard]] T const& operator[](size_t index) const { return m_items[index]; }
    /// @}

    /// The ends of the sequence, for loops and algorithms.
    /// @{
    [[nodiscard]] Iterator begin() noexcept { return m_items.begin(); }
    [[nodiscard]] Iterator end() noexcept { return m_items.end(); }
    [[nodiscard]] ConstIterator begin() const noexcept { return m_items.begin(); }
    [[nodiscard]] ConstIterator end() const noexcept { return m_items.end(); }
    /// @}

private:
    std::vector<T> m_items;
};

}  // namespace QRT_0_81
