#include "encode/qrtWorkQueue.h"

#include <utility>

namespace qrtplay {

WorkQueue::WorkQueue(size_t threads, size_t mostWaiting) : m_mostWaiting(mostWaiting) {
    for (size_t i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { work(); });
}

WorkQueue::~WorkQueue() {
    finish();
}

void WorkQueue::push(Job job) {
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_jobs.size() < m_mostWaiting; });
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_all();
}

void WorkQueue::finish() {
    {
        const std::lock_guard lock(m_mutex);
        m_finishing = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
}

void WorkQueue::work() {
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return !m_jobs.empty() || m_finishing; });
            if (m_jobs.empty()) return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        m_changed.notify_all();
        job();
    }
}

}  // namespace qrtplay
