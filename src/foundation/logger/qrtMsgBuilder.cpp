#include "foundation/logger/qrtMsgBuilder.h"

#include <cstdarg>
#include <cstdio>

namespace QRT_0_81 {

namespace {

/// The text, or an empty one for a null pointer.
std::string orEmpty(char const* text) {
    return text ? text : "";
}

std::string formatted(char const* format, va_list arguments) {
    if (!format) return {};
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

void post(LogPoster poster, char const* channel, char const* file, int line, char const* format,
          va_list arguments) noexcept {
    try {
        poster(LogMsg(orEmpty(channel), orEmpty(file), line, formatted(format, arguments)));
    } catch (...) {
        // Lost: whoever speaks has something else to do.
    }
}

}  // namespace

void MsgBuilder<0>::operator()(char const* format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    post(m_poster, "", m_file, m_line, format, arguments);
    va_end(arguments);
}

void MsgBuilder<2>::operator()(char const* channel, char const* format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    post(m_poster, channel, m_file, m_line, format, arguments);
    va_end(arguments);
}

}  // namespace QRT_0_81
