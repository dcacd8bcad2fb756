#pragma once

#include <string>

#include "foundation/core/qrtExport.h"
#include "foundation/logger/qrtLogMsg.h"

/// Lets the compiler check the arguments that a function takes as `printf` does.
#if defined(__GNUC__)
#define QRT_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define QRT_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

namespace QRT_0_81 {

/// Where a built message goes, e.g. `LogMsg::postDebug`.
using LogPoster = void (*)(LogMsg const&);

/// Builds and posts one message; the number says how it is addressed. Posting never throws, since destructors post too:
/// a message for which there is no memory, or whose poster throws, is lost.
template <int Level>
class MsgBuilder;

/// Posts without a channel: `MsgBuilder<0>(__FILE__, __LINE__, LogMsg::postDebug)("%d frames", n);`
template <>
class QRT_LOGGER_EXPORT MsgBuilder<0> final {
public:
    /// `file` and `line` are the place that speaks; `file` must live as long as the builder.
    MsgBuilder(char const* file, int line, LogPoster poster) noexcept : m_file(file), m_line(line), m_poster(poster) {}

    /// Posts the text that `format` and what follows it make, by the rules of `printf`.
    void operator()(char const* format, ...) const noexcept QRT_PRINTF_FORMAT(2, 3);

private:
    char const* m_file;
    int m_line;
    LogPoster m_poster;
};

/// Posts to a channel: `MsgBuilder<2>(__FILE__, __LINE__, LogMsg::postDebug)("QRT_PLAYER", "%s", text);`
template <>
class QRT_LOGGER_EXPORT MsgBuilder<2> final {
public:
    /// `file` and `line` are the place that speaks; `file` must live as long as the builder.
    MsgBuilder(char const* file, int line, LogPoster poster) noexcept : m_file(file), m_line(line), m_poster(poster) {}

    /// Posts to `channel` the text that `format` and what follows it make, by the rules of `printf`.
    void operator()(char const* channel, char const* format, ...) const noexcept QRT_PRINTF_FORMAT(3, 4);

private:
    char const* m_file;
    int m_line;
    LogPoster m_poster;
};

}  // namespace QRT_0_81
