#include "viewer/playing/qrtAlsaMessages.h"

#if defined(__linux__)
#include <dlfcn.h>
#endif

namespace qrtplay {

#if defined(__linux__)

namespace {

// As in alsa/error.h. It is Qt's plug-in that needs ALSA, not this program, which therefore is not linked with it.
using ErrorHandler = void (*)(char const* file, int line, char const* function, int error, char const* format, ...);
using SetErrorHandler = int (*)(ErrorHandler);

void ignore(char const* /*file*/, int /*line*/, char const* /*function*/, int /*error*/, char const* /*format*/, ...) {}

bool setHandler() {
    void* const alsa = dlopen("libasound.so.2", RTLD_LAZY);  // the plug-in's own, and kept like it
    void* const found = alsa ? dlsym(alsa, "snd_lib_error_set_handler") : nullptr;
    return found && reinterpret_cast<SetErrorHandler>(found)(ignore) == 0;
}

}  // namespace

void silenceAlsa() {
    static const bool isSilent = setHandler();
    (void)isSilent;
}

#else

void silenceAlsa() {}

#endif

}  // namespace qrtplay
