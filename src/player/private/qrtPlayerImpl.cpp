// The engine's life, its thread, and what host threads read.
#include "qrtPlayerImpl.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <cstdlib>
#include <new>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "qrtGuarded.h"
#include "qrtPlayerImplCommands.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

namespace {

/// The default of a frame-count preference: what the environment fixes for the whole process, else `fallback`.
int32 defaultFrameCount(String const& preference, int32 fallback) {
    const String variable = "QRT_PREF_" + preference;
    char const* const text = Platform::getenv(variable.c_str());
    return text ? std::atoi(text) : fallback;
}

// Read once, when the library is loaded.
const int32 defaultNbHeadFrames = defaultFrameCount(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 2);
const int32 defaultNbTailFrames = defaultFrameCount(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 0);

constexpr Rational defaultFrameRate(24, 1);

QSurfaceFormat surfaceFormat() {
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setVersion(3, 2);
    return format;
}

}  // namespace

PlayerImpl::PlayerImpl(VideoBufferResolution const& resolution, GraphEngineFactory factory)
    : m_producerCacheNbHeadFrames(defaultNbHeadFrames),
      m_producerCacheNbTailFrames(defaultNbTailFrames),
      m_playParams(
          PlayParams::create(Time(), Time(), Time(), defaultFrameRate, 1, PlayParams::single, PlayParams::all)),
      m_videoResolution(resolution),
      m_videoFrameRate(defaultFrameRate),
      m_defaultSourceVideoFrameRate(defaultFrameRate),
      m_graphEngine(factory ? factory() : nullptr),
      m_number(Trace::newPlayer()),
      m_graphEngineFactory(factory),
      m_framebufferReaper(FramebufferReaper::create()),
      m_fboPool(ResourcePoolFBO::create(m_framebufferReaper)),
      m_ramPool(ResourcePoolRAM::create()),
      m_externalSegmentCache(m_framebufferReaper),
      m_producerCache(Cache::create()) {
    if (!m_playParams) throw std::bad_alloc();
    if (!m_graphEngine && m_graphEngineFactory) m_graphEngine = m_graphEngineFactory();
    m_ramPool->addObserver(this);
    m_fboPool->addObserver(this);
}

PlayerImpl::~PlayerImpl() {
    (void)guarded("uninitialize()", [this] { return uninitialize(); });
    // Frames that a host still holds will go back to the pools, and segments may notify, on any thread.
    stopObserving();
    m_externalSegmentCache.close();
}

Status PlayerImpl::initialize(void* nativeContext, void* nativeWindow) {
    const TraceSpan span("initialize", m_number);
    QRT_ENGINE_DEBUG("initialize() - beginning");
    if (m_initialized) return Status::already_initialized;
    if (_isPlayerThread("initialize()")) return Status::general_failure;
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        QRT_ENGINE_MESSAGE("initialize() failed: there is no QGuiApplication");
        return Status::general_failure;
    }
    if (!_graphEngine() && m_graphEngineFactory) {
        SharedPtr<GraphEngineInterface> graphEngine = m_graphEngineFactory();
        const std::lock_guard lock(m_engineMutex);
        m_graphEngine.swap(graphEngine);
    }
    m_nativeContext = {nativeContext, nativeWindow};
    m_surface = std::make_unique<QOffscreenSurface>(nullptr);
    m_surface->setFormat(surfaceFormat());
    m_surface->create();

    const HostContextRelease hostContextRelease(m_nativeContext);
    QRT_ENGINE_DEBUG("initialize() - before launching player thread");
    m_isThreadDone = false;
    start(QThread::InheritPriority);
    QRT_ENGINE_DEBUG("initialize() - after launching player thread");
    if (!isRunning()) {
        QRT_ENGINE_MESSAGE("initialize() failed: the player thread cannot be started");
        m_isThreadDone = true;
        m_surface.reset();
        return Status::general_failure;
    }
    while (!m_initialized) {
        // The set-up takes milliseconds and never fails to end: a spin answers soonest.
    }
    QRT_ENGINE_DEBUG("initialize() - end");
    return m_poolInitStatus;
}

Status PlayerImpl::uninitialize() {
    const TraceSpan span("uninitialize", m_number);
    QRT_ENGINE_DEBUG("uninitialize() - beginning");
    if (!m_initialized) return Status::not_initialized;
    if (_isPlayerThread("uninitialize()")) return Status::general_failure;
    if (!isFinished()) {
        QRT_ENGINE_DEBUG("uninitialize() - sending terminate command");
        m_uninitializingThread = QThread::currentThread();
        try {
            m_commandQueue.pushBack(std::make_unique<CmdTerminate>());
        } catch (std::bad_alloc const&) {
            m_commandQueue.end();  // the thread ends even so; what still waits is woken below
        }
    }
    // The thread's own flag is awaited too: it publishes what the thread wrote, which Qt's need not.
    while (isRunning() || !m_isThreadDone) {
    }

    QRT_ENGINE_DEBUG("uninitialize() - uninitializing");
    m_commandQueue.discardAll();
    (void)m_producerCache->clear();
    m_surface.reset();
    (void)m_fboPool->uninitialize();
    (void)m_ramPool->uninitialize();
    m_hostContext.reset();
    m_playerContext.reset();
    _leaveAllSegments();
    m_externalSegments.reset();
    {
        SharedPtr<Composition> dropped;
        const std::lock_guard lock(m_engineMutex);
        m_composition.swap(dropped);
    }
    m_nativeContext = {};
    m_initialized.exchange(false);
    QRT_ENGINE_DEBUG("uninitialize() - end");
    return Status();
}

void PlayerImpl::run() {
    _setUp();
    _executeCommands();
    _tearDown();
    if (Trace::isOn()) Trace::flush();
    m_isThreadDone = true;
}

void PlayerImpl::_setUp() {
    (void)Platform::setThreadName("QRT-PLAYER");
    if (Trace::isOn()) Trace::nameThread({"QRT-PLAYER", m_number});
    const TraceSpan span("set up", m_number);
    m_poolInitStatus = guarded("initialize()", [this] { return _createContexts(); });
    m_isContextUsable = m_poolInitStatus.success();
    if (m_isContextUsable) m_poolInitStatus = guarded("initialize()", [this] { return _resizePools(); });
    if (m_poolInitStatus.failure()) {
        QRT_ENGINE_DEBUG("Resource pool initialization error = %d", static_cast<int>(m_poolInitStatus.get()));
    }
    m_initialized.exchange(true);
}

Status PlayerImpl::_createContexts() {
    m_playerContext = std::make_unique<QOpenGLContext>();
    m_playerContext->setFormat(surfaceFormat());
    if (const auto graphEngine = _graphEngine()) (void)graphEngine->setGLContext(m_playerContext.get());

    if (m_nativeContext.context) {
        m_hostContext = adoptContext(m_nativeContext, m_surface.get());
        if (!m_hostContext) {
            QRT_ENGINE_MESSAGE("initialize() failed: the host's OpenGL context cannot be adopted");
            return Status::general_failure;
        }
        m_playerContext->setShareContext(m_hostContext.get());
    }
    if (!m_playerContext->create()) {
        QRT_ENGINE_MESSAGE("initialize() failed: no OpenGL context can be created");
        return Status::general_failure;
    }
    if (m_hostContext && m_playerContext->shareContext() != m_hostContext.get()) {
        QRT_ENGINE_MESSAGE("initialize() failed: the host's OpenGL context does not share its objects");
        return Status::general_failure;
    }
    if (!m_playerContext->makeCurrent(m_surface.get())) {
        QRT_ENGINE_MESSAGE("initialize() failed: the OpenGL context cannot be made current");
        return Status::general_failure;
    }
    return Status();
}

void PlayerImpl::_executeCommands() {
    for (;;) {
        const std::unique_ptr<Cmd> command = _takeCommand();
        if (!command || command->type() == CmdType::terminate) break;
        (void)guarded("a step of the player thread", [&] {
            const TraceSpan span(nameOf(command->type()), m_number);
            (void)_makeContextCurrent();
            command->execute(*this);
            m_framebufferReaper->reap();
            if (Trace::isOn()) _countFrames();
        });
    }
    (void)_makeContextCurrent();
    m_framebufferReaper->reap();
    _deletePixelBuffer();
}

std::unique_ptr<Cmd> PlayerImpl::_takeCommand() {
    if (!Trace::isOn() || m_commandQueue.size() != 0) return m_commandQueue.take();
    Trace::flush();  // there is time now, and a host that crashes leaves what has happened
    const TraceSpan span("idle", m_number);
    return m_commandQueue.take();
}

Status PlayerImpl::_makeContextCurrent() {
    if (!m_isContextUsable || QOpenGLContext::currentContext() == m_playerContext.get()) return Status();
    // A graph engine, or a host's segment, has left another one.
    if (m_playerContext->makeCurrent(m_surface.get())) return Status();
    QRT_ENGINE_MESSAGE("the OpenGL context cannot be made current again");
    return Status::graphics_failure;
}

bool PlayerImpl::_isPlayerThread(char const* operation) const {
    if (!_isPlayerThread()) return false;
    QRT_ENGINE_MESSAGE("%s failed: it was called on the player thread, for which it would wait", operation);
    return true;
}

void PlayerImpl::_tearDown() {
    const TraceSpan span("tear down", m_number);
    (void)_stopProducing();  // the run ends with its thread
    // Framebuffers and their textures can be deleted only while their context is current, and that is now. Pools are
    // emptied after the caches, whose frames return to them.
    (void)m_producerCache->clear();
    m_externalSegmentCache.releaseTextures();
    (void)m_fboPool->uninitialize();
    {
        SharedPtr<GraphEngineInterface> graphEngine;
        {
            const std::lock_guard lock(m_engineMutex);
            m_graphEngine.swap(graphEngine);
        }
    }
    if (m_isContextUsable) {
        (void)_makeContextCurrent();  // which the end of the graph engine may have changed
        m_framebufferReaper->closeContext();
        m_playerContext->doneCurrent();
    }
    // The contexts die on the uninitializing thread; Qt's objects behind them must belong to it, or some would wait for
    // ever for an event loop of this one.
    for (QOpenGLContext* const context : {m_playerContext.get(), m_hostContext.get()}) {
        if (!context) continue;
        if (context->shareGroup() && context->shareGroup()->thread() == this) {
            context->shareGroup()->moveToThread(m_uninitializingThread);
        }
        context->moveToThread(m_uninitializingThread);
    }
    m_isContextUsable = false;
}

void PlayerImpl::update(Subject* subject, NotificationHint const& hint) {
    const bool isRamPool = subject == static_cast<Subject*>(m_ramPool.get());
    const bool isFboPool = subject == static_cast<Subject*>(m_fboPool.get());
    if (isRamPool || isFboPool) {
        if (Trace::isOn()) isFboPool ? _countFramebuffers() : _countBlocks();
        // What a step of the loop itself gives back must not restart the loop: a step that fails would be tried for
        // ever.
        const bool isOwnStep = _isPlayerThread() && m_isLookingAhead;
        const bool isRelease = dynamic_cast<ResourcePoolInterface::ReleaseHint const*>(&hint) != nullptr;
        if (m_producing && isRelease && !isOwnStep) {
            // Frames come back in destructors, which must not throw.
            (void)guarded("looking ahead", [this] { _queueProduceNext(); });
        }
        return;
    }
    if (dynamic_cast<InvalidationHint const*>(&hint) && !m_producerCache->empty()) {
        const TraceSpan span("flush cache", m_number);
        (void)m_producerCache->clear();
        QRT_ENGINE_DEBUG("Flushed player cache");
    }
    _notify(hint);
}

void PlayerImpl::_countFrames() const {
    Trace::count("waiting commands of player", m_number, {{"commands", static_cast<int64>(m_commandQueue.size())}});
    Trace::count("cached frames of player", m_number, {{"frames", static_cast<int64>(m_producerCache->size())}});
}

void PlayerImpl::_countPools() const {
    _countFramebuffers();
    _countBlocks();
}

void PlayerImpl::_countFramebuffers() const {
    _countResources("framebuffers of player", m_fboPool->getLevels());
}

void PlayerImpl::_countBlocks() const {
    _countResources("memory blocks of player", m_ramPool->getLevels());
}

void PlayerImpl::_countResources(char const* name, ResourcePool::Levels const& levels) const {
    Trace::count(name, m_number,
                 {{"free", static_cast<int64>(levels.free)}, {"lent", static_cast<int64>(levels.lent)}});
}

void PlayerImpl::_notify(NotificationHint const& hint) {
    // An observer may have destroyed this engine when it returns.
    (void)guarded("an observer's update", [&] { notify(hint); });
}

VideoBufferResolution PlayerImpl::getVideoResolution() const {
    const std::lock_guard lock(m_engineMutex);
    return m_videoResolution;
}

Rational PlayerImpl::getVideoFrameRate() const {
    const std::lock_guard lock(m_engineMutex);
    return m_videoFrameRate;
}

Status PlayerImpl::setDefaultSourceVideoFrameRate(Rational const& rate) {
    const std::lock_guard lock(m_engineMutex);
    m_defaultSourceVideoFrameRate = rate;
    return Status();
}

Rational PlayerImpl::getDefaultSourceVideoFrameRate() const {
    const std::lock_guard lock(m_engineMutex);
    return m_defaultSourceVideoFrameRate;
}

bool PlayerImpl::getRamOutputs() const {
    return m_ramOutputs;
}

ConstSharedPtr<AudioFormatInterface> PlayerImpl::getAudioFormat() const {
    const std::lock_guard lock(m_engineMutex);
    return m_audioFormat;
}

SharedPtr<TokenResolver> PlayerImpl::getTokenResolver() const {
    const auto graphEngine = _graphEngine();
    return graphEngine ? graphEngine->getTokenResolver() : nullptr;
}

GraphEngineInterface const* PlayerImpl::getGraphEngine() const {
    return _graphEngine().get();
}

SharedPtr<Composition> PlayerImpl::_composition() const {
    const std::lock_guard lock(m_engineMutex);
    return m_composition;
}

SharedPtr<GraphEngineInterface> PlayerImpl::_graphEngine() const {
    const std::lock_guard lock(m_engineMutex);
    return m_graphEngine;
}

}  // namespace QRT_0_81
