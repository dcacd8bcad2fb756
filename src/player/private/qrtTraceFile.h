#pragma once

#include <array>
#include <mutex>
#include <string_view>
#include <type_traits>

#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// A file with an array of JSON values, which is written in pieces.
///
/// Values are collected in a buffer of fixed size, and written when it is full, when the oldest of them has waited for
/// a quarter of a second, and on `flush`. Only whole values are written, and the array's end when the file is closed: a
/// process that dies leaves an array without an end, which the Trace Event Format allows.
///
/// Threads: every method may be called from any thread; the lock is held while the system writes. Errors are numbers of
/// `errno`, 0 for none; the first one that writing meets closes the file. No method needs memory or throws. There is
/// nothing to destroy, so that threads that outlive the program's end find an object that drops what they write.
class TraceFile final {
public:
    /// Empties the file, or makes it, and writes the array's begin and its first value. Fails for what is no regular
    /// file (EINVAL) and for one that another process has open as its trace (EBUSY).
    [[nodiscard]] int open(char const* path, std::string_view firstValue) noexcept;
    /// Appends a value; nothing for an empty one. Without an open file it is dropped, which is no error. `now`:
    /// nanoseconds of a steady clock.
    [[nodiscard]] int append(std::string_view value, int64 now) noexcept;
    [[nodiscard]] int flush() noexcept;
    /// Writes what is left and the array's end.
    int close() noexcept;

    /// To be called around a `fork`: no thread is in here meanwhile, and the child leaves the file to its parent.
    /// @{
    void beforeFork() noexcept { m_mutex.lock(); }
    void afterForkInParent() noexcept { m_mutex.unlock(); }
    void afterForkInChild() noexcept;
    /// @}

private:
    static constexpr size_t bufferSize = size_t{64} * 1024;
    static constexpr int64 longestWait = 250'000'000;  // nanoseconds

    // All need the lock.
    void keep(std::string_view text) noexcept;
    [[nodiscard]] int writeOut() noexcept;
    /// Cuts off what is not whole, so that what is there can be read.
    int giveUp(int error) noexcept;

    std::mutex m_mutex;
    std::array<char, bufferSize> m_buffer{};  // this and all below: under m_mutex
    size_t m_size = 0;
    int64 m_oldest = 0;   // when the first value in the buffer came
    int64 m_written = 0;  // bytes of the file
    int m_descriptor = -1;
};

static_assert(std::is_trivially_destructible_v<TraceFile>);

}  // namespace QRT_0_81
