#pragma once

#include <functional>
#include <utility>

#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtSubject.h"
#include "qrtResourcePoolInterface.h"

namespace QRT_0_81 {

/// Counts what a pool announces, and does what a test says while it is told.
class PoolObserver final : public Observer {
public:
    explicit PoolObserver(Subject& pool, std::function<void()> onHint = {})
        : m_pool(&pool), m_onHint(std::move(onHint)) {
        pool.addObserver(this);
    }
    ~PoolObserver() override { stopObserving(); }

    void update(Subject* subject, NotificationHint const& hint) override {
        if (subject != m_pool) ++numStrangeHints;
        if (dynamic_cast<ResourcePoolInterface::LockHint const*>(&hint)) {
            ++numLockHints;
        } else if (dynamic_cast<ResourcePoolInterface::ReleaseHint const*>(&hint)) {
            ++numReleaseHints;
        } else {
            ++numStrangeHints;
        }
        if (m_onHint) m_onHint();
    }

    int numLockHints = 0;
    int numReleaseHints = 0;
    int numStrangeHints = 0;

private:
    Subject* const m_pool;
    const std::function<void()> m_onHint;
};

}  // namespace QRT_0_81
