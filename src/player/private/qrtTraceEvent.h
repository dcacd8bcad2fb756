#pragma once

#include <array>
#include <string_view>

#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// What is told of an event beside its name: a number, or a text that lives as long as the process.
struct TraceArgument {
    TraceArgument() noexcept = default;
    TraceArgument(char const* argumentKey, int64 value) noexcept : key(argumentKey), number(value) {}
    TraceArgument(char const* argumentKey, char const* value) noexcept : key(argumentKey), text(value) {}

    char const* key = nullptr;
    char const* text = nullptr;  // null: it is the number
    int64 number = 0;
};

/// A name, with a number behind it unless that is 0: one of several threads or counters of a kind.
struct TraceName {
    std::string_view text;
    int64 number = 0;
};

/// The text of one event of the Trace Event Format, a JSON object, built in a buffer of its own: needs no memory.
///
/// Times are nanoseconds of the steady clock; the text has them in microseconds, as the format wants it. What is no
/// printable ASCII in a name, or has a meaning in JSON, is replaced by a question mark.
class TraceEvent final {
public:
    /// `phase`: 'X' for a span, 'C' for a counter, 'M' for the name of something.
    TraceEvent(char phase, TraceName const& name, int64 processId, int64 threadId) noexcept;
    TraceEvent(TraceEvent const&) = delete;
    TraceEvent& operator=(TraceEvent const&) = delete;

    /// When it began, or happened.
    void setTime(int64 nanoseconds) noexcept { addTime("ts", nanoseconds); }
    void setDuration(int64 nanoseconds) noexcept { addTime("dur", nanoseconds); }
    /// After all times.
    void add(TraceArgument const& argument) noexcept;
    void add(char const* key, TraceName const& name) noexcept;

    /// The event; to be asked for once, when all is in it. Empty when it would have been too long.
    [[nodiscard]] std::string_view text() noexcept;

private:
    void addTime(std::string_view key, int64 nanoseconds) noexcept;
    void addMember(std::string_view key) noexcept;
    void addArgument(char const* key) noexcept;
    void addName(TraceName const& name) noexcept;
    void append(char character) noexcept;
    void append(std::string_view text) noexcept;
    void append(int64 number) noexcept;

    std::array<char, 640> m_text;  // only what is used is ever written
    size_t m_size = 0;
    bool m_isTooLong = false;
    bool m_hasArguments = false;
};

}  // namespace QRT_0_81
