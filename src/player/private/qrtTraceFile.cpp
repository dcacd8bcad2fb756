#include "qrtTraceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace QRT_0_81 {

namespace {

constexpr std::string_view arrayBegin = "[\n";
constexpr std::string_view separator = ",\n";
constexpr std::string_view arrayEnd = "\n]\n";

/// Why a file that was just opened is none to write a trace to; 0 when it is one, and empty now.
int takeOver(int descriptor) noexcept {
    struct stat facts {};
    if (fstat(descriptor, &facts) != 0) return errno;
    if (!S_ISREG(facts.st_mode)) return EINVAL;
    // A process that this one starts inherits the environment, and must not overwrite the trace. File systems that know
    // no locks do without.
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return EBUSY;
    return ftruncate(descriptor, 0) == 0 ? 0 : errno;
}

}  // namespace

int TraceFile::open(char const* path, std::string_view firstValue) noexcept {
    (void)close();
    const std::lock_guard lock(m_mutex);
    constexpr mode_t readAndWrite = 0666;  // what the user's mask leaves of it
    const int descriptor = ::open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, readAndWrite);
    if (descriptor < 0) return errno;
    if (const int error = takeOver(descriptor); error != 0) {
        (void)::close(descriptor);
        return error;
    }
    m_descriptor = descriptor;
    m_written = 0;
    m_size = 0;
    keep(arrayBegin);
    keep(firstValue);
    return writeOut();
}

int TraceFile::append(std::string_view value, int64 now) noexcept {
    const std::lock_guard lock(m_mutex);
    const size_t needed = separator.size() + value.size();
    if (m_descriptor < 0 || value.empty() || needed > bufferSize) return 0;
    if (m_size + needed > bufferSize) {
        if (const int error = writeOut(); error != 0) return error;
    }
    if (m_size == 0) m_oldest = now;
    keep(separator);
    keep(value);
    return now - m_oldest < longestWait ? 0 : writeOut();
}

int TraceFile::flush() noexcept {
    const std::lock_guard lock(m_mutex);
    return writeOut();
}

int TraceFile::close() noexcept {
    const std::lock_guard lock(m_mutex);
    if (m_descriptor < 0) return 0;
    if (m_size + arrayEnd.size() > bufferSize) {
        if (const int error = writeOut(); error != 0) return error;
    }
    keep(arrayEnd);
    if (const int error = writeOut(); error != 0) return error;
    return ::close(std::exchange(m_descriptor, -1)) == 0 ? 0 : errno;
}

void TraceFile::afterForkInChild() noexcept {
    if (m_descriptor >= 0) (void)::close(std::exchange(m_descriptor, -1));
    m_size = 0;
    m_mutex.unlock();
}

void TraceFile::keep(std::string_view text) noexcept {
    std::copy(text.begin(), text.end(), m_buffer.begin() + m_size);
    m_size += text.size();
}

int TraceFile::writeOut() noexcept {
    size_t done = 0;
    while (m_descriptor >= 0 && done < m_size) {
        const ssize_t count = ::write(m_descriptor, m_buffer.data() + done, m_size - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return giveUp(count < 0 ? errno : EIO);
        done += static_cast<size_t>(count);
    }
    m_written += static_cast<int64>(m_size);
    m_size = 0;
    return 0;
}

int TraceFile::giveUp(int error) noexcept {
    (void)!ftruncate(m_descriptor, m_written);
    (void)::close(std::exchange(m_descriptor, -1));
    m_size = 0;
    return error;
}

}  // namespace QRT_0_81
