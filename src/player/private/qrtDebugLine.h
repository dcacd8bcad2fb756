#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/logger/qrtMsgBuilder.h"

namespace QRT_0_81 {

/// The player's lines on the log channel "QRT_PLAYER".
///
/// A line reads "thread_id=", the posting thread's id in a field 14 characters wide, "-", then the message; messages
/// are cut to 1023 characters and to their first line.
struct DebugLine {
    static constexpr char channel[] = "QRT_PLAYER";

    /// Whether debug lines are switched on: the environment variable `QRT_DEBUG_PLAYER` is set, even to nothing.
    [[nodiscard]] static bool isOn();

    /// Posts a line whether or not debug lines are on. `file`, `line`: the place that speaks. Never throws: a line that
    /// cannot be posted is lost.
    static void post(char const* file, int line, char const* format, ...) noexcept QRT_PRINTF_FORMAT(3, 4);
};

/// Posts a debug line. Every place decides once, on its first use, whether the lines are on; nothing is formatted when
/// not.
#define QRT_DEBUG_LINE(file, ...)                                                \
    do {                                                                         \
        static const bool isDebugOn = ::QRT_0_81::DebugLine::isOn();             \
        if (isDebugOn) ::QRT_0_81::DebugLine::post(file, __LINE__, __VA_ARGS__); \
    } while (false)

}  // namespace QRT_0_81
