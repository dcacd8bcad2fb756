#include "harness/qrtFinishWatch.h"

#include <utility>

namespace QRT_0_81 {

namespace {

std::function<void()>& watcher() {
    static std::function<void()> instance;
    return instance;
}

}  // namespace

FinishWatch::FinishWatch(std::function<void()> atFinish) {
    watcher() = std::move(atFinish);
}

FinishWatch::~FinishWatch() {
    watcher() = {};
}

}  // namespace QRT_0_81

// The linker's own spelling of the wrapped operation and of the one behind it.
extern "C" {
void __real_glFinish();

void __wrap_glFinish() {
    if (QRT_0_81::watcher()) QRT_0_81::watcher()();
    __real_glFinish();
}
}
