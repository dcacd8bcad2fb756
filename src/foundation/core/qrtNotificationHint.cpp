#include "foundation/core/qrtNotificationHint.h"

namespace QRT_0_81 {

NotificationHint::~NotificationHint() = default;
InvalidationHint::~InvalidationHint() = default;

}  // namespace QRT_0_81
