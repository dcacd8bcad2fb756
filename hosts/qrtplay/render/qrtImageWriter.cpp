#include "render/qrtImageWriter.h"

#include <QDir>
#include <QFile>
#include <QImageWriter>
#include <QSaveFile>
#include <QTemporaryFile>
#include <algorithm>
#include <utility>

namespace qrtplay {

Outcome writePng(std::string const& path, QImage const& image) {
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly))
        return Outcome::failure(path + ": cannot be written: " + file.errorString().toStdString());
    QImageWriter writer(&file, "png");
    constexpr int fastCompression = 85;  // Qt's scale: the lowest level of zlib, within a tenth of the best one's size
    writer.setQuality(fastCompression);
    if (!writer.write(image)) {
        file.cancelWriting();
        const QString why = file.error() != QFileDevice::NoError ? file.errorString() : writer.errorString();
        return Outcome::failure(path + ": cannot be written: " + why.toStdString());
    }
    if (!file.commit()) return Outcome::failure(path + ": cannot be written: " + file.errorString().toStdString());
    return Outcome();
}

Outcome prepareFolder(std::string const& folder) {
    const QString name = QString::fromStdString(folder);
    if (!QDir().mkpath(name)) return Outcome::failure(folder + ": the output folder cannot be made");
    // Asking for permissions answers for a plain disk only; a file tells the truth.
    QTemporaryFile probe(name + "/.qrtplay-XXXXXX");
    if (!probe.open())
        return Outcome::failure(folder + ": the output folder cannot be written to: " +
                                probe.errorString().toStdString());
    return Outcome();
}

ImageWriter::ImageWriter(size_t threads) {
    const size_t processors = std::max(1u, std::thread::hardware_concurrency());
    const size_t count = threads > 0 ? threads : std::min<size_t>(processors, 8);
    m_mostJobs = count;  // beside those that are being written
    for (size_t i = 0; i < count; ++i) m_threads.emplace_back([this] { work(); });
}

ImageWriter::~ImageWriter() {
    finish();
}

void ImageWriter::write(int64 frame, std::string path, QImage image) {
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_jobs.size() < m_mostJobs; });
        m_jobs.push_back({frame, std::move(path), std::move(image)});
    }
    m_changed.notify_all();
}

void ImageWriter::finish() {
    {
        const std::lock_guard lock(m_mutex);
        m_finishing = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) thread.join();
    m_threads.clear();
}

std::vector<ImageWriter::Failure> ImageWriter::takeFailures() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_failures, {});
}

void ImageWriter::work() {
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
        if (Outcome outcome = writePng(job.path, job.image); outcome.failed()) {
            const std::lock_guard lock(m_mutex);
            m_failures.push_back({job.frame, "frame " + std::to_string(job.frame) + ": " + outcome.message()});
        }
    }
}

}  // namespace qrtplay
