#include "foundation/core/qrtObserver.h"

#include "foundation/core/qrtRegistration.h"

namespace QRT_0_81 {

Observer::Observer() : m_registrations(std::make_shared<ObserverRegistrations>()) {}

Observer::~Observer() {
    stopObserving();
}

void Observer::stopObserving() {
    // From the last to the first: what leaves the list meanwhile moves nothing out of the way of the walk.
    for (size_t position = m_registrations->size(); position > 0; --position) {
        if (const auto registration = m_registrations->at(position - 1)) registration->end();
    }
}

}  // namespace QRT_0_81
