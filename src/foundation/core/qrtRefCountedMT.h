#pragma once

#include <atomic>

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// The intrusive reference count of every object that is held through `SharedPtr`.
///
/// Threading: the count is atomic, so references may be taken and dropped on any thread; the object is destroyed on the
/// thread that drops the last one. What a derived class does beyond that is its own business.
/// A new object and a copy both start with no reference.
class QRT_CORE_EXPORT RefCountedMT {
public:
    virtual ~RefCountedMT();

    /// Adds one reference.
    virtual void incref() const;
    /// Drops one reference; true when none is left, and then the caller deletes the object.
    [[nodiscard]] virtual bool decref() const;
    /// How many references there are at this moment: for tests and traces, since other threads change it.
    [[nodiscard]] virtual uint32 refcount() const;

protected:
    /// Without references.
    RefCountedMT() noexcept = default;
    /// A copy starts without references, whatever the original has.
    RefCountedMT(RefCountedMT const&) noexcept {}
    /// Changes no count: both objects keep their references.
    RefCountedMT& operator=(RefCountedMT const&) noexcept { return *this; }

private:
    mutable std::atomic<uint32> m_count{0};
};

}  // namespace QRT_0_81
