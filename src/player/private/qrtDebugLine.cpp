#include "qrtDebugLine.h"

#include <cstdarg>
#include <cstdio>
#include <iomanip>
#include <new>
#include <sstream>
#include <thread>

#include "foundation/core/qrtPlatform.h"

namespace QRT_0_81 {

bool DebugLine::isOn() {
    return Platform::getenv("QRT_DEBUG_PLAYER") != nullptr;
}

void DebugLine::post(char const* file, int line, char const* format, ...) noexcept {
    constexpr size_t bufferSize = 1024;
    char message[bufferSize];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);

    char firstLine[bufferSize] = "";
    try {
        constexpr int threadIdWidth = 14;
        std::stringstream text;
        text << "thread_id=" << std::setw(threadIdWidth) << std::this_thread::get_id() << "-" << message << std::endl;
        if (text.bad()) return;  // a stream takes note of missing memory and goes on
        text.getline(firstLine, sizeof firstLine);
    } catch (std::bad_alloc const&) {
        return;
    }
    MsgBuilder<2>(file, line, LogMsg::postDebug)(channel, "%s", firstLine);
}

}  // namespace QRT_0_81
