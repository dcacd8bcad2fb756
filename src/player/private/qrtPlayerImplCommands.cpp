// What hosts ask for, and what the player thread does about it.
#include "qrtPlayerImplCommands.h"

#include <QOpenGLBuffer>
#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "foundation/logger/qrtMsgBuilder.h"
#include "qrtCacheEvictionAdvisor.h"
#include "qrtGuarded.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

namespace {

/// The sum, kept within 64 bits.
int64 saturatingAdd(int64 a, int64 b) {
    int64 sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b > 0 ? std::numeric_limits<int64>::max() : std::numeric_limits<int64>::min();
}

/// Whether a graph engine has taken a composition over, be it in part.
bool isAdoption(Status const& status) {
    return status.success() || status == Status::composition_incomplete;
}

}  // namespace

// ---- Host threads

Status PlayerImpl::setPref(String const& name, int value) {
    const Status status = m_initialized ? _execute<CmdSetPref>(name, value) : _setPref(name, value);
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::getPref(String const& name, int& value) const {
    return m_initialized ? _execute<CmdGetPref>(name, &value) : _getPref(name, value);
}

Status PlayerImpl::getPrefs(Vector<String>& names) const {
    const auto graphEngine = _graphEngine();
    if (!graphEngine) return Status::general_failure;
    if (const Status status = graphEngine->getPrefs(names); status.failure()) return status;
    names.push_back(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES);
    names.push_back(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES);
    return Status();
}

Status PlayerImpl::setComposition(SharedPtr<Composition> const& composition,
                                  List<SharedPtr<ExternalSegment>> const& externalSegments) {
    if (!m_initialized) return Status::not_initialized;
    if (_isPlayerThread()) return Status::general_failure;
    const Status status = _execute<CmdSetComposition>(composition, externalSegments);
    _leaveRetiredSegments();
    (void)m_producerCache->clear();
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::updateComposition(SharedPtr<Composition> const& composition, String const& description) {
    if (!m_initialized) return Status::not_initialized;
    if (!_composition()) return Status::no_composition_to_update;
    if (_isPlayerThread()) return Status::general_failure;
    const Status status = _execute<CmdUpdateComposition>(composition, description);
    (void)m_producerCache->clear();
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::startProducing(SharedPtr<PlayParams> const& params) {
    if (!m_initialized) return Status::not_initialized;
    return _execute<CmdStartProducing>(params);
}

Status PlayerImpl::stopProducing() {
    if (!m_initialized || !isRunning() || isFinished()) return Status::not_initialized;
    if (!m_producing) return Status::not_producing;
    return _execute<CmdStopProducing>();
}

Status PlayerImpl::setVideoResolution(VideoBufferResolution const& resolution) {
    const Status status = m_initialized ? _execute<CmdSetVideoResolution>(resolution) : _setVideoResolution(resolution);
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::setVideoFrameRate(Rational const& rate) {
    if (!m_initialized) return Status::not_initialized;
    const Status status = _execute<CmdSetVideoFrameRate>(rate);
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format) {
    if (!m_initialized) return _setAudioFormat(format);
    if (_isPlayerThread()) return Status::general_failure;
    const Status status = _execute<CmdSetAudioFormat>(format);
    (void)m_producerCache->clear();
    _notify(NotificationHint());
    return status;
}

Status PlayerImpl::setRamOutputs(bool ramOutputs) {
    const Status status = m_initialized ? _execute<CmdSetRamOutputs>(ramOutputs) : _setRamOutputs(ramOutputs);
    _notify(NotificationHint());
    return status;
}

// ---- Player thread

Status PlayerImpl::_startProducing(SharedPtr<PlayParams> const& params) {
    if (m_producing) return Status::already_producing;
    if (const Status status = _validatePlayParams(params); status.failure()) return status;

    SharedPtr<PlayParams> copy = params->clone();  // the host may go on changing its own
    if (!copy) return Status::general_failure;
    m_playParams.swap(copy);
    m_nextFrameSearch.forget();  // another run, and perhaps other counts of frames
    if (const Status status = _graphEngine()->setStep(m_playParams->getStep()); status.failure()) return status;

    const SharedPtr<EvictionAdvisorInterfaceBase<SharedPtr<CacheData>>> advisor(
        new CacheEvictionAdvisor(m_playParams, m_producerCacheNbHeadFrames, m_producerCacheNbTailFrames));
    (void)m_producerCache->setEvictionAdvisor(advisor);
    m_firstFramePlayed = m_playParams->getStartFrame();
    m_lastFramePlayed = m_playParams->getEndFrame();
    m_producing.exchange(true);
    const Status posted = guarded("startProducing()", [this] { _postFirstSteps(); });
    if (posted.failure()) (void)_stopProducing();
    return posted;
}

void PlayerImpl::_postFirstSteps() {
    const PlayParams::ProductionMode mode = m_playParams->getProductionMode();
    if (getAudioFormat() && (mode == PlayParams::audio_only || mode == PlayParams::all)) {
        m_commandQueue.pushBack(std::make_unique<CmdStartProducingAudio>());
    }
    _queueProduceNext();
}

Status PlayerImpl::_validatePlayParams(SharedPtr<PlayParams> const& params) const {
    const auto composition = _composition();
    if (!composition) return Status::no_composition;
    if (!params) return Status::invalid_play_params;

    Time start;
    Time duration;
    if (const Status status = composition->getStartTime(start); status.failure()) return status;
    if (const Status status = composition->getDuration(duration); status.failure()) return status;
    const int64 lastTick = saturatingAdd(saturatingAdd(start.getNbTicks(), duration.getNbTicks()), -1);
    const Time last(lastTick, start.getRate());

    const Rational rate = params->getFrameRate();
    const auto frameAt = [&rate](int64 frame) { return PlayParams::getFrame(Time(frame, rate), rate); };
    const int64 compositionFirst = PlayParams::getFrame(start, rate);
    const int64 compositionLast = PlayParams::getFrame(last, rate);
    const int64 startFrame = frameAt(params->getStartFrame());
    const int64 endFrame = frameAt(params->getEndFrame());
    const int64 currentFrame = frameAt(params->getCurrentFrame());
    const bool isValid = startFrame >= compositionFirst && endFrame <= compositionLast && currentFrame >= startFrame &&
                         currentFrame <= endFrame;
    if (isValid) return Status();

    MsgBuilder<0>(playerImplSource, __LINE__, LogMsg::postDebug)(
        "Player invalid play params. Player starts at %lld ends at %lld @ %d/%d and currentFrame is %lld. "
        "Composition starts at %lld and ends at %lld.",
        static_cast<long long>(startFrame), static_cast<long long>(endFrame), rate.getNumerator(),
        static_cast<int>(rate.getDenominator()), static_cast<long long>(currentFrame),
        static_cast<long long>(compositionFirst), static_cast<long long>(compositionLast));
    return Status::invalid_play_params;
}

Status PlayerImpl::_stopProducing() {
    (void)m_producerCache->setEvictionAdvisor(nullptr);
    m_producing.exchange(false);
    return Status();
}

Status PlayerImpl::_setComposition(SharedPtr<Composition> const& composition,
                                   List<SharedPtr<ExternalSegment>> const& externalSegments) {
    if (m_producing) return Status::not_while_producing;
    const auto graphEngine = _graphEngine();
    if (!graphEngine) return Status::general_failure;

    SharedPtr<ExternalSegmentWrappers> wrappers;
    Rational frameRate;
    // Whatever fails or throws on the way, a composition that is not adopted whole is none.
    const Status status = guarded("setComposition()", [&] {
        if (m_externalSegmentCache.isEnabled() && !externalSegments.empty()) {
            wrappers = ExternalSegmentWrappers::create(&m_externalSegmentCache, externalSegments);
        }
        const Status result =
            graphEngine->setComposition(composition, wrappers ? wrappers->getSegments() : externalSegments,
                                        m_videoResolution, getDefaultSourceVideoFrameRate());
        frameRate = graphEngine->getVideoFrameRate();
        if (isAdoption(result)) _observeSegments(externalSegments);
        return result;
    });
    const bool isAdopted = isAdoption(status);
    if (!isAdopted) _retireSegments();

    m_externalSegments = isAdopted ? wrappers : nullptr;
    SharedPtr<Composition> replacement = isAdopted ? composition : nullptr;
    const std::lock_guard lock(m_engineMutex);
    m_composition.swap(replacement);
    if (isAdopted) m_videoFrameRate = frameRate;
    return status;
}

void PlayerImpl::_observeSegments(List<SharedPtr<ExternalSegment>> const& segments) {
    {
        List<SharedPtr<ExternalSegment>> replacement = segments;
        const std::lock_guard lock(m_engineMutex);
        m_retiredSegments.splice(std::exchange(m_observedSegments, std::move(replacement)));
    }
    for (auto const& segment : segments) {
        if (Subject* const subject = segment ? segment->getSubject() : nullptr) subject->addObserver(this);
    }
}

void PlayerImpl::_retireSegments() {
    const std::lock_guard lock(m_engineMutex);
    m_retiredSegments.splice(std::move(m_observedSegments));
}

void PlayerImpl::_leaveRetiredSegments() {
    // Not on the player thread: ending a registration waits for an update that is under way, and a host's observer may
    // be waiting for the player thread in it.
    List<SharedPtr<ExternalSegment>> retired;
    {
        const std::lock_guard lock(m_engineMutex);
        std::swap(m_retiredSegments, retired);
    }
    for (auto const& segment : retired) {
        (void)guarded("leaving an external segment", [&] {
            Subject* const subject = segment ? segment->getSubject() : nullptr;
            if (!subject || _isObserving(subject)) return;
            subject->removeObserver(this);
            if (_isObserving(subject)) subject->addObserver(this);  // it has come back on another thread meanwhile
        });
    }
}

void PlayerImpl::_leaveAllSegments() {
    _retireSegments();
    _leaveRetiredSegments();
}

bool PlayerImpl::_isObserving(Subject* subject) const {
    List<SharedPtr<ExternalSegment>> observed;  // a copy: hosts' code is not called under the lock
    {
        const std::lock_guard lock(m_engineMutex);
        observed = m_observedSegments;
    }
    return std::any_of(observed.begin(), observed.end(),
                       [&](auto const& segment) { return segment && segment->getSubject() == subject; });
}

Status PlayerImpl::_updateComposition(SharedPtr<Composition> const& composition, String const& description) {
    if (m_producing) return Status::not_while_producing;
    const auto graphEngine = _graphEngine();
    return graphEngine ? graphEngine->updateComposition(composition, description) : Status::general_failure;
}

Status PlayerImpl::_setVideoResolution(VideoBufferResolution const& resolution) {
    if (!resolution.isValid()) return Status::invalid_argument;
    const VideoBufferResolution current = getVideoResolution();
    if (resolution == current) return Status();
    if (m_producing) return Status::not_while_producing;

    if (const Status status = _makeContextCurrent(); status.failure()) return status;
    (void)m_producerCache->clear();
    for (ResourcePool* const pool :
         {static_cast<ResourcePool*>(m_fboPool.get()), static_cast<ResourcePool*>(m_ramPool.get())}) {
        if (!pool->isInitialized()) continue;
        if (const Status status = pool->setResolution(resolution); status.failure()) return status;
    }
    if (m_pixelBuffer && resolution.getBufferSize() > current.getBufferSize()) _deletePixelBuffer();
    if (Trace::isOn()) _countPools();

    const std::lock_guard lock(m_engineMutex);
    m_videoResolution = resolution;
    return Status();
}

Status PlayerImpl::_setVideoFrameRate(Rational const& rate) {
    if (m_producing) return Status::not_while_producing;
    if (!_composition()) return Status::no_composition;
    (void)m_producerCache->clear();
    const auto graphEngine = _graphEngine();
    const Status status = graphEngine->setVideoFrameRate(rate);
    if (status.failure()) return status;
    const Rational result = graphEngine->getVideoFrameRate();
    const std::lock_guard lock(m_engineMutex);
    m_videoFrameRate = result;
    return status;
}

Status PlayerImpl::_setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format) {
    if (m_producing) return Status::not_while_producing;
    ConstSharedPtr<AudioFormatInterface> replacement = format;
    const std::lock_guard lock(m_engineMutex);
    if (m_audioFormat == format) return Status();
    m_audioFormat.swap(replacement);
    return Status();
}

Status PlayerImpl::_setRamOutputs(bool ramOutputs) {
    if (ramOutputs == m_ramOutputs) return Status();
    if (m_producing) return Status::not_while_producing;
    (void)m_producerCache->clear();
    if (!ramOutputs) _deletePixelBuffer();
    m_ramOutputs.exchange(ramOutputs);
    return m_initialized ? _resizePools() : Status();
}

Status PlayerImpl::_setPref(String const& name, int value) {
    const String variable = "QRT_PREF_" + name;
    if (Platform::getenv(variable.c_str())) return Status();  // the environment fixes the value for the whole process
    if (m_producing) return Status::not_while_producing;
    if (name == Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES) return _setFrameCountPref(m_producerCacheNbHeadFrames, value);
    if (name == Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES) return _setFrameCountPref(m_producerCacheNbTailFrames, value);
    const auto graphEngine = _graphEngine();
    return graphEngine ? graphEngine->setPref(name, value) : Status::general_failure;
}

Status PlayerImpl::_setFrameCountPref(std::atomic<int32>& count, int value) {
    if (value < 0) return Status::invalid_argument;
    return count.exchange(value) == value ? Status() : _resizePools();
}

Status PlayerImpl::_getPref(String const& name, int& value) const {
    if (name == Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES) {
        value = m_producerCacheNbHeadFrames;
        return Status();
    }
    if (name == Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES) {
        value = m_producerCacheNbTailFrames;
        return Status();
    }
    const auto graphEngine = _graphEngine();
    return graphEngine ? graphEngine->getPref(name, value) : Status::general_failure;
}

Status PlayerImpl::_resizePools() {
    const uint64 size = _poolSize();
    const VideoBufferResolution resolution = getVideoResolution();
    // The player thread sets its pools up before it declares the engine initialized.
    if (m_initialized || QThread::currentThread() == this) {
        if (!m_isContextUsable) return Status::general_failure;
        if (const Status status = _makeContextCurrent(); status.failure()) return status;
        const Status status = m_fboPool->setup(size, ResourcePool::SizeUnit::buffers, resolution);
        if (status.failure()) return status;
    }
    const Status status = m_ramPool->setup(m_ramOutputs ? size : 0, ResourcePool::SizeUnit::buffers, resolution);
    if (Trace::isOn()) _countPools();
    return status;
}

uint64 PlayerImpl::_poolSize() const {
    constexpr int64 spareBuffers = 2;  // the current frame, and one in reserve for a host that waits
    const int64 size = int64{m_producerCacheNbHeadFrames} + m_producerCacheNbTailFrames + spareBuffers;
    return static_cast<uint64>(std::max<int64>(size, 0));  // the environment's numbers may be negative
}

}  // namespace QRT_0_81
