#pragma once

#include <memory>

#include "base/qrtKit.h"
#include "graph/qrtCpuForm.h"
#include "graph/qrtPixelPool.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Brings pictures into the colours of the display and to their size, on the CPU.
///
/// What is shrunk becomes the mean of the pixels that it covers, what is enlarged follows the curve of Catmull and Rom,
/// as in the shaders; but luma and chroma are scaled each from their own samples, before colours are made of them.
/// Threading: one thread at a time.
class CpuConverter final {
public:
    /// `form`: as `cpuForm` gives it for this picture, which `pixels` has the size of. False when memory is short.
    [[nodiscard]] bool convert(AVFrame const& picture, CpuForm const& form, RgbaPixels& pixels);

private:
    /// What a scaler is made for.
    struct Job {
        int width = 0;
        int height = 0;
        int format = AV_PIX_FMT_NONE;
        int toWidth = 0;
        int toHeight = 0;
        int chromaX = 0;  // in 256ths of a pixel
        int chromaY = 0;
        [[nodiscard]] bool operator==(Job const&) const noexcept = default;
    };

    [[nodiscard]] AVFrame const* scaled(AVFrame const& picture, CpuForm const& form);
    [[nodiscard]] bool prepare(Job const& job);

    AvPtr<SwsContext> m_scaler;
    AvPtr<AVFrame> m_scaled;  // kept for the next picture
    Job m_job;                // of both
};

}  // namespace qrtplay
