#include "graph/qrtReadyPictures.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

// Whoever draws converts as well when a picture is not ready in time, and decoding needs processors, too.
size_t threadCount() {
    return std::clamp(std::thread::hardware_concurrency() / 2, 1u, 3u);
}

}  // namespace

const size_t ReadyPictures::mostAhead = threadCount();

ReadyPictures::ReadyPictures() {
    for (size_t i = 0; i < threadCount(); ++i)
        m_threads.emplace_back([this] { work(); });
}

ReadyPictures::~ReadyPictures() {
    {
        const Lock lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void ReadyPictures::prepare(std::vector<Order> orders) {
    std::vector<EntryPtr> entries;
    {
        const Lock lock(m_mutex);
        for (Order& order : orders) {
            EntryPtr known = find(order);
            entries.push_back(known ? std::move(known) : std::make_shared<Entry>(std::move(order)));
        }
        m_entries.swap(entries);
    }
    entries.clear();  // before the next ones are made, so that they find memory that is free again
    m_changed.notify_all();
}

std::shared_ptr<RgbaPixels const> ReadyPictures::take(Order const& order) {
    Lock lock(m_mutex);
    EntryPtr entry = find(order);
    if (!entry) entry = std::make_shared<Entry>(order);
    if (entry->state == Entry::State::waiting) make(*entry, m_converter, lock);
    m_changed.wait(lock, [&] { return entry->state == Entry::State::ready; });
    return entry->pixels;
}

void ReadyPictures::clear() {
    prepare({});
    m_pool.clear();
}

ReadyPictures::EntryPtr ReadyPictures::find(Order const& order) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](EntryPtr const& entry) { return entry->isFor(order); });
    return found == m_entries.end() ? nullptr : *found;
}

void ReadyPictures::work() {
    CpuConverter converter;
    Lock lock(m_mutex);
    while (!m_isEnding) {
        const auto isWaiting = [](EntryPtr const& entry) { return entry->state == Entry::State::waiting; };
        const auto next = std::find_if(m_entries.begin(), m_entries.end(), isWaiting);
        if (next == m_entries.end()) {
            m_changed.wait(lock);
            continue;
        }
        EntryPtr entry = *next;  // may be dropped meanwhile
        make(*entry, converter, lock);
        lock.unlock();
        entry.reset();
        lock.lock();
    }
}

/// Under the lock, which it lets go of for the work itself.
void ReadyPictures::make(Entry& entry, CpuConverter& converter, Lock& lock) {
    entry.state = Entry::State::in_the_making;
    lock.unlock();
    CpuForm const& form = entry.order.form;
    entry.pixels = m_pool.lend(form.width, form.height);
    if (entry.pixels && !converter.convert(*entry.order.picture, form, *entry.pixels)) entry.pixels.reset();
    lock.lock();
    entry.state = Entry::State::ready;
    m_changed.notify_all();
}

}  // namespace qrtplay
