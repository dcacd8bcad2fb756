#include "foundation/core/qrtPlatform.h"

#include <cstdlib>
#include <string>

#if !defined(_WIN32)
#include <pthread.h>
#endif

namespace QRT_0_81 {

char const* Platform::getenv(char const* name) {
    return name ? std::getenv(name) : nullptr;
}

int Platform::setThreadName(String const& name) {
#if defined(__linux__)
    constexpr size_t maxLength = 15;  // without the terminating zero; longer names are refused by the system
    return pthread_setname_np(pthread_self(), std::string(name.c_str()).substr(0, maxLength).c_str());
#elif defined(__APPLE__)
    return pthread_setname_np(name.c_str());
#else
    (void)name;
    return 0;
#endif
}

}  // namespace QRT_0_81
