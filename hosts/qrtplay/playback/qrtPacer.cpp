#include "playback/qrtPacer.h"

#include "base/qrtExactTime.h"
#include "playback/qrtMediaClock.h"

namespace qrtplay {

namespace {

constexpr int64 mostSkippedInRow = 7;

int64 roundedNanoseconds(ExactTime const& time) {
    const int64 seconds = time.numerator() / time.denominator();
    const int64 rest = time.numerator() % time.denominator();
    return seconds * nanosecondsPerSecond + (rest * nanosecondsPerSecond + time.denominator() / 2) / time.denominator();
}

}  // namespace

Pacer::Pacer(PlayParams& order, Rational const& rate, PacePolicy policy, int64 startAt)
    : m_order(order.clone()),
      m_rate(rate),
      m_policy(policy),
      m_startAt(startAt),
      m_next(Tick{0, order.getCurrentFrame(), startAt}) {}

Pacer::Verdict Pacer::hasCome(int64 now, int64 fetchTime) {
    if (!m_next || now < m_next->dueAt) return Verdict::early;
    const bool isLate = now >= dueAt(m_next->number + 1);
    if (isLate && m_policy == PacePolicy::real_time && isToBeSkipped()) {
        skip();
        goOn(now, fetchTime);
        return Verdict::skip;
    }
    ++m_counts.shown;
    m_skippedInRow = 0;
    if (isLate) ++m_counts.late;
    if (isLate && m_policy == PacePolicy::every_frame) moveGrid(now);
    goOn(now, fetchTime);
    return Verdict::show;
}

void Pacer::giveUp(int64 now, int64 fetchTime) {
    if (!m_next) return;
    skip();
    goOn(now, fetchTime);
}

int64 Pacer::frameTime() const noexcept {
    return roundedNanoseconds(ExactTime::ofFrame(1, m_rate));
}

bool Pacer::isToBeSkipped() const {
    return m_skippedInRow < mostSkippedInRow && m_order->clone()->next();
}

void Pacer::skip() {
    ++m_counts.skipped;
    ++m_skippedInRow;
}

void Pacer::goOn(int64 now, int64 fetchTime) {
    if (!advance()) {
        m_next.reset();
        return;
    }
    if (m_policy == PacePolicy::every_frame) return;
    // Aiming at the middle of a frame's time leaves room for a fetch that takes a little longer than the last one.
    const int64 readyAt = now + fetchTime - frameTime() / 2;
    while (m_next->dueAt < readyAt && advance())
        skip();
}

// False, with nothing changed, after the last frame of a run that ends.
bool Pacer::advance() {
    const int64 before = m_order->getCurrentFrame();
    if (!m_order->next()) {
        m_order->setCurrentFrame(before);
        return false;
    }
    const int64 number = m_next->number + 1;
    m_next = Tick{number, m_order->getCurrentFrame(), dueAt(number)};
    return true;
}

// To where the frame of `next` is the one that is due now.
void Pacer::moveGrid(int64 now) {
    const int64 lateness = now - m_next->dueAt;
    m_delay += lateness / frameTime();
    if (dueAt(m_next->number) > now) --m_delay;
    if (dueAt(m_next->number + 1) <= now) ++m_delay;
}

int64 Pacer::dueAt(int64 tick) const noexcept {
    return m_startAt + roundedNanoseconds(ExactTime::ofFrame(tick + m_delay, m_rate));
}

}  // namespace qrtplay
