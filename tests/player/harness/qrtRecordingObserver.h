#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <typeinfo>
#include <utility>
#include <vector>

#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtSubject.h"

namespace QRT_0_81 {

/// Writes down every notification, and calls back if asked to.
class RecordingObserver final : public Observer {
public:
    struct Update {
        Subject* subject;
        NotificationHint const* hint;  ///< only its address: the hint itself is gone
        bool isPlain;                  ///< a hint of the base class itself
        std::thread::id thread;
    };

    RecordingObserver() = default;
    explicit RecordingObserver(std::function<void(Subject&)> callback) : m_callback(std::move(callback)) {}
    ~RecordingObserver() override { stopObserving(); }

    void update(Subject* subject, NotificationHint const& hint) override {
        {
            const std::lock_guard lock(m_mutex);
            m_updates.push_back({subject, &hint, typeid(hint) == typeid(NotificationHint), std::this_thread::get_id()});
        }
        if (m_callback) m_callback(*subject);
    }

    [[nodiscard]] std::vector<Update> updates() const {
        const std::lock_guard lock(m_mutex);
        return m_updates;
    }
    [[nodiscard]] size_t count() const { return updates().size(); }
    void clear() {
        const std::lock_guard lock(m_mutex);
        m_updates.clear();
    }

private:
    const std::function<void(Subject&)> m_callback;
    mutable std::mutex m_mutex;
    std::vector<Update> m_updates;  // under m_mutex
};

}  // namespace QRT_0_81
