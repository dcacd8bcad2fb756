#pragma once

#include <functional>
#include <string>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// One message on its way to the log.
class QRT_LOGGER_EXPORT LogMsg final {
public:
    /// See the operations of the same names.
    LogMsg(std::string channel, std::string file, int line, std::string text);

    /// The subsystem that speaks, e.g. "QRT_PLAYER"; empty for messages of no channel.
    [[nodiscard]] std::string const& channel() const noexcept { return m_channel; }
    /// The source file that posted it.
    [[nodiscard]] std::string const& file() const noexcept { return m_file; }
    /// The line of that file, counted from 1.
    [[nodiscard]] int line() const noexcept { return m_line; }
    /// What it says.
    [[nodiscard]] std::string const& text() const noexcept { return m_text; }

    /// Hands a message at debug level to the sink, on the calling thread.
    static void postDebug(LogMsg const& message);

    /// Replaces where messages go, for the whole process; an empty function restores the default, Qt's message logger
    /// under the category of the channel, so that `QT_LOGGING_RULES` and `qInstallMessageHandler` work as usual.
    ///
    /// The sink is called on every posting thread, possibly at once, and with locks of the poster held, those of the
    /// pools among them: it must not call back into the player, drop frames, or wait for a thread that does. A call
    /// that began before `setSink` may still end in the previous sink.
    static void setSink(std::function<void(LogMsg const&)> sink);

private:
    std::string m_channel;
    std::string m_file;
    int m_line;
    std::string m_text;
};

}  // namespace QRT_0_81
