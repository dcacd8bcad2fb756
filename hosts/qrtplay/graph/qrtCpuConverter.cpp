#include "graph/qrtCpuConverter.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <cmath>
#include <utility>

#include "graph/qrtRgbaLines.h"

namespace qrtplay {

namespace {

/// Ten bits are enough for an output of eight.
AVPixelFormat scaledFormat(PixelLayout const& layout) {
    const bool isDeep = layout.bits > 8;
    if (layout.componentCount == 1) return isDeep ? AV_PIX_FMT_GRAY10 : AV_PIX_FMT_GRAY8;
    return isDeep ? AV_PIX_FMT_YUV444P10 : AV_PIX_FMT_YUV444P;
}

/// Of a chroma sample from the first pixel that it stands for, in 256ths of a pixel; the middle where each has its own.
int chromaPosition(float offset, int shift) {
    return shift == 0 ? -513 : static_cast<int>(std::lround((0.5f - 2 * offset) * 256));  // -513: FFmpeg's default
}

}  // namespace

bool CpuConverter::convert(AVFrame const& picture, CpuForm const& form, RgbaPixels& pixels) {
    const bool isScaled = form.width != picture.width || form.height != picture.height;
    AVFrame const* const from = isScaled ? scaled(picture, form) : &picture;
    if (!from) return false;
    const auto layout = describeLayout(static_cast<AVPixelFormat>(from->format));
    const auto transform = layout ? colourTransform(form.colour, *layout) : std::nullopt;
    if (!transform) return false;
    auto lines = RgbaLines::create(*layout, *transform, chromaPlace(*from, *layout, form.chromaLocation));
    if (!lines) return false;
    const size_t stride = size_t{4} * static_cast<size_t>(form.width);
    for (int line = 0; line < form.height; ++line)
        lines->convert(*from, line, pixels.bytes.get() + static_cast<size_t>(form.height - 1 - line) * stride);
    return true;
}

AVFrame const* CpuConverter::scaled(AVFrame const& picture, CpuForm const& form) {
    const auto layout = describeLayout(static_cast<AVPixelFormat>(picture.format));
    if (!layout) return nullptr;
    Job job{picture.width, picture.height, picture.format, form.width, form.height, 0, 0};
    if (layout->componentCount > 1) {
        const ChromaPlace place = chromaPlace(picture, *layout, form.chromaLocation);
        PixelLayout::Plane const& chroma = layout->planes[static_cast<size_t>(layout->components[1].plane)];
        job.chromaX = chromaPosition(place.offsetX, chroma.widthShift);
        job.chromaY = chromaPosition(place.offsetY, chroma.heightShift);
    }
    if (!(job == m_job) || !m_scaler) {
        m_scaler.reset();
        m_job = job;
        m_scaled.reset(av_frame_alloc());
        if (!m_scaled) return nullptr;
        m_scaled->width = form.width;
        m_scaled->height = form.height;
        m_scaled->format = scaledFormat(*layout);
        if (av_frame_get_buffer(m_scaled.get(), 0) < 0 || !prepare(job)) return nullptr;
    }
    const int rows = sws_scale(m_scaler.get(), picture.data, picture.linesize, 0, picture.height, m_scaled->data,
                               m_scaled->linesize);
    return rows == form.height ? m_scaled.get() : nullptr;
}

bool CpuConverter::prepare(Job const& job) {
    AvPtr<SwsContext> scaler(sws_alloc_context());
    if (!scaler) return false;
    constexpr int sameRange = 1;  // or luma would be stretched
    const bool isShrunk = job.toWidth <= job.width && job.toHeight <= job.height;
    const auto set = [&](char const* name, int value) { return av_opt_set_int(scaler.get(), name, value, 0) >= 0; };
    bool isSet = set("srcw", job.width) && set("srch", job.height) && set("src_format", job.format) &&
                 set("dstw", job.toWidth) && set("dsth", job.toHeight) && set("dst_format", m_scaled->format) &&
                 set("src_h_chr_pos", job.chromaX) && set("src_v_chr_pos", job.chromaY) &&
                 set("src_range", sameRange) && set("dst_range", sameRange) &&
                 set("sws_flags", (isShrunk ? SWS_AREA : SWS_BICUBIC) | SWS_ACCURATE_RND);
    // B and C of the family of cubic curves: that of Catmull and Rom.
    isSet = isSet && av_opt_set_double(scaler.get(), "param0", 0, 0) >= 0 &&
            av_opt_set_double(scaler.get(), "param1", 0.5, 0) >= 0;
    if (!isSet) return false;
    if (sws_init_context(scaler.get(), nullptr, nullptr) < 0) return false;
    m_scaler = std::move(scaler);
    return true;
}

}  // namespace qrtplay
