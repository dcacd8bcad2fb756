#include "foundation/core/qrtObserver.h"

#include "foundation/core/qrtRegistration.h"

namespace QRT_0_81 {

Observer::Observer() : m_registrations(std::make_shared<ObserverRegistrations>()) {}

Observer::~Observer() {
    stopObserving();
}

void Observer::stopObserving() {
    for (auto const& registration : m_registrations->snapshot())
        registration->end();
}

}  // namespace QRT_0_81
