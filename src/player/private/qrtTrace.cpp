#include "qrtTrace.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "foundation/core/qrtPlatform.h"
#include "qrtDebugLine.h"
#include "qrtTraceFile.h"

namespace QRT_0_81 {

namespace {

constexpr char traceSource[] = "src/player/private/qrtTrace";
constexpr char traceVariable[] = "QRT_TRACE_PLAYER";

constinit TraceFile traceFile;
constinit std::atomic<int64> numTracedPlayers{0};
constinit std::atomic<int64> numTraces{0};      // in this process; threads name themselves in each
constinit std::atomic<int64> tracedProcess{0};  // the system is not asked for every event

thread_local int64 namedInTrace = 0;

/// Ends the array when the process ends or the library is unloaded.
[[maybe_unused]] const struct AtTheEnd {
    AtTheEnd() = default;
    AtTheEnd(AtTheEnd const&) = delete;
    AtTheEnd& operator=(AtTheEnd const&) = delete;
    ~AtTheEnd() { Trace::stop(); }
} atTheEnd;

int64 threadId() noexcept {
#if defined(__linux__)
    thread_local const int64 id = gettid();  // what top and debuggers show
#else
    static std::atomic<int64> numThreads{0};
    thread_local const int64 id = ++numThreads;
#endif
    return id;
}

char const* processName() noexcept {
#if defined(__GLIBC__)
    return program_invocation_short_name;
#else
    return "host";
#endif
}

}  // namespace

constinit std::atomic<bool> Trace::s_isOn{false};

int64 Trace::newPlayer() noexcept {
    static const bool isAsked = (startIfWanted(), true);
    (void)isAsked;
    return ++numTracedPlayers;
}

void Trace::startIfWanted() noexcept {
    char const* const path = Platform::getenv(traceVariable);
    if (path && *path) (void)start(path);
}

bool Trace::start(char const* path) noexcept {
    static const bool isForkAwaited = (awaitForks(), true);
    (void)isForkAwaited;
    stop();
    tracedProcess = getpid();
    TraceEvent process('M', {"process_name"}, tracedProcess, threadId());
    constexpr size_t longestName = 64;  // a host may call itself anything
    process.add("name", TraceName{std::string_view(processName()).substr(0, longestName)});
    if (const int error = traceFile.open(path, process.text()); error != 0) {
        DebugLine::post(traceSource, __LINE__, "%s: the trace '%s' cannot be written: %s", traceVariable, path,
                        error == EBUSY ? "another process is writing to it" : std::strerror(error));
        return false;
    }
    ++numTraces;
    s_isOn = true;
    return true;
}

void Trace::awaitForks() noexcept {
    // A child has its parent's descriptor and what is not written yet, and would write that once more when it exits.
    (void)pthread_atfork([] { traceFile.beforeFork(); }, [] { traceFile.afterForkInParent(); },
                         [] {
                             s_isOn = false;
                             traceFile.afterForkInChild();
                         });
}

void Trace::stop() noexcept {
    s_isOn = false;
    if (const int error = traceFile.close(); error != 0) giveUp(error);
}

void Trace::flush() noexcept {
    if (const int error = traceFile.flush(); error != 0) giveUp(error);
}

void Trace::nameThread(TraceName const& name) noexcept {
    namedInTrace = numTraces;
    tellThreadName(name);
}

void Trace::count(char const* name, int64 player, std::initializer_list<TraceArgument> values) noexcept {
    TraceEvent event('C', {name, player}, tracedProcess, threadId());
    const int64 time = now();
    event.setTime(time);
    for (TraceArgument const& value : values)
        event.add(value);
    write(event, time);
}

int64 Trace::now() noexcept {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

void Trace::write(TraceEvent& event, int64 time) noexcept {
    if (const int error = traceFile.append(event.text(), time); error != 0) giveUp(error);
}

void Trace::nameThreadOnce() noexcept {
    if (namedInTrace == numTraces) return;
    char name[32] = "thread";
#if defined(__linux__)
    (void)pthread_getname_np(pthread_self(), name, sizeof name);
#endif
    nameThread({name});
}

void Trace::tellThreadName(TraceName const& name) noexcept {
    TraceEvent event('M', {"thread_name"}, tracedProcess, threadId());
    event.add("name", name);
    write(event, now());
}

void Trace::giveUp(int error) noexcept {
    s_isOn = false;
    DebugLine::post(traceSource, __LINE__, "%s: the trace ends here: %s", traceVariable, std::strerror(error));
}

void TraceSpan::begin(char const* name, int64 player) noexcept {
    m_work.emplace();
    m_work->name = name;
    m_work->player = player;
    m_work->beginning = Trace::now();
}

void TraceSpan::add(TraceArgument const& argument) noexcept {
    if (m_work->numNotes < m_work->notes.size()) m_work->notes[m_work->numNotes++] = argument;
}

void TraceSpan::end() noexcept {
    const int64 time = Trace::now();
    Trace::nameThreadOnce();
    TraceEvent event('X', {m_work->name}, tracedProcess, threadId());
    event.setTime(m_work->beginning);
    event.setDuration(time - m_work->beginning);
    if (m_work->player != 0) event.add({"player", m_work->player});
    for (size_t i = 0; i < m_work->numNotes; ++i)
        event.add(m_work->notes[i]);
    Trace::write(event, time);
}

}  // namespace QRT_0_81
