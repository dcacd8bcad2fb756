#include "qrtTraceEvent.h"

#include <charconv>
#include <cstring>

namespace QRT_0_81 {

// cppcheck-suppress uninitMemberVar
TraceEvent::TraceEvent(char phase, TraceName const& name, int64 processId, int64 threadId) noexcept {
    append("{\"name\":");
    addName(name);
    append(",\"cat\":\"player\",\"ph\":\"");
    append(phase);
    append('"');
    addMember("pid");
    append(processId);
    addMember("tid");
    append(threadId);
}

void TraceEvent::add(TraceArgument const& argument) noexcept {
    if (argument.text) {
        add(argument.key, TraceName{argument.text});
    } else {
        addArgument(argument.key);
        append(argument.number);
    }
}

void TraceEvent::add(char const* key, TraceName const& name) noexcept {
    addArgument(key);
    addName(name);
}

std::string_view TraceEvent::text() noexcept {
    append(m_hasArguments ? "}}" : "}");
    return m_isTooLong ? std::string_view() : std::string_view(m_text.data(), m_size);
}

void TraceEvent::addTime(std::string_view key, int64 nanoseconds) noexcept {
    constexpr int64 perMicrosecond = 1000;
    const int64 fraction = nanoseconds % perMicrosecond;
    addMember(key);
    append(nanoseconds / perMicrosecond);
    append('.');
    if (fraction < 100) append('0');
    if (fraction < 10) append('0');
    append(fraction);
}

void TraceEvent::addMember(std::string_view key) noexcept {
    append(",\"");
    append(key);
    append("\":");
}

void TraceEvent::addArgument(char const* key) noexcept {
    append(m_hasArguments ? "," : ",\"args\":{");
    m_hasArguments = true;
    append('"');
    append(key);
    append("\":");
}

void TraceEvent::addName(TraceName const& name) noexcept {
    append('"');
    for (const char character : name.text) {
        const bool isPlain = character >= ' ' && character <= '~' && character != '"' && character != '\\';
        append(isPlain ? character : '?');
    }
    if (name.number != 0) {
        append(' ');
        append(name.number);
    }
    append('"');
}

void TraceEvent::append(char character) noexcept {
    append(std::string_view(&character, 1));
}

void TraceEvent::append(std::string_view text) noexcept {
    if (text.size() > m_text.size() - m_size) {
        m_isTooLong = true;
        return;
    }
    std::memcpy(m_text.data() + m_size, text.data(), text.size());
    m_size += text.size();
}

void TraceEvent::append(int64 number) noexcept {
    char digits[20];  // the longest has 19 and a sign
    char const* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    append(std::string_view(digits, static_cast<size_t>(end - digits)));
}

}  // namespace QRT_0_81
