#pragma once

#include <QOpenGLBuffer>
#include <memory>
#include <utility>

#include "qrtPlayerImpl.h"

namespace QRT_0_81 {

/// Opens the engine's private parts to tests, which otherwise could not reach a single step of it.
///
/// Threading: as for what it opens. An engine that is not initialized has no player thread, and the caller's own thread
/// takes its place.
struct PlayerImplInspector {
    using Cache = CacheBase<SharedPtr<CacheData>>;

    // The queue
    static CommandQueue& queue(PlayerImpl& engine) { return engine.m_commandQueue; }
    /// Posts a command of the test's own kind to the back of the queue and waits for it.
    template <class Command, class... Arguments>
    static Status execute(PlayerImpl& engine, Arguments&&... arguments) {
        return engine._execute<Command>(std::forward<Arguments>(arguments)...);
    }

    // One frame
    static Status copyVideoBuffer(PlayerImpl& engine, SharedPtr<VideoBuffer> const& source,
                                  SharedPtr<VideoBuffer> const& destination) {
        return engine._copyVideoBuffer(source, destination);
    }
    static QOpenGLBuffer* pixelBuffer(PlayerImpl& engine) { return engine.m_pixelBuffer.get(); }
    static void deletePixelBuffer(PlayerImpl& engine) { engine._deletePixelBuffer(); }
    static ResourcePoolFBO& fboPool(PlayerImpl& engine) { return *engine.m_fboPool; }
    static ResourcePoolRAM& ramPool(PlayerImpl& engine) { return *engine.m_ramPool; }

    // The producer cache
    static Cache& cache(PlayerImpl& engine) { return *engine.m_producerCache; }
    static Status cacheGet(PlayerImpl const& engine, int64 frame, SharedPtr<VideoBuffer>& buffer, int32 timeoutMs = 0) {
        return engine._cacheGet(frame, buffer, timeoutMs);
    }
    static Status cachePut(PlayerImpl& engine, int64 frame, SharedPtr<VideoBuffer> const& buffer) {
        return engine._cachePut(frame, buffer);
    }
    static Status cacheErase(PlayerImpl& engine, int64 frame) { return engine._cacheErase(frame); }
    static bool cacheContains(PlayerImpl const& engine, int64 frame) { return engine._cacheContains(frame); }
    static size_t cacheEvictOne(PlayerImpl& engine) { return engine._cacheEvictOne(); }
    static size_t cacheTryEvictOne(PlayerImpl& engine) { return engine._cacheTryEvictOne(); }

    // The run; the parameters only while nothing runs on the player thread
    static PlayParams& playParams(PlayerImpl& engine) { return *engine.m_playParams; }
    static void setProducing(PlayerImpl& engine, bool isProducing) { engine.m_producing = isProducing; }

    // Audio
    static Status startProducingAudio(PlayerImpl& engine) { return engine._startProducingAudio(); }
};

}  // namespace QRT_0_81
