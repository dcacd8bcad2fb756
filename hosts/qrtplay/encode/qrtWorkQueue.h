#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace qrtplay {

/// Jobs that threads of its own work off in order, no more of which wait than there is room for: memory stays bounded
/// when encoding is slower than rendering.
///
/// Threading: one thread uses it. With a single thread of its own the jobs run one after the other.
class WorkQueue final {
public:
    using Job = std::function<void()>;

    /// `mostWaiting`: beside the jobs that are being done.
    WorkQueue(size_t threads, size_t mostWaiting);
    /// Finishes first.
    ~WorkQueue();
    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;

    /// Waits until there is room. Not after `finish`.
    void push(Job job);
    /// Waits until all jobs are done.
    void finish();

private:
    void work();

    const size_t m_mostWaiting;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::deque<Job> m_jobs;
    bool m_finishing = false;

    std::vector<std::thread> m_threads;
};

}  // namespace qrtplay
