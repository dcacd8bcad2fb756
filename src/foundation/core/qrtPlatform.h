#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtString.h"

namespace QRT_0_81 {

/// The few calls that differ between operating systems.
struct QRT_CORE_EXPORT Platform {
    /// The value of an environment variable, or null when it is not set. Valid until the environment changes.
    [[nodiscard]] static char const* getenv(char const* name);
    /// Names the calling thread for debuggers; 0 on success. Systems that limit the length get the first bytes.
    static int setThreadName(String const& name);
};

}  // namespace QRT_0_81
