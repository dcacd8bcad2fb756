#pragma once

// Private to this library: the records behind `Subject` and `Observer`.
//
// Each end of a registration keeps its records in a shared list of its own, so that either end can find and close them
// when the other has died. Locks: one per list, one per record; none is ever taken while another is held, and none is
// held while an observer is called.

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace QRT_0_81 {

class NotificationHint;
class Observer;
class ObserverRegistrations;
class Subject;
class SubjectRegistrations;

/// One observer watching one subject. Outlives both ends as long as a notification is under way.
class Registration final {
public:
    Registration(Observer* observer, std::weak_ptr<SubjectRegistrations> subjectSide,
                 std::weak_ptr<ObserverRegistrations> observerSide);

    [[nodiscard]] bool isFor(Observer const* observer) const noexcept { return m_observer == observer; }

    /// Calls the observer unless the registration is closed.
    void call(Subject* subject, NotificationHint const& hint);

    /// Takes the record out of both lists and closes it; waits until no other thread is inside `call`, unless this
    /// thread is.
    void end();

private:
    void callEnds();
    void close();

    Observer* const m_observer;
    const std::weak_ptr<SubjectRegistrations> m_subjectSide;
    const std::weak_ptr<ObserverRegistrations> m_observerSide;

    std::mutex m_mutex;
    std::condition_variable m_callEnded;
    bool m_open = true;                      // under m_mutex
    std::vector<std::thread::id> m_callers;  // under m_mutex; one entry per call under way
};

using RegistrationPtr = std::shared_ptr<Registration>;
using RegistrationList = std::vector<RegistrationPtr>;

/// The registrations of one subject. Copied on write, so that notifying allocates nothing and needs no lock while it calls.
class SubjectRegistrations final {
public:
    /// Adds the record unless there is one for the same observer; says whether it did.
    bool add(RegistrationPtr const& registration, Observer const* observer);
    void remove(Registration const* registration);
    [[nodiscard]] RegistrationPtr find(Observer const* observer) const;
    [[nodiscard]] std::shared_ptr<const RegistrationList> snapshot() const;

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const RegistrationList> m_list = std::make_shared<const RegistrationList>();
};

/// The registrations of one observer.
class ObserverRegistrations final {
public:
    void add(RegistrationPtr const& registration);
    void remove(Registration const* registration);
    [[nodiscard]] RegistrationList takeAll();

private:
    std::mutex m_mutex;
    RegistrationList m_list;
};

}  // namespace QRT_0_81
