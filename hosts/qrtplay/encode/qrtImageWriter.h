#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtPixelBlock.h"
#include "encode/qrtWorkQueue.h"
#include "encode/qrtWriteResult.h"

namespace qrtplay {

/// Encodes and writes image files on threads of its own: pictures coded for an sRGB display, which EXR files get as
/// linear light.
///
/// Threading: one thread uses it. `write` waits while as many images wait as there is room for.
class ImageWriter final {
public:
    /// `quality`: of JPEG. `threads`: 0 for what suits the machine.
    explicit ImageWriter(int quality, size_t threads = 0);
    ImageWriter(ImageWriter const&) = delete;
    ImageWriter& operator=(ImageWriter const&) = delete;

    void write(int64 frame, std::string path, PixelBlock block);
    /// Waits until everything is written. Nothing may be written afterwards.
    void finish();
    /// What has been written since the last call.
    [[nodiscard]] std::vector<WriteResult> takeResults();

private:
    const int m_quality;
    std::mutex m_mutex;
    std::vector<WriteResult> m_results;  // under m_mutex
    WorkQueue m_queue;                   // last: its threads use the rest
};

}  // namespace qrtplay
