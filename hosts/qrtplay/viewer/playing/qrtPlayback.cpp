#include "viewer/playing/qrtPlayback.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace qrtplay {

namespace {

constexpr int fastestShuttle = 8;

int directionOf(int64 number) {
    return number < 0 ? -1 : 1;
}

}  // namespace

Playback::Playback(MediaClock const& wallClock, SoundOutput* sound, QObject* parent)
    : QObject(parent), m_wallClock(wallClock), m_sound(sound), m_clock(wallClock) {
    qRegisterMetaType<FetchedFrame>("qrtplay::FetchedFrame");
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Playback::onTick);
}

Playback::~Playback() {
    if (m_pacer) endRun();
    if (m_fetcher) m_fetcher->stop();
    m_fetcher.reset();
}

void Playback::setPlayer(TimelinePlayer* player, int64 frame) {
    if (m_pacer) endRun();
    if (m_fetcher) m_fetcher->stop();
    m_fetcher.reset();
    m_fetched.clear();  // what has come and was not yet taken; nobody fetches now
    m_player = player;
    m_in.reset();
    m_out.reset();
    m_frame = clamped(frame);
    m_frameOnShow.reset();
    m_isScrubbing = false;
    m_resumeStep.reset();
    m_step = m_stride;
    m_heading = 1;
    m_statistics = {};
    m_toldFailure.clear();
    m_shownAt.clear();
    if (m_player) {
        m_fetcher =
            std::make_unique<FrameFetcher>(*m_player, [this](FetchedFrame fetched) { deliver(std::move(fetched)); });
        produceAround();
        fetchStill();
    }
    emit rangeChanged();
    emit stateChanged();
}

FrameSpan Playback::whole() const noexcept {
    return {0, m_player ? m_player->frameCount() - 1 : -1};
}

FrameSpan Playback::range() const noexcept {
    const FrameSpan all = whole();
    return {m_in.value_or(all.first), m_out.value_or(all.last)};
}

Playback::Statistics Playback::statistics() const {
    Statistics statistics = m_statistics;
    if (m_pacer) statistics.counts = m_pacer->counts();
    if (m_shownAt.size() < 2) return statistics;
    const int64 end = m_pacer ? m_wallClock.nanoseconds() : m_shownAt.back();
    const auto first = std::find_if(m_shownAt.begin(), m_shownAt.end(),
                                    [end](int64 time) { return time >= end - nanosecondsPerSecond; });
    const auto count = m_shownAt.end() - first;
    if (count < 2 || m_shownAt.back() == *first) return statistics;
    const double seconds = static_cast<double>(m_shownAt.back() - *first) / nanosecondsPerSecond;
    statistics.rate = static_cast<double>(count - 1) / seconds;
    return statistics;
}

void Playback::play(int step) {
    if (!m_fetcher || step == 0 || whole().last < 0) return;
    m_isScrubbing = false;
    m_resumeStep.reset();
    if (m_pacer && step == m_step) return;
    m_step = step;
    m_heading = directionOf(step);
    if (m_pacer) {
        replan(step);
    } else {
        m_hasShown = false;
        m_shownAt.clear();
        m_clock.set(0);
        startRun(orderToPlay(step), 0);
    }
    emit stateChanged();
}

void Playback::pause() {
    m_resumeStep.reset();
    if (!m_pacer) return;
    stopRun();
    if (m_frameOnShow != m_frame) fetchStill();
    emit stateChanged();
}

void Playback::togglePlay() {
    if (m_pacer)
        pause();
    else
        play(m_step);
}

void Playback::shuttle(int direction) {
    if (direction == 0) return;
    const bool isFaster = m_pacer && directionOf(m_step) == directionOf(direction);
    const int fastest = std::max(std::abs(m_step), fastestShuttle * m_stride);
    const int speed = isFaster ? std::min(2 * std::abs(m_step), fastest) : m_stride;
    play(directionOf(direction) * speed);
}

void Playback::seek(int64 frame) {
    if (!m_fetcher) return;
    m_isScrubbing = false;
    m_resumeStep.reset();
    const bool wasPlaying = isPlaying();
    if (wasPlaying) endRun();
    m_step = directionOf(m_step) * m_stride;
    goTo(frame, wasPlaying);
    if (wasPlaying) emit stateChanged();
}

void Playback::scrub(int64 frame) {
    if (!m_fetcher) return;
    const bool wasPlaying = isPlaying();
    if (wasPlaying) {
        m_resumeStep = m_step;
        endRun();
    }
    if (!std::exchange(m_isScrubbing, true)) m_firstOnTheWay = m_request + 1;
    goTo(frame, wasPlaying);
    if (wasPlaying) emit stateChanged();
}

void Playback::endScrub() {
    m_isScrubbing = false;
    if (m_resumeStep) play(*m_resumeStep);
}

void Playback::setInPoint(std::optional<int64> frame) {
    if (!m_fetcher) return;
    if (frame) frame = clamped(*frame);
    setPoints(frame, frame && m_out && *frame > *m_out ? std::nullopt : m_out);
}

void Playback::setOutPoint(std::optional<int64> frame) {
    if (!m_fetcher) return;
    if (frame) frame = clamped(*frame);
    setPoints(frame && m_in && *frame < *m_in ? std::nullopt : m_in, frame);
}

void Playback::clearPoints() {
    setPoints(std::nullopt, std::nullopt);
}

void Playback::setPoints(std::optional<int64> in, std::optional<int64> out) {
    if (in == m_in && out == m_out) return;
    const FrameSpan before = range();
    m_in = in;
    m_out = out;
    if (m_pacer && before != range()) replanWithHeading();
    emit rangeChanged();
}

void Playback::setMode(PlayParams::PlayMode mode) {
    if (mode == m_mode) return;
    m_mode = mode;
    if (m_pacer) replanWithHeading();
    emit stateChanged();
}

void Playback::setPolicy(PacePolicy policy) {
    if (policy == m_policy) return;
    m_policy = policy;
    if (m_pacer) replanWithHeading();
    emit stateChanged();
}

void Playback::setStride(int frames) {
    const int stride = std::max(1, frames);
    if (stride == m_stride) return;
    const int speed = m_pacer ? std::max(1, std::abs(m_step) / m_stride) : 1;
    m_stride = stride;
    const int step = directionOf(m_step) * speed * stride;
    if (m_pacer) {
        play(step);
    } else {
        m_step = step;
        emit stateChanged();
    }
}

void Playback::setMuted(bool muted) {
    if (muted == m_isMuted) return;
    m_isMuted = muted;
    if (m_sound) m_sound->setVolume(m_isMuted ? 0 : m_volume);
    emit stateChanged();
}

void Playback::setVolume(double volume) {
    m_volume = std::clamp(volume, 0.0, 1.0);
    if (m_sound && !m_isMuted) m_sound->setVolume(m_volume);
}

void Playback::refresh() {
    if (!m_fetcher) return;
    if (m_pacer)
        fetchNext();
    else
        fetchStill();
}

void Playback::reconfigure(std::function<void(TimelinePlayer&)> const& change) {
    if (!m_fetcher) return;
    if (m_pacer) {
        m_fetcher->finish();  // a run that has just been asked for renders ahead by now
        change(*m_player);
        return;
    }
    m_fetcher->stop();
    change(*m_player);
    produceAround();
    fetchStill();
}

// On the fetcher's thread. A frame that waits here while the next one comes has been overtaken: kept, it would take one
// of the few that the player can lend.
void Playback::deliver(FetchedFrame fetched) {
    FetchedFrame overtaken;  // let go of after the lock
    {
        const std::lock_guard lock(m_fetchedMutex);
        const bool isFrame = fetched.request != 0;
        if (isFrame && !m_fetched.empty() && m_fetched.back().request != 0) {
            overtaken = std::exchange(m_fetched.back(), std::move(fetched));
        } else {
            m_fetched.push_back(std::move(fetched));
        }
    }
    QMetaObject::invokeMethod(this, "takeFetched", Qt::QueuedConnection);
}

void Playback::takeFetched() {
    while (true) {
        FetchedFrame frame;
        {
            const std::lock_guard lock(m_fetchedMutex);
            if (m_fetched.empty()) return;
            frame = std::move(m_fetched.front());
            m_fetched.pop_front();
        }
        accept(std::move(frame));
    }
}

void Playback::accept(FetchedFrame frame) {
    if (frame.request == 0) {
        emit noticed(QString::fromStdString(frame.failure));
        return;
    }
    m_statistics.fetchTime = frame.nanoseconds;
    if (frame.failure.empty()) ++(frame.wasReady ? m_statistics.cacheHits : m_statistics.onDemand);
    const bool isNewest = frame.request == m_request;
    if (m_pacer) {
        if (!isNewest) return;
        m_fetchTime = m_wallClock.nanoseconds() - m_requestedAt;
        m_kept = std::move(frame);
        onTick();
        return;
    }
    const bool isOnTheWay = frame.request >= m_firstOnTheWay && frame.request > m_shownRequest;
    if (!isNewest && !isOnTheWay) return;
    m_shownRequest = frame.request;
    show(frame);
}

void Playback::show(FetchedFrame const& frame) {
    m_frameOnShow = frame.frame;
    emit frameShown(frame);
}

void Playback::goTo(int64 frame, bool wasPlaying) {
    const int64 before = std::exchange(m_frame, clamped(frame));
    const int64 distance = m_frame - before;
    // Who steps, goes on stepping that way; a jump says nothing.
    const bool isStep = std::abs(distance) == 1 || std::abs(distance) == m_stride;
    // While an arrow key is held down, frames on the way are to be seen; not so those between two places far apart.
    if (!isStep && !m_isScrubbing) m_firstOnTheWay = m_request + 1;
    const bool hasTurned = isStep && directionOf(distance) != m_heading;
    if (hasTurned) m_heading = -m_heading;
    if (hasTurned || wasPlaying) produceAround();
    fetchStill();
}

void Playback::fetchStill() {
    if (whole().last >= 0) m_fetcher->fetch(m_frame, ++m_request);
}

void Playback::produceAround() {
    const FrameSpan all = whole();
    if (all.last >= 0)
        m_fetcher->produce(m_player->parameters(all.first, all.last, m_frame, m_heading, PlayParams::single));
}

int64 Playback::clamped(int64 frame) const noexcept {
    return std::clamp<int64>(frame, 0, std::max<int64>(0, whole().last));
}

}  // namespace qrtplay
