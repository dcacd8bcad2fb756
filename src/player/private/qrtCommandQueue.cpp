#include "qrtCommandQueue.h"

#include <utility>

namespace QRT_0_81 {

void CmdCompletion::signal() {
    // Notified under the lock: once the waiter has the lock again it destroys this object.
    const std::lock_guard lock(m_mutex);
    ++m_count;
    m_signalled.notify_one();
}

void CmdCompletion::wait() {
    std::unique_lock lock(m_mutex);
    m_signalled.wait(lock, [this] { return m_count != 0; });
    --m_count;
}

void CommandQueue::pushBack(std::unique_ptr<Cmd> command) {
    if (!command) return;
    const std::lock_guard lock(m_mutex);
    m_commands.push_back(std::move(command));
    m_posted.notify_one();
}

void CommandQueue::pushFront(std::unique_ptr<Cmd> command) {
    if (!command) return;
    const std::lock_guard lock(m_mutex);
    m_commands.push_front(std::move(command));
    m_posted.notify_one();
}

std::unique_ptr<Cmd> CommandQueue::take() {
    std::unique_lock lock(m_mutex);
    m_posted.wait(lock, [this] { return !m_commands.empty(); });
    std::unique_ptr<Cmd> command = std::move(m_commands.front());
    m_commands.pop_front();
    return command;
}

void CommandQueue::discardAll() {
    std::deque<std::unique_ptr<Cmd>> left;
    const std::lock_guard lock(m_mutex);
    left.swap(m_commands);
}

size_t CommandQueue::size() const {
    const std::lock_guard lock(m_mutex);
    return m_commands.size();
}

}  // namespace QRT_0_81
