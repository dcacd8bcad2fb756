#pragma once

#include "harness/qrtThreadlessEngine.h"

namespace QRT_0_81 {

/// A thousand cached frames of which all are wanted, or all but one.
class EvictionScene final {
public:
    enum class Evictable { oldest, newest, none };

    explicit EvictionScene(Evictable evictable) : m_evictable(evictable) {
        m_engine.startProducing(0);
        m_engine.put(0, numCached - 2);  // frame 0 is the current one
        m_engine.put(lastFrame());
        arrange();
    }

    /// Evicts as look-ahead does when it needs room.
    void evict() {
        const size_t numEvicted = PlayerImplInspector::cacheTryEvictOne(m_engine.engine());
        if (numEvicted != (m_evictable == Evictable::none ? 0 : 1))
            throw std::logic_error("not what was to be evicted");
    }
    /// Puts back what was evicted.
    void restore() {
        if (m_evictable == Evictable::none) return;
        m_engine.put(lastFrame());
        arrange();
    }

private:
    static constexpr int32 numHeadFrames = 1000;
    static constexpr int64 numCached = 1000;

    [[nodiscard]] int64 lastFrame() const { return m_evictable == Evictable::none ? numCached - 1 : 5000; }
    void arrange() {
        if (m_evictable != Evictable::oldest) return;
        for (int64 frame = 0; frame < numCached - 1; ++frame)
            m_engine.touch(frame);
    }

    const Evictable m_evictable;
    ThreadlessEngine m_engine{numHeadFrames, numCached + 1};
};

}  // namespace QRT_0_81
