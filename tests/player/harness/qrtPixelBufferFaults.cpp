#include "harness/qrtPixelBufferFaults.h"

#include <QOpenGLBuffer>
#include <atomic>

namespace QRT_0_81 {

namespace {

std::atomic<bool> isBindFailing{false};
std::atomic<bool> isUnmapFailing{false};

std::atomic<bool>& flagOf(PixelBufferFault::Operation operation) {
    return operation == PixelBufferFault::Operation::bind ? isBindFailing : isUnmapFailing;
}

}  // namespace

PixelBufferFault::PixelBufferFault(Operation operation) {
    flagOf(operation) = true;
}

PixelBufferFault::~PixelBufferFault() {
    isBindFailing = false;
    isUnmapFailing = false;
}

}  // namespace QRT_0_81

// The linker's own spelling of the wrapped operations and of the ones behind them.
extern "C" {
bool __real__ZN13QOpenGLBuffer4bindEv(QOpenGLBuffer* buffer);
bool __real__ZN13QOpenGLBuffer5unmapEv(QOpenGLBuffer* buffer);

bool __wrap__ZN13QOpenGLBuffer4bindEv(QOpenGLBuffer* buffer) {
    return !QRT_0_81::isBindFailing && __real__ZN13QOpenGLBuffer4bindEv(buffer);
}

bool __wrap__ZN13QOpenGLBuffer5unmapEv(QOpenGLBuffer* buffer) {
    // The buffer is unmapped all the same: it is the contents that an unmapping can lose.
    const bool isUnmapped = __real__ZN13QOpenGLBuffer5unmapEv(buffer);
    return isUnmapped && !QRT_0_81::isUnmapFailing;
}
}
