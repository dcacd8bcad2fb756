#pragma once

#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtString.h"

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// Tells a cache which entries it may evict.
template <class Data>
class QRT_VISIBLE_TEMPLATE EvictionAdvisorInterfaceBase : public RefCountedMT {
public:
    /// Whether the entry may go. Called under the cache's lock, on the evicting thread: it must not use that cache.
    [[nodiscard]] virtual bool canEvict(String const& key, Data const& data) = 0;
};

}  // namespace QRT_0_81
