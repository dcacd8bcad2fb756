#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// Holds one reference to a `RefCountedMT` object, or nothing.
///
/// Copying adds a reference, destruction drops one and deletes the object with the last. Converts from derived to base
/// and from mutable to const. The pointer itself is a plain value: two threads may each own a copy, but one `SharedPtr`
/// object must not be written while another thread reads it.
template <class T>
class QRT_VISIBLE_TEMPLATE SharedPtr final {
public:
    /// Holds nothing.
    /// @{
    SharedPtr() noexcept = default;
    SharedPtr(std::nullptr_t) noexcept {}
    /// @}
    /// Adds a reference to `object`, which may be null. An object made with `new` belongs to its references from then
    /// on.
    explicit SharedPtr(T* object) : m_object(object) { acquire(); }
    /// Adds a reference to what the other one holds.
    SharedPtr(SharedPtr const& other) : m_object(other.m_object) { acquire(); }
    /// Takes the reference over; the other one holds nothing then.
    SharedPtr(SharedPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}

    /// The same object as its base, or as one that cannot be changed.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    SharedPtr(SharedPtr<U> const& other) : m_object(other.get()) {
        acquire();
    }

    ~SharedPtr() { drop(m_object); }

    /// Holds what the other one does, and drops the reference held before.
    SharedPtr& operator=(SharedPtr other) noexcept {
        swap(other);
        return *this;
    }

    /// Drops the reference; holds nothing then.
    void reset() { drop(std::exchange(m_object, nullptr)); }
    /// Exchanges what the two hold; no count changes.
    void swap(SharedPtr& other) noexcept { std::swap(m_object, other.m_object); }

    /// The object, or null; its references stay as they are.
    [[nodiscard]] T* get() const noexcept { return m_object; }
    /// The object; there must be one.
    /// @{
    [[nodiscard]] T* operator->() const noexcept { return m_object; }
    [[nodiscard]] T& operator*() const noexcept { return *m_object; }
    /// @}
    /// Whether there is an object.
    [[nodiscard]] explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Whether both hold the same object.
    template <class U>
    [[nodiscard]] bool operator==(SharedPtr<U> const& other) const noexcept {
        return m_object == other.get();
    }
    /// Whether there is no object.
    [[nodiscard]] bool operator==(std::nullptr_t) const noexcept { return m_object == nullptr; }

private:
    void acquire() const {
        if (m_object) m_object->incref();
    }
    static void drop(T* object) {
        if (object && object->decref()) delete object;
    }

    T* m_object = nullptr;
};

/// A reference through which the object cannot be changed.
template <class T>
using ConstSharedPtr = SharedPtr<T const>;

/// The same object as a `T`, or an empty pointer when it is none.
template <class T, class U>
[[nodiscard]] SharedPtr<T> dynamicPtrCast(SharedPtr<U> const& pointer) {
    return SharedPtr<T>(dynamic_cast<T*>(pointer.get()));
}

}  // namespace QRT_0_81
