#include "encode/qrtImageWriter.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "encode/qrtLinearLight.h"
#include "encode/qrtOutputFormat.h"
#include "encode/qrtStillWriter.h"

namespace qrtplay {

namespace {

size_t suitableThreads() {
    constexpr unsigned most = 8;
    return std::clamp(std::thread::hardware_concurrency(), 1u, most);
}

}  // namespace

ImageWriter::ImageWriter(int quality, size_t threads)
    : m_quality(quality),
      m_queue(threads > 0 ? threads : suitableThreads(), threads > 0 ? threads : suitableThreads()) {}

void ImageWriter::write(int64 frame, std::string path, PixelBlock block) {
    m_queue.push([this, frame, path = std::move(path), block = std::move(block)] {
        // EXR holds linear light by convention, and is read as such.
        const bool isLinear = fileKindOf(path) == FileKind::exr;
        const Outcome outcome = writeStill(path, isLinear ? linearLight(block) : block, m_quality);
        const std::lock_guard lock(m_mutex);
        m_results.push_back({frame, path, outcome.message()});
    });
}

void ImageWriter::finish() {
    m_queue.finish();
}

std::vector<WriteResult> ImageWriter::takeResults() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_results, {});
}

}  // namespace qrtplay
