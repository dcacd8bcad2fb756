#include "faults/qrtOpenGLFaults.h"

#include <dlfcn.h>

#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <QThread>
#include <atomic>
#include <cstring>

namespace QRT_0_81 {

namespace {

using Operation = OpenGLFault::Operation;

constexpr int disarmed = -1;

struct Switch {
    std::atomic<int> callsToGo{disarmed};
    std::atomic<int> numFailed{0};
};

Switch& switchOf(Operation operation) {
    static Switch all[static_cast<size_t>(Operation::count)];
    return all[static_cast<size_t>(operation)];
}

bool isFailing(Operation operation) {
    Switch& chosen = switchOf(operation);
    if (chosen.callsToGo == disarmed) return false;
    if (chosen.callsToGo > 0) {
        --chosen.callsToGo;
        return false;
    }
    ++chosen.numFailed;
    return true;
}

/// Qt's own definition, which comes behind this program's.
template <class Function>
Function* next(char const* symbol) {
    void* const address = dlsym(RTLD_NEXT, symbol);
    Function* function = nullptr;
    std::memcpy(&function, &address, sizeof function);
    return function;
}

}  // namespace

OpenGLFault::OpenGLFault(Operation operation, int skip) : m_operation(operation) {
    switchOf(operation).numFailed = 0;
    switchOf(operation).callsToGo = skip;
}

OpenGLFault::~OpenGLFault() {
    switchOf(m_operation).callsToGo = disarmed;
}

int OpenGLFault::count() const {
    return switchOf(m_operation).numFailed;
}

}  // namespace QRT_0_81

using QRT_0_81::isFailing;
using QRT_0_81::Operation;

bool QOpenGLContext::create() {
    static auto* const real = QRT_0_81::next<bool(QOpenGLContext*)>("_ZN14QOpenGLContext6createEv");
    return !isFailing(Operation::createContext) && real(this);
}

#if QT_VERSION_MAJOR > 5  // creates those that it adopts by itself
QOpenGLContext* QNativeInterface::QGLXContext::fromNative(GLXContext context, void* visual, QOpenGLContext* shared) {
    static auto* const real = QRT_0_81::next<QOpenGLContext*(GLXContext, void*, QOpenGLContext*)>(
        "_ZN16QNativeInterface11QGLXContext10fromNativeEP15__GLXcontextRecPvP14QOpenGLContext");
    return isFailing(Operation::createContext) ? nullptr : real(context, visual, shared);
}
#endif

bool QOpenGLContext::makeCurrent(QSurface* surface) {
    static auto* const real =
        QRT_0_81::next<bool(QOpenGLContext*, QSurface*)>("_ZN14QOpenGLContext11makeCurrentEP8QSurface");
    return !isFailing(Operation::makeCurrent) && real(this, surface);
}

bool QOpenGLBuffer::create() {
    static auto* const real = QRT_0_81::next<bool(QOpenGLBuffer*)>("_ZN13QOpenGLBuffer6createEv");
    return !isFailing(Operation::createBuffer) && real(this);
}

bool QOpenGLBuffer::bind() {
    static auto* const real = QRT_0_81::next<bool(QOpenGLBuffer*)>("_ZN13QOpenGLBuffer4bindEv");
    return !isFailing(Operation::bindBuffer) && real(this);
}

void* QOpenGLBuffer::map(QOpenGLBuffer::Access access) {
    static auto* const real =
        QRT_0_81::next<void*(QOpenGLBuffer*, QOpenGLBuffer::Access)>("_ZN13QOpenGLBuffer3mapENS_6AccessE");
    return isFailing(Operation::mapBuffer) ? nullptr : real(this, access);
}

void QThread::start(QThread::Priority priority) {
    static auto* const real = QRT_0_81::next<void(QThread*, QThread::Priority)>("_ZN7QThread5startENS_8PriorityE");
    if (!isFailing(Operation::startThread)) real(this, priority);  // a thread that cannot be made is not running
}
