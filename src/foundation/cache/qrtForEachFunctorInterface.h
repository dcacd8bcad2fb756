#pragma once

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// A visitor of a cache's entries.
template <class Data>
class QRT_VISIBLE_TEMPLATE ForEachFunctorInterface {
public:
    virtual ~ForEachFunctorInterface() = default;

    /// Returns whether the walk goes on. Called under the cache's lock: it must not use that cache.
    virtual bool visit(Data const& data) = 0;
};

}  // namespace QRT_0_81
