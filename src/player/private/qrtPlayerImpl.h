#pragma once

#include <QThread>
#include <atomic>
#include <limits>
#include <memory>
#include <mutex>

#include "foundation/cache/qrtCacheBase.h"
#include "foundation/composition/qrtComposition.h"
#include "foundation/composition/qrtGraphEngineInterface.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtPrefs.h"
#include "foundation/core/qrtResource.h"
#include "foundation/core/qrtSubject.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "player/qrtPlayParams.h"
#include "qrtCommandQueue.h"
#include "qrtExternalSegmentCacheManager.h"
#include "qrtExternalSegmentWrappers.h"
#include "qrtNativeContext.h"
#include "qrtNextFrameSearch.h"
#include "qrtTrace.h"
#include "qrtVideoBufferPrivate.h"

class QOffscreenSurface;
class QOpenGLBuffer;
class QOpenGLContext;

namespace QRT_0_81 {

/// The engine behind `Player`: a thread that renders a composition's frames ahead of its host.
///
/// Threads: host threads call the public operations; those that touch OpenGL, the pools' configuration, the play
/// parameters or the graph engine's rendering cross to the player thread as commands. Methods that begin with an
/// underscore run on the player thread or, while no player thread exists, on the host's, unless they say otherwise.
///
/// Fields are grouped by what guards them. No two locks are held at once, but that a pool's notification, which runs
/// under the pool's lock, posts a command; the locks of the log, of the trace and of the framebuffer reaper are leaves.
class PlayerImpl final : public QThread, public Subject, public Observer, public Prefs {
public:
    using GraphEngineFactory = SharedPtr<GraphEngineInterface> (*)();

    PlayerImpl(VideoBufferResolution const& resolution, GraphEngineFactory factory);
    ~PlayerImpl() override;

    // Life; see the public class for what each operation promises.
    Status initialize(void* nativeContext, void* nativeWindow);
    Status uninitialize();

    // Prefs
    Status setPref(String const& name, int value) override;
    Status getPref(String const& name, int& value) const override;
    Status getPrefs(Vector<String>& names) const override;

    // Composition
    Status setComposition(SharedPtr<Composition> const& composition,
                          List<SharedPtr<ExternalSegment>> const& externalSegments);
    Status updateComposition(SharedPtr<Composition> const& composition, String const& description);

    // Production
    Status startProducing(SharedPtr<PlayParams> const& params);
    Status stopProducing();

    // Delivery
    [[nodiscard]] bool isVideoBufferReady(int64 frameNumber);
    Status getVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer);
    Status getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const;

    // Formats
    Status setVideoResolution(VideoBufferResolution const& resolution);
    [[nodiscard]] VideoBufferResolution getVideoResolution() const;
    Status setVideoFrameRate(Rational const& rate);
    [[nodiscard]] Rational getVideoFrameRate() const;
    Status setDefaultSourceVideoFrameRate(Rational const& rate);
    [[nodiscard]] Rational getDefaultSourceVideoFrameRate() const;
    Status setRamOutputs(bool ramOutputs);
    [[nodiscard]] bool getRamOutputs() const;

    // Audio
    Status setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format);
    [[nodiscard]] ConstSharedPtr<AudioFormatInterface> getAudioFormat() const;
    Status fillAudioBuffer(char* buffer, size_t size, size_t position);

    // External segments
    [[nodiscard]] ExternalSegmentCacheManager& externalSegmentCache() noexcept { return m_externalSegmentCache; }
    [[nodiscard]] ExternalSegmentCacheManager const& externalSegmentCache() const noexcept {
        return m_externalSegmentCache;
    }

    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const;
    /// The graph engine of this moment; null between `uninitialize` and the next `initialize`.
    [[nodiscard]] GraphEngineInterface const* getGraphEngine() const;

protected:
    void run() override;
    /// Any thread: the one that notifies.
    void update(Subject* subject, NotificationHint const& hint) override;

private:
    friend struct PlayerImplInspector;  // defined by tests

    class CmdStartProducing;
    class CmdStopProducing;
    class CmdSetComposition;
    class CmdUpdateComposition;
    class CmdSetVideoResolution;
    class CmdSetVideoFrameRate;
    class CmdSetAudioFormat;
    class CmdSetRamOutputs;
    class CmdSetPref;
    class CmdGetPref;
    class CmdStartProducingAudio;
    class CmdProduceVideoBuffer;
    class CmdProduceNextVideoBuffer;
    class CmdUpdateCurrentFrameNumber;
    class CmdTerminate;

    using Cache = CacheBase<SharedPtr<CacheData>>;

    /// Posts a synchronous command to the back of the queue and waits for it; any thread but the player thread.
    template <class Command, class... Arguments>
    Status _execute(Arguments&&... arguments) const;
    /// The same for a command whose caller must not wait behind others.
    template <class Command, class... Arguments>
    Status _executeUrgently(Arguments&&... arguments) const;
    template <class Command, class... Arguments>
    Status _executeThrough(void (CommandQueue::*post)(std::unique_ptr<Cmd>), Arguments&&... arguments) const;

    // The player thread's life
    void _setUp();
    [[nodiscard]] Status _createContexts();
    void _executeCommands();
    [[nodiscard]] std::unique_ptr<Cmd> _takeCommand();
    void _tearDown();
    /// `Status::graphics_failure`, with a message, when it is another one's and cannot be had back.
    Status _makeContextCurrent();
    /// Any thread: whether it is the player thread, on which whatever waits for that thread is refused.
    [[nodiscard]] bool _isPlayerThread() const { return QThread::currentThread() == this; }
    /// The same, with a message that the operation is refused.
    [[nodiscard]] bool _isPlayerThread(char const* operation) const;

    // The work of commands
    Status _startProducing(SharedPtr<PlayParams> const& params);
    void _postFirstSteps();
    Status _validatePlayParams(SharedPtr<PlayParams> const& params) const;
    Status _stopProducing();
    Status _setComposition(SharedPtr<Composition> const& composition,
                           List<SharedPtr<ExternalSegment>> const& externalSegments);
    void _observeSegments(List<SharedPtr<ExternalSegment>> const& segments);
    void _retireSegments();
    /// Host threads: ends the registrations with segments of earlier compositions.
    void _leaveRetiredSegments();
    /// The same with those of the present composition too.
    void _leaveAllSegments();
    [[nodiscard]] bool _isObserving(Subject* subject) const;
    Status _updateComposition(SharedPtr<Composition> const& composition, String const& description);
    Status _setVideoResolution(VideoBufferResolution const& resolution);
    Status _setVideoFrameRate(Rational const& rate);
    Status _setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format);
    Status _setRamOutputs(bool ramOutputs);
    Status _setPref(String const& name, int value);
    Status _setFrameCountPref(std::atomic<int32>& count, int value);
    Status _getPref(String const& name, int& value) const;
    Status _resizePools();
    [[nodiscard]] uint64 _poolSize() const;
    Status _startProducingAudio();

    // The production loop
    void _queueProduceNext();
    [[nodiscard]] int64 _nextFrameToProduce();
    Status _produceNextVideoBuffer();
    Status _updateCurrentFrameNumber(int64 frameNumber);

    // One frame
    Status _produceVideoBuffer(int64 frameNumber, bool onDemand, SharedPtr<VideoBuffer>& videoBuffer);
    Status _produceMissing(int64 frameNumber, bool onDemand, SharedPtr<VideoBuffer>& videoBuffer);
    template <class Pool>
    Status _lendBuffer(SharedPtr<Pool> const& pool, bool onDemand, SharedPtr<VideoBufferPrivate>& buffer);
    Status _render(QOpenGLFramebufferObject& framebuffer, int64 frameNumber);
    Status _askForFrame(int64 frameNumber, unsigned int texture);
    Status _readBack(SharedPtr<VideoBufferPrivate> const& source, bool onDemand,
                     SharedPtr<VideoBufferPrivate>& destination);
    Status _copyVideoBuffer(SharedPtr<VideoBuffer> const& source, SharedPtr<VideoBuffer> const& destination);
    /// Reads the bound framebuffer into the bound pixel buffer; the OpenGL error of it.
    [[nodiscard]] unsigned int _readPixels();
    Status _bindPixelBuffer(uint64 size);
    void _deletePixelBuffer();

    /// Host threads.
    void _postCurrentFrameNumber(int64 frameNumber);
    Status _cmdProduceVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer, bool onDemand);

    // The producer cache; any thread but for the two evictions
    Status _cacheGet(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer, int32 timeoutMs) const;
    Status _cachePut(int64 frameNumber, SharedPtr<VideoBuffer> const& videoBuffer);
    Status _cacheErase(int64 frameNumber);
    [[nodiscard]] bool _cacheContains(int64 frameNumber) const;
    size_t _cacheEvictOne();
    size_t _cacheEvictUnwanted();
    size_t _cacheTryEvictOne();

    // For the trace, while one is on; any thread.
    void _countFrames() const;
    void _countPools() const;
    void _countFramebuffers() const;
    void _countBlocks() const;
    void _countResources(char const* name, ResourcePool::Levels const& levels) const;

    /// Any thread: notifies the host's observers; what they throw ends here.
    void _notify(NotificationHint const& hint);

    /// Any thread.
    [[nodiscard]] SharedPtr<Composition> _composition() const;
    [[nodiscard]] SharedPtr<GraphEngineInterface> _graphEngine() const;

    // Atomic: written by the player thread (or by hosts while there is none), read by any.
    std::atomic<bool> m_initialized{false};
    std::atomic<bool> m_producing{false};
    std::atomic<bool> m_ramOutputs{false};
    std::atomic<bool> m_isThreadDone{true};
    std::atomic<bool> m_isContextUsable{false};
    std::atomic<int32> m_producerCacheNbHeadFrames;
    std::atomic<int32> m_producerCacheNbTailFrames;
    std::atomic<int64> m_firstFramePlayed{std::numeric_limits<int64>::min()};  // of the latest run; both ends count
    std::atomic<int64> m_lastFramePlayed{std::numeric_limits<int64>::max()};

    // Written by initialize and uninitialize while no player thread runs, else by the player thread; read by it alone.
    Status m_poolInitStatus;
    NativeContext m_nativeContext;
    std::unique_ptr<QOpenGLContext> m_hostContext;
    std::unique_ptr<QOpenGLContext> m_playerContext;
    std::unique_ptr<QOffscreenSurface> m_surface;
    QThread* m_uninitializingThread = nullptr;
    std::unique_ptr<QOpenGLBuffer> m_pixelBuffer;
    SharedPtr<PlayParams> m_playParams;
    SharedPtr<ExternalSegmentWrappers> m_externalSegments;
    NextFrameSearch m_nextFrameSearch;
    bool m_isLookingAhead = false;  // inside a step of the production loop

    // Under m_engineMutex: written by the player thread (or by hosts while there is none), read by any. Objects that
    // are replaced are let go of outside the lock.
    mutable std::mutex m_engineMutex;
    VideoBufferResolution m_videoResolution;
    Rational m_videoFrameRate;
    Rational m_defaultSourceVideoFrameRate;  // written by hosts at any time
    ConstSharedPtr<AudioFormatInterface> m_audioFormat;
    SharedPtr<GraphEngineInterface> m_graphEngine;
    SharedPtr<Composition> m_composition;
    List<SharedPtr<ExternalSegment>> m_observedSegments;
    List<SharedPtr<ExternalSegment>> m_retiredSegments;  // of earlier compositions, still registered

    // Fixed after construction; each object takes care of its own threads.
    const int64 m_number;  // by which a trace tells engines apart
    const GraphEngineFactory m_graphEngineFactory;
    const SharedPtr<FramebufferReaper> m_framebufferReaper;
    const SharedPtr<ResourcePoolFBO> m_fboPool;
    const SharedPtr<ResourcePoolRAM> m_ramPool;
    ExternalSegmentCacheManager m_externalSegmentCache;
    const SharedPtr<Cache> m_producerCache;
    mutable CommandQueue m_commandQueue;
};

template <class Command, class... Arguments>
Status PlayerImpl::_executeThrough(void (CommandQueue::*post)(std::unique_ptr<Cmd>), Arguments&&... arguments) const {
    if (_isPlayerThread()) return Status::general_failure;
    Status status = Status::not_initialized;  // what stays when the thread ends before the command's turn
    CmdCompletion completion;
    auto command = std::make_unique<Command>(&status, &completion, std::forward<Arguments>(arguments)...);
    TraceSpan span("wait", m_number, "command", nameOf(command->type()));
    (m_commandQueue.*post)(std::move(command));
    completion.wait();
    span.note("status", status.get());
    return status;
}

template <class Command, class... Arguments>
Status PlayerImpl::_execute(Arguments&&... arguments) const {
    return _executeThrough<Command>(&CommandQueue::pushBack, std::forward<Arguments>(arguments)...);
}

template <class Command, class... Arguments>
Status PlayerImpl::_executeUrgently(Arguments&&... arguments) const {
    return _executeThrough<Command>(&CommandQueue::pushFront, std::forward<Arguments>(arguments)...);
}

}  // namespace QRT_0_81
