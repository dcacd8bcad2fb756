#include "player/qrtPlayParams.h"

#include <cmath>
#include <limits>

#include "qrtGuarded.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

/// The last frame of a range, never before its first; saturates.
int64 lastFrame(int64 first, int64 count) {
    if (count <= 0) return first;
    const int64 most = std::numeric_limits<int64>::max();
    return first > most - (count - 1) ? most : first + (count - 1);
}

/// `value` without its fraction. The limits of 64 bits are no doubles but for the lower one: 2^63 itself does not fit.
int64 truncated(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (value >= limit) return std::numeric_limits<int64>::max();
    if (value < -limit) return std::numeric_limits<int64>::min();
    return static_cast<int64>(value);
}

}  // namespace

SharedPtr<PlayParams> PlayParams::create(Time const& current, Time const& start, Time const& duration,
                                         Rational const& frameRate, int step, PlayMode playMode,
                                         ProductionMode productionMode) {
    return guardedOr(SharedPtr<PlayParams>(), "PlayParams::create()", [&] {
        return SharedPtr<PlayParams>(
            new PlayParams(current, start, duration, frameRate, step, playMode, productionMode));
    });
}

PlayParams::PlayParams(Time const& current, Time const& start, Time const& duration, Rational const& frameRate,
                       int step, PlayMode playMode, ProductionMode productionMode)
    : m_private(new PlayParamsPrivate) {
    m_private->currentFrame = getFrame(current, frameRate);
    m_private->startFrame = getFrame(start, frameRate);
    m_private->endFrame = lastFrame(m_private->startFrame, getFrame(duration, frameRate));
    m_private->frameRate = frameRate;
    m_private->step = step;
    m_private->playMode = playMode;
    m_private->productionMode = productionMode;
}

PlayParams::PlayParams(PlayParams const& other)
    : RefCountedMT(other), m_private(new PlayParamsPrivate(*other.m_private)) {}

PlayParams::~PlayParams() {
    delete m_private;
}

SharedPtr<PlayParams> PlayParams::clone() {
    return guardedOr(SharedPtr<PlayParams>(), "PlayParams::clone()",
                     [this] { return SharedPtr<PlayParams>(new PlayParams(*this)); });
}

PlayParams& PlayParams::operator=(PlayParams const& other) {
    if (m_private != other.m_private && m_private && other.m_private) *m_private = *other.m_private;
    return *this;
}

bool PlayParams::operator==(PlayParams const& other) const {
    if (!m_private || !other.m_private) return false;
    return m_private == other.m_private || *m_private == *other.m_private;
}

int64 PlayParams::getCurrentFrame() const {
    return m_private->currentFrame;
}

int64 PlayParams::getStartFrame() const {
    return m_private->startFrame;
}

int64 PlayParams::getEndFrame() const {
    return m_private->endFrame;
}

Rational const& PlayParams::getFrameRate() const {
    return m_private->frameRate;
}

int PlayParams::getStep() const {
    return m_private->step;
}

PlayParams::PlayMode PlayParams::getPlayMode() const {
    return m_private->playMode;
}

PlayParams::ProductionMode PlayParams::getProductionMode() const {
    return m_private->productionMode;
}

void PlayParams::setCurrentFrame(int64 frame) {
    m_private->currentFrame = frame;
}

void PlayParams::setStartFrame(int64 frame) {
    m_private->startFrame = frame;
}

void PlayParams::setEndFrame(int64 frame) {
    m_private->endFrame = frame;
}

void PlayParams::setStep(int step) {
    m_private->step = step;
}

void PlayParams::setPlayMode(PlayMode mode) {
    m_private->playMode = mode;
}

void PlayParams::setProductionMode(ProductionMode mode) {
    m_private->productionMode = mode;
}

int64 PlayParams::getFrame(Time const& time, Rational const& frameRate) {
    // The usual case without three divisions: below 2^50 ticks what they lose is less than what rounding forgives.
    constexpr int64 exactlyRounded = int64{1} << 50;
    const int64 ticks = time.getNbTicks();
    const bool isSameRate =
        time.getRate() == frameRate && frameRate.getNumerator() != 0 && frameRate.getDenominator() != 0;
    if (isSameRate && ticks >= 0 && ticks < exactlyRounded) return ticks;

    const double ticksPerSecond = time.getRate().getValue();
    double position = 0.0;
    if (std::abs(ticksPerSecond) > std::numeric_limits<double>::epsilon()) {
        position = static_cast<double>(time.getNbTicks()) / ticksPerSecond * frameRate.getValue();
    }
    return truncated(position + 0.5);
}

bool PlayParams::next() {
    return m_private->next();
}

Status PlayParams::seek(int64 frame) {
    return m_private->seek(frame);
}

}  // namespace QRT_0_81
