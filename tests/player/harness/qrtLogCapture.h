#pragma once

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/logger/qrtLogMsg.h"

namespace QRT_0_81 {

/// Catches every message of the log for one scope.
class LogCapture final {
public:
    LogCapture() {
        // The sink owns a share: a call that began on another thread may end after this object has.
        LogMsg::setSink([state = m_state](LogMsg const& message) {
            const std::lock_guard lock(state->mutex);
            state->messages.push_back(message);
            state->posted.notify_all();
        });
    }
    ~LogCapture() { LogMsg::setSink({}); }
    LogCapture(LogCapture const&) = delete;
    LogCapture& operator=(LogCapture const&) = delete;

    [[nodiscard]] std::vector<LogMsg> messages() const {
        const std::lock_guard lock(m_state->mutex);
        return m_state->messages;
    }

    /// The messages' texts without the "thread_id=...-" prefix of the player's lines.
    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> texts;
        for (LogMsg const& message : messages())
            texts.push_back(withoutPrefix(message.text()));
        return texts;
    }

    [[nodiscard]] size_t count(std::string const& line) const {
        const auto all = lines();
        return static_cast<size_t>(std::count(all.begin(), all.end(), line));
    }
    [[nodiscard]] bool contains(std::string const& line) const { return count(line) != 0; }

    /// Waits until the line has been posted `times` times.
    void waitFor(std::string const& line, size_t times = 1) {
        std::unique_lock lock(m_state->mutex);
        m_state->posted.wait(lock, [&] {
            const auto isLine = [&](LogMsg const& message) { return withoutPrefix(message.text()) == line; };
            return static_cast<size_t>(std::count_if(m_state->messages.begin(), m_state->messages.end(), isLine)) >=
                   times;
        });
    }

    void clear() {
        const std::lock_guard lock(m_state->mutex);
        m_state->messages.clear();
    }

    [[nodiscard]] static std::string withoutPrefix(std::string const& text) {
        const std::string prefix = "thread_id=";
        if (text.compare(0, prefix.size(), prefix) != 0) return text;
        const size_t dash = text.find('-', prefix.size());
        return dash == std::string::npos ? text : text.substr(dash + 1);
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable posted;
        std::vector<LogMsg> messages;  // under mutex
    };
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace QRT_0_81
