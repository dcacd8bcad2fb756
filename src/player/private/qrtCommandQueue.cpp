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
    constexpr CmdType step = CmdType::produce_next_video_buffer;
    if (command->type() == step && !m_entries.empty() && m_entries.back().command->type() == step) {
        ++m_entries.back().numMore;
    } else {
        m_entries.push_back({std::move(command)});
    }
    ++m_size;
    m_posted.notify_one();
}

void CommandQueue::pushFront(std::unique_ptr<Cmd> command) {
    pushFront(std::move(command), [](Cmd const&, Cmd const*, Cmd const*) { return false; });
}

void CommandQueue::pushFront(std::unique_ptr<Cmd> command, IsOverruled isOverruled) {
    if (!command) return;
    const std::lock_guard lock(m_mutex);
    const auto waiting = [this](size_t i) { return i < m_entries.size() ? m_entries[i].command.get() : nullptr; };
    if (isOverruled(*command, waiting(0), waiting(1))) return;
    m_entries.push_front({std::move(command)});
    ++m_size;
    m_posted.notify_one();
}

std::unique_ptr<Cmd> CommandQueue::take() {
    std::unique_lock lock(m_mutex);
    m_posted.wait(lock, [this] { return !m_entries.empty(); });
    --m_size;
    Entry& front = m_entries.front();
    if (front.numMore > 0) {
        --front.numMore;
        return front.command->another();
    }
    std::unique_ptr<Cmd> command = std::move(front.command);
    m_entries.pop_front();
    return command;
}

void CommandQueue::discardAll() {
    std::deque<Entry> left;
    const std::lock_guard lock(m_mutex);
    left.swap(m_entries);
    m_size = 0;
}

size_t CommandQueue::size() const {
    const std::lock_guard lock(m_mutex);
    return m_size;
}

size_t CommandQueue::numEntries() const {
    const std::lock_guard lock(m_mutex);
    return m_entries.size();
}

}  // namespace QRT_0_81
