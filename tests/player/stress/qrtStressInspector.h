#pragma once

#include <QOpenGLFramebufferObject>
#include <unordered_set>
#include <vector>

#include "foundation/cache/qrtForEachFunctorInterface.h"
#include "harness/qrtPlayerImplInspector.h"
#include "player/qrtPlayer.h"
#include "qrtProducedVideoBuffer.h"
#include "qrtResourcePoolFBO.h"
#include "qrtResourcePoolRAM.h"

namespace QRT_0_81 {

/// Opens a player to tests: the engine behind it.
struct PlayerInspector {
    static PlayerImpl& engine(Player& player) { return *player.m_impl; }
};

/// What a pool has at one moment.
struct PoolState {
    uint32 size;  ///< how many resources it is to have; 0 when it is not initialized
    size_t numFree;
    std::unordered_set<void const*> lent;
};

/// Opens pools to tests. Any thread.
struct ResourcePoolInspector {
    static PoolState stateOf(ResourcePoolFBO& pool) { return stateOf(pool, pool.m_freeFbos, pool.m_lockedFbos); }
    static PoolState stateOf(ResourcePoolRAM& pool) { return stateOf(pool, pool.m_freeBuffers, pool.m_lockedBuffers); }

private:
    template <class Pool, class Free, class Lent>
    static PoolState stateOf(Pool& pool, Free const& free, Lent const& lent) {
        const std::lock_guard lock(pool.m_mutex);
        return {pool.m_initialized ? pool.getNumResources() : 0, free.size(), {lent.begin(), lent.end()}};
    }
};

/// A frame in the producer cache.
struct CachedFrame {
    int64 number;
    SharedPtr<VideoBuffer> buffer;
};

/// What is cached at this moment. Any thread.
[[nodiscard]] inline std::vector<CachedFrame> cachedFrames(PlayerImpl& engine) {
    class Collector final : public ForEachFunctorInterface<SharedPtr<CacheData>> {
    public:
        bool visit(SharedPtr<CacheData> const& data) override {
            if (auto const* const produced = ProducedVideoBuffer::from(data))
                frames.push_back({produced->getFrameNumber(), produced->getVideoBuffer()});
            return true;
        }
        std::vector<CachedFrame> frames;
    };
    Collector collector;
    (void)PlayerImplInspector::cache(engine).for_each(collector);
    return collector.frames;
}

}  // namespace QRT_0_81
