#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"

namespace QRT_0_81 {

/// Opaque to the player: what a graph engine and its host agree on to resolve tokens in names.
class QRT_CORE_EXPORT TokenResolver : public RefCountedMT {
public:
    ~TokenResolver() override;
};

}  // namespace QRT_0_81
