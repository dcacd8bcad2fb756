#include "foundation/core/qrtRefCountedMT.h"

namespace QRT_0_81 {

RefCountedMT::~RefCountedMT() = default;

void RefCountedMT::incref() const {
    // A new reference is always made from an existing one, which keeps the object alive: no ordering is needed.
    m_count.fetch_add(1, std::memory_order_relaxed);
}

bool RefCountedMT::decref() const {
    // Whoever drops the last reference must see all that other threads did through theirs.
    return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

uint32 RefCountedMT::refcount() const {
    return m_count.load(std::memory_order_relaxed);
}

}  // namespace QRT_0_81
