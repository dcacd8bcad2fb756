#include "render/qrtInterrupt.h"

#include <atomic>
#include <csignal>

namespace qrtplay {

namespace {

std::atomic<bool> requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

using Handler = void (*)(int);
Handler previousInterrupt = SIG_DFL;
Handler previousTerminate = SIG_DFL;

extern "C" void qrtplayNoteSignal(int signal) {
    requested = true;
    std::signal(signal, SIG_DFL);
}

}  // namespace

Interrupt::Interrupt() {
    requested = false;
    previousInterrupt = std::signal(SIGINT, qrtplayNoteSignal);
    previousTerminate = std::signal(SIGTERM, qrtplayNoteSignal);
    // A shell that starts a job in the background shields it from Ctrl-C; that stays so.
    if (previousInterrupt == SIG_IGN) std::signal(SIGINT, SIG_IGN);
}

Interrupt::~Interrupt() {
    std::signal(SIGINT, previousInterrupt);
    std::signal(SIGTERM, previousTerminate);
}

bool Interrupt::isRequested() {
    return requested;
}

}  // namespace qrtplay
