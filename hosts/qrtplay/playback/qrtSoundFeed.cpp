#include "playback/qrtSoundFeed.h"

#include <algorithm>
#include <chrono>

#include "playback/qrtTimelinePlayer.h"

// The ring needs no lock. Between m_position and m_filledTo it belongs to `read`; the rest belongs to the feed's
// thread, which never fills more than one length of the ring beyond m_position. Each moves its own end only after it is
// done with the samples that it gives away, and what it knows of the other end can only be too careful.

namespace qrtplay {

namespace {

// Large enough that asking the player for it costs nothing beside decoding, and small enough for a quick start and end.
constexpr int64 largestPortion = 2048;
constexpr int64 ringLength = SoundFeed::samplesAhead + largestPortion;

}  // namespace

static_assert(SoundFeed::channels == TimelinePlayer::soundChannels);

SoundFeed::SoundFeed(TimelinePlayer& player, PlayParams& order, Rational const& rate)
    : m_player(player),
      m_order(order, rate, TimelinePlayer::soundRate),
      m_ring(static_cast<size_t>(ringLength * channels)),
      m_thread([this] { run(); }) {}

SoundFeed::~SoundFeed() {
    m_isEnding = true;
    wakeUp();
    m_thread.join();
}

void SoundFeed::read(float* samples, int64 count) noexcept {
    if (count <= 0) return;
    const int64 position = m_position;
    const int64 present = std::clamp<int64>(m_filledTo - position, 0, count);
    for (int64 done = 0; done < present;) {
        const int64 slot = (position + done) % ringLength;
        const int64 portion = std::min(present - done, ringLength - slot);
        std::copy_n(m_ring.data() + slot * channels, portion * channels, samples + done * channels);
        done += portion;
    }
    std::fill(samples + present * channels, samples + count * channels, 0.0f);
    m_missed += count - present;
    m_position = position + count;
    wakeUp();
}

bool SoundFeed::waitFor(int64 count, int timeoutMs) {
    std::unique_lock lock(m_mutex);
    return m_filled.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                             [&] { return m_filledTo - m_position >= std::min(count, samplesAhead); });
}

std::string SoundFeed::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

// A count rather than a condition, which `read` could not announce without a lock.
void SoundFeed::wakeUp() noexcept {
    ++m_wakeUps;
    m_wakeUps.notify_one();
}

void SoundFeed::run() {
    // The count is taken before looking whether there is anything to do, so that no call is missed.
    for (int wakeUps = m_wakeUps; !m_isEnding; wakeUps = m_wakeUps) {
        if (!fillNext()) m_wakeUps.wait(wakeUps);
    }
}

/// Fills one portion of the ring; false when enough has been read ahead.
bool SoundFeed::fillNext() {
    const int64 position = m_position;
    const int64 from = std::max<int64>(m_filledTo, position);  // nobody will ask again for what was missed
    if (from - position >= samplesAhead) return false;
    const int64 slot = from % ringLength;
    const SoundOrder::Piece piece = m_order.pieceFrom(from, std::min(largestPortion, ringLength - slot));
    float* const samples = m_ring.data() + slot * channels;
    if (piece.first)
        readSound(*piece.first, piece.count, samples);
    else
        std::fill_n(samples, piece.count * channels, 0.0f);
    m_filledTo = from + piece.count;
    {
        const std::lock_guard lock(m_mutex);  // or a waiter might look before, and go to sleep after
    }
    m_filled.notify_all();
    return true;
}

void SoundFeed::readSound(int64 first, int64 count, float* samples) {
    const Outcome outcome = m_player.readSound(first, count, samples);
    if (outcome.success()) return;
    std::fill_n(samples, count * channels, 0.0f);
    const std::lock_guard lock(m_mutex);
    if (m_failure.empty()) m_failure = outcome.message();
}

}  // namespace qrtplay
