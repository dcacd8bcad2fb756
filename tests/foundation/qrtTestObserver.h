#pragma once

#include <functional>
#include <utility>

#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtSubject.h"

namespace QRT_0_81 {

/// An observer that does what the test says.
class TestObserver final : public Observer {
public:
    using Action = std::function<void(Subject*, NotificationHint const&)>;

    explicit TestObserver(Action action) : m_action(std::move(action)) {}
    explicit TestObserver(int& calls) : m_action([&calls](Subject*, NotificationHint const&) { ++calls; }) {}
    ~TestObserver() override { stopObserving(); }

    void update(Subject* subject, NotificationHint const& hint) override {
        const Action action = m_action;  // a copy: the action may destroy this observer
        action(subject, hint);
    }

    using Observer::stopObserving;

private:
    const Action m_action;
};

}  // namespace QRT_0_81
