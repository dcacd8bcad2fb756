#pragma once

#include <memory>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

class NotificationHint;
class Observer;
class SubjectRegistrations;

/// Something that others can watch.
///
/// Threading: every method may be called from any thread, from inside an update too. No lock is held while an observer
/// is called, so observers may do as they like, the removal and destruction of any observer or subject included.
/// Lifetime: the observers are not owned; either side unregisters from the other when it dies.
class QRT_CORE_EXPORT Subject {
public:
    Subject();
    virtual ~Subject();

    /// Registers `observer`; a null or an already registered one changes nothing. Throws `std::bad_alloc`, with nothing
    /// changed, when there is no memory for it.
    void addObserver(Observer* observer);

    /// Unregisters `observer`; a null or unknown one changes nothing.
    ///
    /// When it returns, no call from this subject into that observer is under way or will come. The one exception is a
    /// removal from inside that observer's own update, which does not wait for itself (nor for that observer's updates
    /// on other threads, which might be waiting for this one).
    void removeObserver(Observer* observer);

    /// Calls every observer registered at this moment, in the order of registration, on the calling thread. What an
    /// observer throws keeps nothing from the others; the first that was thrown is thrown at the end.
    void notify(NotificationHint const& hint);

protected:
    Subject(Subject const&) = delete;
    Subject& operator=(Subject const&) = delete;

private:
    friend class Observer;

    const std::shared_ptr<SubjectRegistrations> m_registrations;
};

}  // namespace QRT_0_81
