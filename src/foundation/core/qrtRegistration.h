#pragma once

// Private to this library: the records behind `Subject` and `Observer`.
//
// Each end of a registration keeps its records in a shared list of its own, so that either end can find and close them
// when the other has died. Locks: one per list, one per record; none is ever taken while another is held, and none is
// held while an observer is called. Only adding needs memory: registrations end in destructors.

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace QRT_0_81 {

class NotificationHint;
class Observer;
class ObserverRegistrations;
class Subject;
class SubjectRegistrations;

/// One observer watching one subject. Outlives both ends as long as a notification is under way.
///
/// A record stays in both lists until its last call has ended, even when it has long been closed (by a removal from
/// inside the update, say): whoever ends it next must find it there to wait for that call.
class Registration final {
public:
    Registration(Observer* observer, std::weak_ptr<SubjectRegistrations> subjectSide,
                 std::weak_ptr<ObserverRegistrations> observerSide);

    [[nodiscard]] bool isFor(Observer const* observer) const noexcept { return m_observer == observer; }
    /// False once the registration is on its way out: no call will begin.
    [[nodiscard]] bool isOpen() const noexcept { return m_open; }

    /// Calls the observer unless the registration is closed.
    void call(Subject* subject, NotificationHint const& hint);

    /// Closes the record and takes it out of both lists. Waits until no thread is inside `call`, but not when this
    /// thread is inside an update of the same observer: then the last call takes the record out.
    void end();

    /// Takes a record that is closed and has no call under way out of both lists.
    void forgetIfOver();
    /// Whether the record has been taken out of the lists, or would have been had there been memory for it.
    [[nodiscard]] bool isForgotten() const noexcept { return m_forgotten; }

private:
    friend class ObserverCall;

    void callEnds();
    void forget();

    Observer* const m_observer;
    const std::weak_ptr<SubjectRegistrations> m_subjectSide;
    const std::weak_ptr<ObserverRegistrations> m_observerSide;

    std::mutex m_mutex;
    std::condition_variable m_callEnded;
    std::atomic<bool> m_open{true};  // changed under m_mutex
    std::atomic<bool> m_forgotten{false};
    int m_numCalls = 0;  // under m_mutex; calls under way
};

using RegistrationPtr = std::shared_ptr<Registration>;
using RegistrationList = std::vector<RegistrationPtr>;

/// The registrations of one subject. Copied on write, so that notifying allocates nothing and needs no lock while it
/// calls.
class SubjectRegistrations final {
public:
    /// Adds the record unless there is an open one for the same observer; says whether it did.
    bool add(RegistrationPtr const& registration, Observer const* observer);
    /// Takes out every forgotten record. Without memory for the copy they stay, closed as they are, until the next
    /// change.
    void removeForgotten() noexcept;
    [[nodiscard]] std::shared_ptr<const RegistrationList> snapshot() const;

private:
    /// The records that are not forgotten, with room for one more. Needs the lock.
    [[nodiscard]] std::shared_ptr<RegistrationList> copy() const;

    mutable std::mutex m_mutex;
    std::shared_ptr<const RegistrationList> m_list = std::make_shared<const RegistrationList>();
};

/// The registrations of one observer.
class ObserverRegistrations final {
public:
    void add(RegistrationPtr const& registration);
    void remove(Registration const* registration) noexcept;
    [[nodiscard]] size_t size() const;
    /// The record at a position, or null behind the last one.
    [[nodiscard]] RegistrationPtr at(size_t position) const;

private:
    mutable std::mutex m_mutex;
    RegistrationList m_list;
};

}  // namespace QRT_0_81
