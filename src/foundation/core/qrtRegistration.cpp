#include "foundation/core/qrtRegistration.h"

#include <new>
#include <utility>

#include "foundation/core/qrtObserver.h"

namespace QRT_0_81 {

/// One call of an observer, on the stack of the thread that makes it; each thread knows the calls that it is inside.
class ObserverCall final {
public:
    explicit ObserverCall(Registration& registration) noexcept : m_registration(registration), m_outer(innermost) {
        innermost = this;
    }
    ~ObserverCall() {  // on every path: an update that throws must not keep a removal waiting for ever
        innermost = m_outer;
        m_registration.callEnds();
    }
    ObserverCall(ObserverCall const&) = delete;
    ObserverCall& operator=(ObserverCall const&) = delete;

    [[nodiscard]] static bool isInsideUpdateOf(std::weak_ptr<ObserverRegistrations> const& observer) noexcept {
        for (ObserverCall const* call = innermost; call; call = call->m_outer) {
            // The records tell observers apart, not their addresses: a dead one's may have been used again.
            auto const& called = call->m_registration.m_observerSide;
            if (!called.owner_before(observer) && !observer.owner_before(called)) return true;
        }
        return false;
    }

private:
    static thread_local ObserverCall const* innermost;

    Registration& m_registration;
    ObserverCall const* const m_outer;
};

thread_local ObserverCall const* ObserverCall::innermost = nullptr;

Registration::Registration(Observer* observer, std::weak_ptr<SubjectRegistrations> subjectSide,
                           std::weak_ptr<ObserverRegistrations> observerSide)
    : m_observer(observer), m_subjectSide(std::move(subjectSide)), m_observerSide(std::move(observerSide)) {}

void Registration::call(Subject* subject, NotificationHint const& hint) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_open) return;
        ++m_numCalls;
    }
    const ObserverCall call(*this);
    m_observer->update(subject, hint);
}

void Registration::callEnds() {
    {
        const std::lock_guard lock(m_mutex);
        --m_numCalls;
    }
    m_callEnded.notify_all();
    forgetIfOver();
}

void Registration::end() {
    {
        std::unique_lock lock(m_mutex);
        m_open = false;
        // Waiting for a call further up this very stack would wait for ever, and so would two updates of one observer
        // that wait for each other.
        if (!ObserverCall::isInsideUpdateOf(m_observerSide)) m_callEnded.wait(lock, [this] { return m_numCalls == 0; });
    }
    forgetIfOver();
}

void Registration::forgetIfOver() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_open || m_numCalls > 0) return;
    }
    forget();
}

void Registration::forget() {
    m_forgotten = true;
    if (const auto side = m_subjectSide.lock()) side->removeForgotten();
    if (const auto side = m_observerSide.lock()) side->remove(this);
}

bool SubjectRegistrations::add(RegistrationPtr const& registration, Observer const* observer) {
    const std::lock_guard lock(m_mutex);
    for (auto const& known : *m_list) {
        if (known->isFor(observer) && known->isOpen()) return false;
    }
    auto longer = copy();
    longer->push_back(registration);
    m_list = std::move(longer);
    return true;
}

void SubjectRegistrations::removeForgotten() noexcept {
    std::shared_ptr<const RegistrationList> dropped;  // let go of after the lock
    const std::lock_guard lock(m_mutex);
    try {
        dropped = std::exchange(m_list, copy());
    } catch (std::bad_alloc const&) {
        // Nobody is called through what stays.
    }
}

std::shared_ptr<RegistrationList> SubjectRegistrations::copy() const {
    auto list = std::make_shared<RegistrationList>();
    list->reserve(m_list->size() + 1);
    for (auto const& known : *m_list) {
        if (!known->isForgotten()) list->push_back(known);
    }
    return list;
}

std::shared_ptr<const RegistrationList> SubjectRegistrations::snapshot() const {
    const std::lock_guard lock(m_mutex);
    return m_list;
}

void ObserverRegistrations::add(RegistrationPtr const& registration) {
    const std::lock_guard lock(m_mutex);
    m_list.push_back(registration);
}

void ObserverRegistrations::remove(Registration const* registration) noexcept {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_list, [&](RegistrationPtr const& known) { return known.get() == registration; });
}

size_t ObserverRegistrations::size() const {
    const std::lock_guard lock(m_mutex);
    return m_list.size();
}

RegistrationPtr ObserverRegistrations::at(size_t position) const {
    const std::lock_guard lock(m_mutex);
    return position < m_list.size() ? m_list[position] : nullptr;
}

}  // namespace QRT_0_81
