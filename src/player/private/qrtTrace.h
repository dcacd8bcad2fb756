#pragma once

#include <array>
#include <atomic>
#include <initializer_list>
#include <optional>

#include "qrtTraceEvent.h"

namespace QRT_0_81 {

/// What the engines of this process do and how long it takes, as a file that Perfetto and chrome://tracing open.
///
/// On while the environment variable `QRT_TRACE_PLAYER` names a file when the process makes its first engine; see
/// docs/debugging.md for what is in it. Off, a place that could tell something costs a load and a branch.
///
/// Threads: any. The trace's lock is a leaf: it may be taken under any other. Nothing here throws or needs memory, and
/// a file that cannot be written to costs a message and the rest of the trace, nothing else.
class Trace final {
public:
    Trace() = delete;

    [[nodiscard]] static bool isOn() noexcept { return s_isOn.load(std::memory_order_relaxed); }

    /// The number of a new engine, by which its events are told from those of others. The first one starts the trace
    /// that the environment asks for.
    [[nodiscard]] static int64 newPlayer() noexcept;

    /// Starts what the environment asks for; nothing when it does not.
    static void startIfWanted() noexcept;
    /// False, with a message, when the file cannot be written. Ends a trace that is on.
    static bool start(char const* path) noexcept;
    static void stop() noexcept;
    /// Writes what is still in memory.
    static void flush() noexcept;

    /// Names the calling thread, which otherwise has the name that the system knows.
    static void nameThread(TraceName const& name) noexcept;
    /// Tells what a counter of a player, made of one or more values, stands at.
    static void count(char const* name, int64 player, std::initializer_list<TraceArgument> values) noexcept;

private:
    friend class TraceSpan;

    static void awaitForks() noexcept;
    [[nodiscard]] static int64 now() noexcept;
    static void write(TraceEvent& event, int64 time) noexcept;
    static void nameThreadOnce() noexcept;
    static void tellThreadName(TraceName const& name) noexcept;
    static void giveUp(int error) noexcept;

    static std::atomic<bool> s_isOn;
};

/// A piece of work of the calling thread: from here to the end of the scope.
class TraceSpan final {
public:
    /// `name` lives as long as the process. `player`: 0 when it is not known.
    TraceSpan(char const* name, int64 player) noexcept {
        if (Trace::isOn()) begin(name, player);
    }
    /// The same with its first note.
    template <class Value>
    TraceSpan(char const* name, int64 player, char const* key, Value value) noexcept {
        if (!Trace::isOn()) return;
        begin(name, player);
        add(TraceArgument(key, value));
    }
    ~TraceSpan() {
        if (m_work) end();
    }
    TraceSpan(TraceSpan const&) = delete;
    TraceSpan& operator=(TraceSpan const&) = delete;

    /// What else is worth knowing of it. There is room for four.
    template <class Value>
    void note(char const* key, Value value) noexcept {
        if (m_work) add(TraceArgument(key, value));
    }

private:
    struct Work {
        char const* name;
        int64 player;
        int64 beginning;
        std::array<TraceArgument, 4> notes;
        size_t numNotes;
    };

    void begin(char const* name, int64 player) noexcept;
    void add(TraceArgument const& argument) noexcept;
    void end() noexcept;

    std::optional<Work> m_work;  // while the trace is on
};

}  // namespace QRT_0_81
