#include "foundation/core/qrtRegistration.h"

#include <algorithm>
#include <utility>

#include "foundation/core/qrtObserver.h"

namespace QRT_0_81 {

Registration::Registration(Observer* observer, std::weak_ptr<SubjectRegistrations> subjectSide,
                           std::weak_ptr<ObserverRegistrations> observerSide)
    : m_observer(observer), m_subjectSide(std::move(subjectSide)), m_observerSide(std::move(observerSide)) {}

void Registration::call(Subject* subject, NotificationHint const& hint) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_open) return;
        m_callers.push_back(std::this_thread::get_id());
    }
    struct CallEnd {  // on every path: an update that throws must not keep a removal waiting for ever
        Registration& registration;
        ~CallEnd() { registration.callEnds(); }
    } callEnd{*this};
    m_observer->update(subject, hint);
}

void Registration::callEnds() {
    {
        const std::lock_guard lock(m_mutex);
        m_callers.erase(std::find(m_callers.begin(), m_callers.end(), std::this_thread::get_id()));
    }
    m_callEnded.notify_all();
}

void Registration::end() {
    if (const auto side = m_subjectSide.lock()) side->remove(this);
    if (const auto side = m_observerSide.lock()) side->remove(this);
    close();
}

void Registration::close() {
    std::unique_lock lock(m_mutex);
    m_open = false;
    const auto self = std::this_thread::get_id();
    // Waiting for a call further up this very stack would wait for ever.
    if (std::find(m_callers.begin(), m_callers.end(), self) != m_callers.end()) return;
    m_callEnded.wait(lock, [this] { return m_callers.empty(); });
}

bool SubjectRegistrations::add(RegistrationPtr const& registration, Observer const* observer) {
    const std::lock_guard lock(m_mutex);
    for (auto const& known : *m_list) {
        if (known->isFor(observer)) return false;
    }
    auto copy = std::make_shared<RegistrationList>(*m_list);
    copy->push_back(registration);
    m_list = std::move(copy);
    return true;
}

void SubjectRegistrations::remove(Registration const* registration) {
    std::shared_ptr<const RegistrationList> dropped;  // let go of after the lock
    const std::lock_guard lock(m_mutex);
    auto copy = std::make_shared<RegistrationList>();
    for (auto const& known : *m_list) {
        if (known.get() != registration) copy->push_back(known);
    }
    dropped = std::exchange(m_list, std::move(copy));
}

RegistrationPtr SubjectRegistrations::find(Observer const* observer) const {
    const auto list = snapshot();
    const auto found =
        std::find_if(list->begin(), list->end(), [&](RegistrationPtr const& known) { return known->isFor(observer); });
    return found == list->end() ? nullptr : *found;
}

std::shared_ptr<const RegistrationList> SubjectRegistrations::snapshot() const {
    const std::lock_guard lock(m_mutex);
    return m_list;
}

void ObserverRegistrations::add(RegistrationPtr const& registration) {
    const std::lock_guard lock(m_mutex);
    m_list.push_back(registration);
}

void ObserverRegistrations::remove(Registration const* registration) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_list, [&](RegistrationPtr const& known) { return known.get() == registration; });
}

RegistrationList ObserverRegistrations::takeAll() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_list, {});
}

}  // namespace QRT_0_81
