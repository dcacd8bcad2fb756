#include "player/qrtPlayer.h"

#include "qrtPlayerImpl.h"

namespace QRT_0_81 {

SharedPtr<Player> Player::create(VideoBufferResolution const& resolution,
                                 SharedPtr<GraphEngineInterface> (*graphEngineFactory)()) {
    return SharedPtr<Player>(new Player(resolution, graphEngineFactory));
}

Player::Player(VideoBufferResolution const& resolution, SharedPtr<GraphEngineInterface> (*graphEngineFactory)())
    : m_impl(new PlayerImpl(resolution, graphEngineFactory)) {}

Player::~Player() {
    delete m_impl;
    m_impl = nullptr;
}

Status Player::setPref(String const& name, int value) {
    return m_impl->setPref(name, value);
}

Status Player::getPref(String const& name, int& value) const {
    return m_impl->getPref(name, value);
}

Status Player::getPrefs(Vector<String>& names) const {
    return m_impl->getPrefs(names);
}

Status Player::initialize(void* nativeContext, void* nativeWindow) {
    return m_impl->initialize(nativeContext, nativeWindow);
}

Status Player::uninitialize() {
    return m_impl->uninitialize();
}

Status Player::setComposition(SharedPtr<Composition> const& composition,
                              List<SharedPtr<ExternalSegment>> const& externalSegments) {
    return m_impl->setComposition(composition, externalSegments);
}

Status Player::updateComposition(SharedPtr<Composition> const& composition, String const& description) {
    return m_impl->updateComposition(composition, description);
}

bool Player::isVideoBufferReady(int64 frame) {
    return m_impl->isVideoBufferReady(frame);
}

Status Player::getVideoBuffer(int64 frame, SharedPtr<VideoBuffer>& buffer) {
    return m_impl->getVideoBuffer(frame, buffer);
}

Status Player::fillAudioBuffer(char* data, uint64 size, uint64 position) {
    return m_impl->fillAudioBuffer(data, size, position);
}

Status Player::startProducing(SharedPtr<PlayParams> const& params) {
    return m_impl->startProducing(params);
}

Status Player::stopProducing() {
    return m_impl->stopProducing();
}

Status Player::setVideoResolution(VideoBufferResolution const& resolution) {
    return m_impl->setVideoResolution(resolution);
}

VideoBufferResolution Player::getVideoResolution() const {
    return m_impl->getVideoResolution();
}

Status Player::setVideoFrameRate(Rational const& rate) {
    return m_impl->setVideoFrameRate(rate);
}

Rational Player::getVideoFrameRate() const {
    return m_impl->getVideoFrameRate();
}

Status Player::setDefaultSourceVideoFrameRate(Rational const& rate) {
    return m_impl->setDefaultSourceVideoFrameRate(rate);
}

Rational const Player::getDefaultSourceVideoFrameRate() const {
    return m_impl->getDefaultSourceVideoFrameRate();
}

Status Player::setExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode,
                                                 uint64 firstSize, uint64 secondSize) {
    return m_impl->externalSegmentCache().setConstraint(type, mode, firstSize, secondSize);
}

void Player::getExternalSegmentCacheConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode,
                                               uint64& firstSize, uint64& secondSize) const {
    m_impl->externalSegmentCache().getConstraint(type, mode, firstSize, secondSize);
}

Status Player::setAudioFormat(ConstSharedPtr<AudioFormatInterface> const& format) {
    return m_impl->setAudioFormat(format);
}

ConstSharedPtr<AudioFormatInterface> Player::getAudioFormat() const {
    return m_impl->getAudioFormat();
}

Status Player::setRamOutputs(bool ramOutputs) {
    return m_impl->setRamOutputs(ramOutputs);
}

bool Player::getRamOutputs() const {
    return m_impl->getRamOutputs();
}

Status Player::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    return m_impl->getCacheStats(type, stats);
}

void Player::addObserver(Observer* observer) {
    m_impl->addObserver(observer);
}

void Player::removeObserver(Observer* observer) {
    m_impl->removeObserver(observer);
}

SharedPtr<TokenResolver> Player::getTokenResolver() const {
    return m_impl->getTokenResolver();
}

GraphEngineInterface const* Player::getGraphEngine() const {
    return m_impl->getGraphEngine();
}

}  // namespace QRT_0_81
