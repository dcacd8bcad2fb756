#include "playback/qrtFrameFetcher.h"

#include <chrono>
#include <utility>

namespace qrtplay {

FrameFetcher::FrameFetcher(TimelinePlayer& player, Deliver deliver)
    : m_player(player), m_deliver(std::move(deliver)), m_puller(player), m_thread([this] { run(); }) {}

FrameFetcher::~FrameFetcher() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void FrameFetcher::fetch(int64 frame, uint64 request) {
    {
        const std::lock_guard lock(m_mutex);
        m_wish = Wish{frame, request};
    }
    m_changed.notify_all();
}

void FrameFetcher::produce(SharedPtr<PlayParams> const& params) {
    {
        const std::lock_guard lock(m_mutex);
        m_params = params->clone();
    }
    m_changed.notify_all();
}

void FrameFetcher::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_wish.reset();
        m_params.reset();
        m_isStopping = true;
    }
    m_changed.notify_all();
    finish();
}

void FrameFetcher::finish() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_isBusy && !hasWork(); });
}

void FrameFetcher::run() {
    constexpr std::chrono::milliseconds pauseOfAScrub{50};  // in which the next wish must not have to wait
    const auto isWoken = [this] { return m_isEnding || hasWork(); };
    std::unique_lock lock(m_mutex);
    while (true) {
        m_isBusy = false;
        m_changed.notify_all();
        if (!m_changed.wait_for(lock, pauseOfAScrub, isWoken)) {
            lock.unlock();
            m_puller.settle([&] {
                const std::lock_guard asking(m_mutex);
                return isWoken();
            });
            lock.lock();
            m_changed.wait(lock, isWoken);
        }
        if (m_isEnding) return;
        m_isBusy = true;
        const bool isStopping = std::exchange(m_isStopping, false);
        const SharedPtr<PlayParams> params = isStopping ? SharedPtr<PlayParams>() : m_params;
        const std::optional<Wish> wish = isStopping || params ? std::nullopt : m_wish;
        if (params) m_params.reset();
        if (wish) m_wish.reset();
        lock.unlock();
        if (isStopping) m_puller.stop();
        if (params) startProducing(params);
        if (wish) fetchNow(*wish);
        lock.lock();
    }
}

void FrameFetcher::startProducing(SharedPtr<PlayParams> const& params) {
    const Status status = m_puller.produce(params);
    if (status.success()) return;
    FetchedFrame refused;
    refused.frame = params->getCurrentFrame();
    const std::string range = std::to_string(params->getStartFrame()) + "-" + std::to_string(params->getEndFrame());
    refused.failure = outcomeOf(status, m_player.name() + ": frames " + range + " cannot be played").message();
    m_deliver(std::move(refused));
}

void FrameFetcher::fetchNow(Wish const& wish) {
    FetchedFrame fetched;
    fetched.frame = wish.frame;
    fetched.request = wish.request;
    const auto begun = std::chrono::steady_clock::now();
    const Status status = m_puller.fetch(wish.frame, fetched.buffer, fetched.wasReady);
    const auto taken = std::chrono::steady_clock::now() - begun;
    fetched.nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(taken).count();
    // A picture may come with a failure: that to go on rendering ahead from there.
    if (!fetched.buffer) fetched.failure = m_player.failureText(wish.frame, status);
    m_deliver(std::move(fetched));
}

}  // namespace qrtplay
