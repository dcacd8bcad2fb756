#pragma once

#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// Lends a fixed number of equal resources.
class ResourcePoolInterface : public RefCountedMT {
public:
    enum class PoolType : int32 { ram = 0, fbo = 1 };

    /// Sent by a pool each time it lends a resource.
    class LockHint : public NotificationHint {};
    /// Sent by a pool each time a resource is handed back to it, whether or not it belongs there.
    class ReleaseHint : public NotificationHint {};

    [[nodiscard]] virtual PoolType getType() const = 0;
    [[nodiscard]] virtual uint32 getNumResources() = 0;
};

}  // namespace QRT_0_81
