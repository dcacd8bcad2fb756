// A run of playback: from its first frame to its end, with its sound.
#include <algorithm>
#include <utility>

#include "viewer/playing/qrtPlayback.h"

namespace qrtplay {

namespace {

constexpr int64 samplesToBeginWith = 4800;  // a tenth of a second
constexpr int feedPollInMs = 5;
constexpr int64 longestWaitForFeed = 2 * nanosecondsPerSecond;
constexpr int64 shortestTimeBetweenWaits = 5 * nanosecondsPerSecond;

}  // namespace

SharedPtr<PlayParams> Playback::orderToPlay(int step) const {
    const FrameSpan span = range();
    SharedPtr<PlayParams> order = m_player->parameters(span.first, span.last, m_frame, step, m_mode);
    const bool isOutside = m_frame < span.first || m_frame > span.last;
    if (isOutside || !order->clone()->next()) order->setCurrentFrame(step > 0 ? span.first : span.last);
    return order;
}

void Playback::startRun(SharedPtr<PlayParams> const& order, int64 at) {
    m_pacer = std::make_unique<Pacer>(*order, m_player->rate(), m_policy, at);
    m_isBegun = false;
    m_waitedAt.reset();
    m_fetcher->produce(order);
    makeFeed();
    fetchNext();
}

// Goes on by other rules with the frame after the one on show.
void Playback::replan(int step) {
    const int64 now = m_clock.now();
    const auto next = m_pacer->next();
    const int64 due = std::clamp(next ? next->dueAt : m_endAt, now, now + m_pacer->frameTime());
    const FrameSpan span = range();
    SharedPtr<PlayParams> order = orderToPlay(step);
    if (m_hasShown && m_frame >= span.first && m_frame <= span.last) {
        order->setCurrentFrame(m_frame);
        if (!order->next()) {
            stopRun();
            emit stateChanged();
            emit ended();
            return;
        }
    }
    silence();
    m_clock.set(now);
    startRun(order, due);
}

// As `replan`, in the direction in which it plays: not that of the step on the way back in `ping_pong`.
void Playback::replanWithHeading() {
    const int present = m_pacer->order().getStep();
    replan(m_mode == PlayParams::ping_pong && present == -m_step ? present : m_step);
}

// False as long as there is something to wait for.
bool Playback::begin() {
    const auto next = m_pacer->next();
    if (!next || !m_kept) return false;
    const int64 now = m_clock.now();
    if (now < next->dueAt) {
        wakeAt(next->dueAt, now);
        return false;
    }
    const bool isOverdue = m_wallClock.nanoseconds() - m_feedMadeAt >= longestWaitForFeed;
    if (m_feed && !isOverdue && !m_feed->waitFor(samplesToBeginWith, 0)) {
        m_timer.start(feedPollInMs);
        return false;
    }
    m_isBegun = true;
    m_fetchTime = 0;  // the first one was fetched before anything was rendered ahead
    m_clock.set(next->dueAt);
    if (m_feed) startSound(next->dueAt);
    return m_pacer && m_isBegun;
}

void Playback::onTick() {
    if (!m_pacer) return;
    if (!m_isBegun && !begin()) return;
    const int64 now = m_clock.now();
    if (m_followsSound && !m_clock.followsSound()) {
        loseSound(tr("The sound device was lost. Playing goes on without sound."));
        if (!m_pacer) return;
    }
    if (m_feed) tellFailureOf(*m_feed);
    if (!m_pacer) return;
    const auto next = m_pacer->next();
    if (!next && now >= m_endAt) {
        stopRun();
        emit stateChanged();
        emit ended();
    } else if (!next) {
        wakeAt(m_endAt, now);
    } else if (m_kept && now < next->dueAt) {
        wakeAt(next->dueAt, now);
    } else if (m_kept) {
        showDue(*next, now);
    }
}

void Playback::showDue(Pacer::Tick const& tick, int64 now) {
    const FetchedFrame frame = *std::exchange(m_kept, std::nullopt);
    const int64 lateBefore = m_pacer->counts().late;
    bool isShown = true;
    if (frame.failure.empty())
        isShown = m_pacer->hasCome(now, m_fetchTime) == Pacer::Verdict::show;
    else
        m_pacer->giveUp(now, m_fetchTime);
    const bool isLate = m_pacer->counts().late > lateBefore;
    if (!m_pacer->next()) {
        m_endAt = (isLate ? now : tick.dueAt) + m_pacer->frameTime();
        wakeAt(m_endAt, now);
    }
    fetchNext();
    if (!isShown) return;
    m_frame = frame.frame;
    m_hasShown = true;
    const int64 wall = m_wallClock.nanoseconds();
    m_shownAt.push_back(wall);
    while (m_shownAt.front() < wall - nanosecondsPerSecond)
        m_shownAt.pop_front();
    show(frame);
    if (isLate && m_followsSound && m_policy == PacePolicy::every_frame) waitForPictures(now);
}

void Playback::fetchNext() {
    m_kept.reset();
    const auto next = m_pacer->next();
    if (!next) return;
    m_requestedAt = m_wallClock.nanoseconds();
    m_fetcher->fetch(next->frame, ++m_request);
}

void Playback::wakeAt(int64 time, int64 now) {
    constexpr int64 perMillisecond = 1'000'000;
    constexpr int64 longestSleepInMs = 1000;
    const int64 wait = (std::max<int64>(0, time - now) + perMillisecond - 1) / perMillisecond;
    m_timer.start(static_cast<int>(std::min(wait, longestSleepInMs)));
}

void Playback::endRun() {
    m_firstOnTheWay = m_request + 1;  // what the run has asked for last is of the past
    m_timer.stop();
    silence();
    m_statistics.counts = m_pacer->counts();
    m_pacer.reset();
    m_kept.reset();
    ++m_request;  // what is under way was for the run
}

// Ends the run where it is; the speed is the normal one from then on.
void Playback::stopRun() {
    endRun();
    m_step = m_step < 0 ? -m_stride : m_stride;
    produceAround();
}

void Playback::makeFeed() {
    if (!m_sound || m_step != 1 || !m_player->hasSound()) return;
    m_feed = std::make_unique<SoundFeed>(*m_player, m_pacer->order(), m_player->rate());
    m_feedMadeAt = m_wallClock.nanoseconds();
}

void Playback::startSound(int64 at) {
    m_sound->setVolume(m_isMuted ? 0 : m_volume);
    if (const Outcome outcome = m_sound->start(*m_feed); outcome.failed()) {
        m_feed.reset();
        if (!std::exchange(m_saidNoDevice, true)) emit noticed(QString::fromStdString(outcome.message()));
        return;
    }
    m_followsSound = true;
    m_clock.follow(*m_sound, at);
    emit stateChanged();
}

void Playback::silence() {
    if (std::exchange(m_followsSound, false)) m_sound->stop();
    m_feed.reset();
}

void Playback::tellFailureOf(SoundFeed const& feed) {
    const std::string failure = feed.failure();
    if (failure.empty() || failure == std::exchange(m_toldFailure, failure)) return;
    emit noticed(QString::fromStdString(failure));
}

void Playback::loseSound(QString const& text) {
    silence();
    emit noticed(text);
    emit stateChanged();
}

// The grid has moved, and the sound must not run away.
void Playback::waitForPictures(int64 now) {
    if (!m_pacer->next()) return;
    const bool isAgain = m_waitedAt && now - *m_waitedAt < shortestTimeBetweenWaits;
    m_clock.set(now);
    m_waitedAt = now;
    if (isAgain) {
        loseSound(tr("The pictures cannot keep up with the sound. Every frame is shown, without sound."));
        return;
    }
    silence();
    makeFeed();
    m_isBegun = false;
}

}  // namespace qrtplay
