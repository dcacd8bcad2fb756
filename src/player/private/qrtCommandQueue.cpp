#include "qrtCommandQueue.h"

#include <utility>

namespace QRT_0_81 {

char const* nameOf(CmdType type) noexcept {
    switch (type) {
        case CmdType::start_producing: return "CmdStartProducing";
        case CmdType::stop_producing: return "CmdStopProducing";
        case CmdType::set_composition: return "CmdSetComposition";
        case CmdType::update_composition: return "CmdUpdateComposition";
        case CmdType::set_video_resolution: return "CmdSetVideoResolution";
        case CmdType::set_video_frame_rate: return "CmdSetVideoFrameRate";
        case CmdType::set_audio_format: return "CmdSetAudioFormat";
        case CmdType::set_ram_outputs: return "CmdSetRamOutputs";
        case CmdType::set_pref: return "CmdSetPref";
        case CmdType::get_pref: return "CmdGetPref";
        case CmdType::start_producing_audio: return "CmdStartProducingAudio";
        case CmdType::produce_video_buffer: return "CmdProduceVideoBuffer";
        case CmdType::produce_next_video_buffer: return "CmdProduceNextVideoBuffer";
        case CmdType::update_current_frame_number: return "CmdUpdateCurrentFrameNumber";
        case CmdType::terminate: return "CmdTerminate";
    }
    return "Cmd";
}

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
    Entry entry{std::move(command)};  // before the lock, since what cannot be posted dies, and must not die under it
    const std::lock_guard lock(m_mutex);
    constexpr CmdType step = CmdType::produce_next_video_buffer;
    if (entry.command->type() == step && !m_entries.empty() && m_entries.back().command->type() == step) {
        ++m_entries.back().numMore;
    } else {
        m_entries.push_back(std::move(entry));
    }
    ++m_size;
    m_posted.notify_one();
}

void CommandQueue::pushFront(std::unique_ptr<Cmd> command) {
    if (!command) return;
    Entry entry{std::move(command)};
    const std::lock_guard lock(m_mutex);
    pushFront(entry);
}

void CommandQueue::pushFrontUpdate(std::unique_ptr<Cmd> command, int64 frameNumber) {
    if (!command) return;
    Entry entry{std::move(command), 0, frameNumber};
    const std::lock_guard lock(m_mutex);
    if (isUpdateOverruled(frameNumber)) return;
    pushFront(entry);
}

void CommandQueue::pushFront(Entry& entry) {
    m_entries.push_front(std::move(entry));
    ++m_size;
    noteFront();
    m_posted.notify_one();
}

void CommandQueue::noteFront() noexcept {
    const auto update = [this](size_t i) { return i < m_entries.size() ? m_entries[i].updateTo : std::nullopt; };
    const auto first = update(0);
    const auto second = first ? update(1) : std::nullopt;
    if (first) m_frontUpdate = *first;
    m_numFrontUpdates = !first ? 0 : second && *second != *first ? 2 : 1;
}

bool CommandQueue::isUpdateOverruled(int64 frameNumber) const noexcept {
    const int numFrontUpdates = m_numFrontUpdates;
    return numFrontUpdates == 2 || (numFrontUpdates == 1 && m_frontUpdate == frameNumber);
}

std::unique_ptr<Cmd> CommandQueue::take() {
    std::unique_lock lock(m_mutex);
    m_posted.wait(lock, [this] { return !m_entries.empty() || m_isEnded; });
    if (m_isEnded) return nullptr;
    Entry& front = m_entries.front();
    if (front.numMore > 0) {
        if (auto another = front.command->another()) {
            --front.numMore;
            --m_size;
            return another;
        }
    }
    return takeFront();
}

std::unique_ptr<Cmd> CommandQueue::takeFront() noexcept {
    if (m_entries.empty()) return nullptr;
    Entry& front = m_entries.front();
    std::unique_ptr<Cmd> command = std::move(front.command);
    m_size -= front.numMore + 1;
    m_entries.pop_front();
    noteFront();
    return command;
}

void CommandQueue::end() noexcept {
    const std::lock_guard lock(m_mutex);
    m_isEnded = true;
    m_posted.notify_one();
}

void CommandQueue::discardAll() noexcept {
    for (std::unique_ptr<Cmd> left;; left.reset()) {
        const std::lock_guard lock(m_mutex);
        m_isEnded = false;
        left = takeFront();
        if (!left) return;
    }
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
