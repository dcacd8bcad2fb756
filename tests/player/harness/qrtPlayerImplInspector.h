#pragma once

#include <QOffscreenSurface>
#include <QOpenGLBuffer>
#include <QOpenGLContext>
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

    // Its life
    static QOffscreenSurface* surface(PlayerImpl& engine) { return engine.m_surface.get(); }
    static QOpenGLContext* hostContext(PlayerImpl& engine) { return engine.m_hostContext.get(); }
    static QOpenGLContext* playerContext(PlayerImpl& engine) { return engine.m_playerContext.get(); }

    // The queue
    using CmdStartProducing = PlayerImpl::CmdStartProducing;
    using CmdStopProducing = PlayerImpl::CmdStopProducing;
    using CmdSetComposition = PlayerImpl::CmdSetComposition;
    using CmdSetVideoResolution = PlayerImpl::CmdSetVideoResolution;
    using CmdSetRamOutputs = PlayerImpl::CmdSetRamOutputs;
    using CmdSetPref = PlayerImpl::CmdSetPref;
    using CmdProduceVideoBuffer = PlayerImpl::CmdProduceVideoBuffer;
    static CommandQueue& queue(PlayerImpl& engine) { return engine.m_commandQueue; }
    /// Posts a command of the test's own kind to the back of the queue and waits for it.
    template <class Command, class... Arguments>
    static Status execute(PlayerImpl& engine, Arguments&&... arguments) {
        return engine._execute<Command>(std::forward<Arguments>(arguments)...);
    }

    // One frame
    static Status produceVideoBuffer(PlayerImpl& engine, int64 frame, bool onDemand, SharedPtr<VideoBuffer>& buffer) {
        return engine._produceVideoBuffer(frame, onDemand, buffer);
    }
    static Status cmdProduceVideoBuffer(PlayerImpl& engine, int64 frame, SharedPtr<VideoBuffer>& buffer,
                                        bool onDemand) {
        return engine._cmdProduceVideoBuffer(frame, buffer, onDemand);
    }
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

    // The production loop
    static int64 nextFrameToProduce(PlayerImpl& engine) { return engine._nextFrameToProduce(); }
    static Status produceNextVideoBuffer(PlayerImpl& engine) { return engine._produceNextVideoBuffer(); }
    static Status updateCurrentFrameNumber(PlayerImpl& engine, int64 frame) {
        return engine._updateCurrentFrameNumber(frame);
    }
    /// Also negative ones, which only the environment can set otherwise.
    static void setFrameCounts(PlayerImpl& engine, int32 head, int32 tail) {
        engine.m_producerCacheNbHeadFrames = head;
        engine.m_producerCacheNbTailFrames = tail;
        engine.m_nextFrameSearch.forget();
    }

    // The run; the parameters only while nothing runs on the player thread
    static Status setComposition(PlayerImpl& engine, SharedPtr<Composition> const& composition) {
        return engine._setComposition(composition, {});
    }
    static Status startProducing(PlayerImpl& engine, SharedPtr<PlayParams> const& params) {
        return engine._startProducing(params);
    }
    static Status stopProducing(PlayerImpl& engine) { return engine._stopProducing(); }
    static bool isProducing(PlayerImpl const& engine) { return engine.m_producing; }
    /// To be taken back before the engine ends: there is no thread to be ended.
    static void setInitialized(PlayerImpl& engine, bool isInitialized) { engine.m_initialized = isInitialized; }
    static void postCurrentFrameNumber(PlayerImpl& engine, int64 frame) { engine._postCurrentFrameNumber(frame); }
    static PlayParams& playParams(PlayerImpl& engine) { return *engine.m_playParams; }
    static void setProducing(PlayerImpl& engine, bool isProducing) { engine.m_producing = isProducing; }

    // Audio
    static Status startProducingAudio(PlayerImpl& engine) { return engine._startProducingAudio(); }
};

}  // namespace QRT_0_81
