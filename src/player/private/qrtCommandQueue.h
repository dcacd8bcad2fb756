#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <memory_resource>
#include <mutex>
#include <optional>

#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTypes.h"
#include "qrtGuarded.h"

namespace QRT_0_81 {

class PlayerImpl;

/// The codes by which commands are known in traces. The gaps belong to no command.
enum class CmdType : int32 {
    start_producing = 1,
    stop_producing = 2,
    set_composition = 4,
    update_composition = 5,
    set_video_resolution = 6,
    set_video_frame_rate = 7,
    set_audio_format = 9,
    set_ram_outputs = 10,
    set_pref = 11,
    get_pref = 12,
    start_producing_audio = 13,
    produce_video_buffer = 14,
    produce_next_video_buffer = 15,
    update_current_frame_number = 16,
    terminate = 17
};

/// The command as a trace shows it.
[[nodiscard]] char const* nameOf(CmdType type) noexcept;

/// One piece of work for the player thread. Made on any thread; executed and destroyed on the player thread.
class Cmd {
public:
    virtual ~Cmd() = default;
    virtual void execute(PlayerImpl& engine) = 0;
    /// A command that does exactly the same, or null for one that is like no other and when there is no memory for it.
    [[nodiscard]] virtual std::unique_ptr<Cmd> another() const { return nullptr; }

    [[nodiscard]] CmdType type() const noexcept { return m_type; }

protected:
    explicit Cmd(CmdType type) noexcept : m_type(type) {}
    Cmd(Cmd const&) = delete;
    Cmd& operator=(Cmd const&) = delete;

private:
    const CmdType m_type;
};

/// What a caller waits on until its command is gone. Lives on the caller's stack; waited on once.
class CmdCompletion final {
public:
    void signal();
    void wait();

private:
    std::mutex m_mutex;
    std::condition_variable m_signalled;
    unsigned m_count = 0;  // under m_mutex
};

/// A command whose caller waits for its result.
///
/// The completion is signalled by the destructor and not by `execute`: when the caller wakes, the command and every
/// reference that it held are gone. A command that is destroyed without having been executed leaves the result alone.
class CmdSynchronous : public Cmd {
public:
    /// `status` and `completion` belong to the caller and outlive the command.
    CmdSynchronous(CmdType type, Status* status, CmdCompletion* completion) noexcept
        : Cmd(type), m_status(status), m_completion(completion) {}
    ~CmdSynchronous() override { m_completion->signal(); }

    /// What `run` throws, or what a host throws in it, becomes the caller's result.
    void execute(PlayerImpl& engine) final {
        *m_status = guarded("a command of the player thread", [&] { return run(engine); });
    }

protected:
    [[nodiscard]] virtual Status run(PlayerImpl& engine) = 0;

private:
    Status* const m_status;
    CmdCompletion* const m_completion;
};

/// The queue between the hosts' threads and the player thread: first in, first out, but for urgent commands that go to
/// the front, where the last one posted comes out first. It grows without limit.
///
/// Steps of the production loop that wait side by side are kept as one and a number; each still comes out by itself,
/// or, when there is no memory for that, one for all.
/// Updates of the current frame are dropped when they would be overruled before anything sees them. Nothing else merges
/// or cancels.
///
/// Threading: posting from any thread; taking on the player thread. The lock is held only while one command goes in or
/// out, never while one runs or dies. Only posting needs memory: a command for which there is none dies, which wakes
/// its caller, and the exception is the poster's.
class CommandQueue final {
public:
    /// A null command is ignored.
    void pushBack(std::unique_ptr<Cmd> command);
    void pushFront(std::unique_ptr<Cmd> command);
    /// The same for an update of the current frame to `frameNumber`, unless it is overruled; then it is destroyed
    /// unexecuted.
    void pushFrontUpdate(std::unique_ptr<Cmd> command, int64 frameNumber);
    /// Whether nothing would be left of an update to `frameNumber`, because of those at the front that come after it.
    ///
    /// The update posted first is executed last and says where playback is; the one before it which way it turns. A
    /// third one in front of these two changes neither, nor does one to the same frame as the next. Hosts that fetch
    /// faster than the player thread follows find out here, without the lock, and do not fill the queue.
    [[nodiscard]] bool isUpdateOverruled(int64 frameNumber) const noexcept;

    /// The command at the front; waits, without a time-out, until there is one. Null once `end` has been called.
    [[nodiscard]] std::unique_ptr<Cmd> take();

    /// Lets `take` answer null from now on, for a thread that must end although no command can be posted to it.
    void end() noexcept;

    /// Destroys what is left without executing it, which wakes the callers of synchronous commands; takes an `end`
    /// back.
    void discardAll() noexcept;

    /// How many commands wait.
    [[nodiscard]] size_t size() const;
    /// How many objects they take.
    [[nodiscard]] size_t numEntries() const;

private:
    struct Entry {
        std::unique_ptr<Cmd> command;
        size_t numMore = 0;               // further commands that do the same
        std::optional<int64> updateTo{};  // the frame, of an update of the current frame
    };

    void pushFront(Entry& entry);
    /// The command at the front, or null when there is none. Needs the lock.
    [[nodiscard]] std::unique_ptr<Cmd> takeFront() noexcept;
    /// Says what waits at the front to those who do not take the lock. Needs the lock.
    void noteFront() noexcept;

    mutable std::mutex m_mutex;
    std::condition_variable m_posted;
    std::pmr::unsynchronized_pool_resource m_room;  // under m_mutex: what is posted takes the room of what was taken
    std::pmr::deque<Entry> m_entries{&m_room};      // under m_mutex
    size_t m_size = 0;                              // under m_mutex
    bool m_isEnded = false;                         // under m_mutex

    // Written under m_mutex, read without: a frame number that is read after it was taken from the front has been
    // there.
    std::atomic<int> m_numFrontUpdates{0};  // that differ; 2 at most
    std::atomic<int64> m_frontUpdate{0};
};

}  // namespace QRT_0_81
