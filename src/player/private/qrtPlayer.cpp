#include "player/qrtPlayer.h"

#include <QCoreApplication>
#include <utility>

#include "qrtGuarded.h"
#include "qrtPlayerImpl.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

// No exception leaves the library: whatever hosts' own code throws when it is called back, and the want of memory,
// become a `Status` and a message here.

SharedPtr<Player> Player::create(VideoBufferResolution const& resolution,
                                 SharedPtr<GraphEngineInterface> (*graphEngineFactory)()) {
    return guardedOr(SharedPtr<Player>(), "Player::create()",
                     [&] { return SharedPtr<Player>(new Player(resolution, graphEngineFactory)); });
}

Player::Player(VideoBufferResolution const& resolution, SharedPtr<GraphEngineInterface> (*graphEngineFactory)())
    : m_impl(new PlayerImpl(resolution, graphEngineFactory)) {}

Player::~Player() {
    PlayerImpl* const impl = std::exchange(m_impl, nullptr);
    if (QThread::currentThread() != impl) {
        delete impl;
        return;
    }
    // The last reference has gone inside an update, or in the graph engine, on the very thread that would have to be
    // awaited. What the engine owns belongs to the GUI thread, which ends it when it gets there.
    const Status status = guarded("ending the player on its own thread", [impl] {
        QCoreApplication* const application = QCoreApplication::instance();
        const bool isPosted = application && QMetaObject::invokeMethod(
                                                 application, [impl] { delete impl; }, Qt::QueuedConnection);
        return isPosted ? Status() : Status(Status::general_failure);
    });
    if (status.failure())
        QRT_ENGINE_MESSAGE("the player stays: there is nobody to end it on another thread than its own");
}

Status Player::setPref(String const& name, int value) {
    return guarded("setPref()", [&] { return m_impl->setPref(name, value); });
}

Status Player::getPref(String const& name, int& value) const {
    return guarded("getPref()", [&] { return m_impl->getPref(name, value); });
}

Status Player::getPrefs(Vector<String>& names) const {
    return guarded("getPrefs()", [&] { return m_impl->getPrefs(names); });
}

Status Player::initialize(void* nativeContext, void* nativeWindow) {
    return guarded("initialize()", [&] { return m_impl->initialize(nativeContext, nativeWindow); });
}

Status Player::uninitialize() {
    return guarded("uninitialize()", [&] { return m_impl->uninitialize(); });
}

Status Player::setComposition(SharedPtr<Composition> const& composition,
                              List<SharedPtr<ExternalSegment>> const& externalSegments) {
    return guarded("setComposition()", [&] { return m_impl->setComposition(composition, externalSegments); });
}

Status Player::updateComposition(SharedPtr<Composition> const& composition, String const& description) {
    return guarded("updateComposition()", [&] { return m_impl->updateComposition(composition, description); });
}

bool Player::isVideoBufferReady(int64 frame) {
    return guardedOr(false, "isVideoBufferReady()", [&] { return m_impl->isVideoBufferReady(frame); });
}

Status Player::getVideoBuffer(int64 frame, SharedPtr<VideoBuffer>& buffer) {
    return guarded("getVideoBuffer()", [&] { return m_impl->getVideoBuffer(frame, buffer); });
}

Status Player::fillAudioBuffer(char* data, uint64 size, uint64 position) {
    return guarded("fillAudioBuffer()", [&] { return m_impl->fillAudioBuffer(data, size, position); });
}

Status Player::startProducing(SharedPtr<PlayParams> const& params) {
    return guarded("startProducing()", [&] { return m_impl->startProducing(params); });
}

Status Player::stopProducing() {
    return guarded("stopProducing()", [&] { return m_impl->stopProducing(); });
}

Status Player::setVideoResolution(VideoBufferResolution const& resolution) {
    return guarded("setVideoResolution()", [&] { return m_impl->setVideoResolution(resolution); });
}

VideoBufferResolution Player::getVideoResolution() const {
    return m_impl->getVideoResolution();
}

Status Player::setVideoFrameRate(Rational const& rate) {
    return guarded("setVideoFrameRate()", [&] { return m_impl->setVideoFrameRate(rate); });
}

Rational Player::getVideoFrameRate() const {
    return m_impl->getVideoFrameRate();
}

Status Player::setDefaultSourceVideoFrameRate(Rational const& rate) {
    return guarded("setDefaultSourceVideoFrameRate()", [&] { return m_impl->setDefaultSourceVideoFrameRate(rate); });
}

Rational const Player::getDefaultSourceVideoFrameRate() const {
    return m_impl->getDefaultSourceVideoFrameRate();
}

Status Player::setExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode,
                                                 uint64 firstSize, uint64 secondSize) {
    return guarded("setExternalSegmentCacheConstraint()",
                   [&] { return m_impl->externalSegmentCache().setConstraint(type, mode, firstSize, secondSize); });
}

void Player::getExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode,
                                               uint64& firstSize, uint64& secondSize) const {
    m_impl->externalSegmentCache().getConstraint(type, mode, firstSize, secondSize);
}

Status Player::setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format) {
    return guarded("setAudioFormat()", [&] { return m_impl->setAudioFormat(format); });
}

ConstSharedPtr<AudioFormatInterface> Player::getAudioFormat() const {
    return m_impl->getAudioFormat();
}

Status Player::setRamOutputs(bool ramOutputs) {
    return guarded("setRamOutputs()", [&] { return m_impl->setRamOutputs(ramOutputs); });
}

bool Player::getRamOutputs() const {
    return m_impl->getRamOutputs();
}

Status Player::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    return guarded("getCacheStats()", [&] { return m_impl->getCacheStats(type, stats); });
}

void Player::addObserver(Observer* observer) {
    (void)guarded("addObserver()", [&] { m_impl->addObserver(observer); });
}

void Player::removeObserver(Observer* observer) {
    m_impl->removeObserver(observer);
}

SharedPtr<TokenResolver> Player::getTokenResolver() const {
    return guardedOr(SharedPtr<TokenResolver>(), "getTokenResolver()", [&] { return m_impl->getTokenResolver(); });
}

GraphEngineInterface const* Player::getGraphEngine() const {
    return m_impl->getGraphEngine();
}

}  // namespace QRT_0_81
