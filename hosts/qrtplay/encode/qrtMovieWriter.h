#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "encode/qrtMovieFile.h"
#include "encode/qrtWorkQueue.h"
#include "encode/qrtWriteResult.h"

namespace qrtplay {

/// Encodes a movie on a thread of its own, beside what renders its frames.
///
/// Threading: one thread uses it. `write` waits while as many pictures wait as there is room for.
class MovieWriter final {
public:
    static Outcome open(std::string const& path, MovieSettings const& settings, std::unique_ptr<MovieWriter>& writer);
    /// Without `finish` nothing is left of the movie.
    ~MovieWriter() = default;
    MovieWriter(MovieWriter const&) = delete;
    MovieWriter& operator=(MovieWriter const&) = delete;

    /// The next frame and the sound that is heard during it. After a failure nothing more is taken.
    void write(int64 frame, PixelBlock block, std::vector<float> sound);
    /// Waits until the movie is whole. Nothing may be written afterwards.
    Outcome finish();
    /// The first failure there was.
    [[nodiscard]] Outcome failure() const;
    /// What has been encoded since the last call.
    [[nodiscard]] std::vector<WriteResult> takeResults();

private:
    MovieWriter(std::string path, std::unique_ptr<MovieFile> file);

    void encode(int64 frame, PixelBlock const& block, std::vector<float> const& sound);

    const std::string m_path;
    const std::unique_ptr<MovieFile> m_file;  // of the queue's thread, until that is finished
    mutable std::mutex m_mutex;
    // Under m_mutex.
    Outcome m_failure;
    std::vector<WriteResult> m_results;

    WorkQueue m_queue;  // last: its thread uses the rest
};

}  // namespace qrtplay
