#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTime.h"

namespace QRT_0_81 {

/// A timeline. The player knows only its extent; what is in it is between the host and its graph engine.
///
/// Threading: both methods are called from host threads and from the player thread, possibly at once.
class QRT_COMPOSITION_EXPORT Composition : public RefCountedMT {
public:
    ~Composition() override;

    /// The time of the first frame.
    virtual Status getStartTime(Time& start) const = 0;
    /// The length.
    virtual Status getDuration(Time& duration) const = 0;
};

}  // namespace QRT_0_81
