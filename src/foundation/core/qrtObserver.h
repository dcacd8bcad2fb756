#pragma once

#include <memory>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

class NotificationHint;
class ObserverRegistrations;
class Subject;

/// Receives the notifications of the subjects that it is registered with.
///
/// Threading: `update` runs on whatever thread notifies, possibly on several at once.
/// Lifetime: a subject and an observer may die in either order and on different threads. Because a base class
/// destructor runs after the derived object is gone, a class whose subjects notify from other threads calls
/// `stopObserving` first thing in its own destructor.
class QRT_CORE_EXPORT Observer {
public:
    virtual ~Observer();

    /// `subject` is the notifier; `hint` says what happened and lives only for the call.
    virtual void update(Subject* subject, NotificationHint const& hint) = 0;

protected:
    Observer();
    Observer(Observer const&) = delete;
    Observer& operator=(Observer const&) = delete;

    /// Unregisters from every subject; when it returns, no call into this observer is under way on another thread.
    void stopObserving();

private:
    friend class Subject;

    const std::shared_ptr<ObserverRegistrations> m_registrations;
};

}  // namespace QRT_0_81
