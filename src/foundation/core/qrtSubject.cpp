#include "foundation/core/qrtSubject.h"

#include <exception>
#include <new>

#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtRegistration.h"

namespace QRT_0_81 {

Subject::Subject() : m_registrations(std::make_shared<SubjectRegistrations>()) {}

Subject::~Subject() {
    const auto list = m_registrations->snapshot();  // named, so that it lives as long as the loop
    for (auto const& registration : *list)
        registration->end();
}

void Subject::addObserver(Observer* observer) {
    if (!observer) return;
    const auto registration = std::make_shared<Registration>(observer, m_registrations, observer->m_registrations);
    // The observer's side first: a notification that finds the record on this side must find it whole.
    observer->m_registrations->add(registration);
    try {
        if (!m_registrations->add(registration, observer)) observer->m_registrations->remove(registration.get());
    } catch (std::bad_alloc const&) {
        observer->m_registrations->remove(registration.get());
        throw;
    }
    // It may have been closed from the observer's side before it got here; nobody else would take it out then.
    registration->forgetIfOver();
}

void Subject::removeObserver(Observer* observer) {
    if (!observer) return;
    // Beside the open record there may be closed ones, whose last call is still to be waited for.
    const auto list = m_registrations->snapshot();
    for (auto const& registration : *list) {
        if (registration->isFor(observer)) registration->end();
    }
}

void Subject::notify(NotificationHint const& hint) {
    // The list is this call's own: an observer may add, remove or destroy anything, this subject included.
    const auto list = m_registrations->snapshot();
    std::exception_ptr thrown;
    for (auto const& registration : *list) {
        try {
            registration->call(this, hint);
        } catch (...) {
            if (!thrown) thrown = std::current_exception();
        }
    }
    if (thrown) std::rethrow_exception(thrown);
}

}  // namespace QRT_0_81
