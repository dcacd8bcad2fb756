#include "encode/qrtMovieWriter.h"

#include <utility>

namespace qrtplay {

namespace {

constexpr size_t mostFramesWaiting = 4;  // enough to keep the encoder busy over one slow frame

}  // namespace

Outcome MovieWriter::open(std::string const& path, MovieSettings const& settings,
                          std::unique_ptr<MovieWriter>& writer) {
    std::unique_ptr<MovieFile> file;
    if (Outcome outcome = MovieFile::open(path, settings, file); outcome.failed()) return outcome;
    writer.reset(new MovieWriter(path, std::move(file)));
    return Outcome();
}

MovieWriter::MovieWriter(std::string path, std::unique_ptr<MovieFile> file)
    : m_path(std::move(path)), m_file(std::move(file)), m_queue(1, mostFramesWaiting) {}

void MovieWriter::write(int64 frame, PixelBlock block, std::vector<float> sound) {
    m_queue.push([this, frame, block = std::move(block), sound = std::move(sound)] { encode(frame, block, sound); });
}

void MovieWriter::encode(int64 frame, PixelBlock const& block, std::vector<float> const& sound) {
    if (failure().failed()) return;
    Outcome outcome = m_file->addPicture(block);
    if (outcome.success()) outcome = m_file->addSound(sound);
    const std::lock_guard lock(m_mutex);
    if (outcome.failed())
        m_failure = outcome;
    else
        m_results.push_back({frame, m_path, ""});
}

Outcome MovieWriter::finish() {
    m_queue.finish();
    if (Outcome outcome = failure(); outcome.failed()) return outcome;
    Outcome outcome = m_file->finish();
    const std::lock_guard lock(m_mutex);
    m_failure = outcome;
    return outcome;
}

Outcome MovieWriter::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

std::vector<WriteResult> MovieWriter::takeResults() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_results, {});
}

}  // namespace qrtplay
