#pragma once

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// What a `Subject` tells its observers. The plain base says only that something has changed; the derived type says
/// what.
class QRT_CORE_EXPORT NotificationHint {
public:
    NotificationHint() noexcept = default;
    virtual ~NotificationHint();
};

/// Frames of the sender no longer look as they did.
class QRT_CORE_EXPORT InvalidationHint : public NotificationHint {
public:
    /// `start` and `end` are frame numbers, both inclusive; a start above the end names no frame.
    InvalidationHint(int start, int end) noexcept : m_start(start), m_end(end) {}
    ~InvalidationHint() override;

    /// The first frame that has changed.
    [[nodiscard]] int getStartFrame() const noexcept { return m_start; }
    /// The last frame that has changed.
    [[nodiscard]] int getEndFrame() const noexcept { return m_end; }

private:
    int m_start;
    int m_end;
};

}  // namespace QRT_0_81
