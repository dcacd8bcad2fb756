#pragma once

#include <QImage>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Writes one image as a PNG file. The file appears under its name only when it is complete; one that stood there before
/// is replaced, and stays when writing fails. Failures name the path. Any thread may call it.
Outcome writePng(std::string const& path, QImage const& image);

/// Makes sure that files can be made in a folder; makes the folder when it is missing. Failures name it.
Outcome prepareFolder(std::string const& folder);

/// Compresses and writes images on threads of its own.
///
/// Threading: one thread uses it. `write` waits while as many images wait as there is room for, so that memory stays
/// bounded when writing is slower than rendering.
class ImageWriter final {
public:
    struct Failure {
        int64 frame;
        std::string message;
    };

    explicit ImageWriter(size_t threads = 0);  ///< 0: what suits the machine
    /// Finishes first.
    ~ImageWriter();
    ImageWriter(ImageWriter const&) = delete;
    ImageWriter& operator=(ImageWriter const&) = delete;

    void write(int64 frame, std::string path, QImage image);
    /// Waits until everything is written. Nothing may be written afterwards.
    void finish();
    /// The failures since the last call.
    [[nodiscard]] std::vector<Failure> takeFailures();

private:
    struct Job {
        int64 frame;
        std::string path;
        QImage image;
    };

    void work();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::deque<Job> m_jobs;
    std::vector<Failure> m_failures;
    bool m_finishing = false;

    size_t m_mostJobs;
    std::vector<std::thread> m_threads;
};

}  // namespace qrtplay
