#include "encode/qrtPixelConverter.h"

#include <QFloat16>
#include <cstring>

namespace qrtplay {

namespace {

bool isFloat(PixelFormat format) {
    return format == PixelFormat::rgba16f || format == PixelFormat::rgba32f;
}

/// One row of interleaved floats into the three planes that FFmpeg keeps floats in, which begin with green.
template <class Float>
void splitRow(std::uint8_t const* row, int width, AVFrame& picture, int y) {
    float* const planes[3] = {reinterpret_cast<float*>(picture.data[2] + ptrdiff_t{y} * picture.linesize[2]),
                              reinterpret_cast<float*>(picture.data[0] + ptrdiff_t{y} * picture.linesize[0]),
                              reinterpret_cast<float*>(picture.data[1] + ptrdiff_t{y} * picture.linesize[1])};
    constexpr size_t channels = 4;
    for (int x = 0; x < width; ++x) {
        Float pixel[channels];
        std::memcpy(pixel, row + static_cast<size_t>(x) * sizeof(pixel), sizeof(pixel));
        for (size_t channel = 0; channel < 3; ++channel)
            planes[channel][x] = static_cast<float>(pixel[channel]);
    }
}

void splitFloats(PixelBlock const& block, AVFrame& picture) {
    for (int y = 0; y < block.height; ++y) {
        if (block.format == PixelFormat::rgba16f)
            splitRow<qfloat16>(block.row(y), block.width, picture, y);
        else
            splitRow<float>(block.row(y), block.width, picture, y);
    }
}

}  // namespace

Outcome PixelConverter::convert(PixelBlock const& block, AvPtr<AVFrame>& picture) {
    if (block.empty()) return Outcome::failure("there is no picture");
    const bool wantsFloats = m_colour.format == AV_PIX_FMT_GBRPF32;
    if (isFloat(block.format) != wantsFloats)
        return Outcome::failure(wantsFloats ? "takes floating-point pictures only"
                                            : "takes no floating-point pictures");
    AvPtr<AVFrame> converted(av_frame_alloc());
    if (!converted) return Outcome::failure("out of memory");
    converted->format = m_colour.format;
    converted->width = block.width;
    converted->height = block.height;
    converted->colorspace = m_colour.matrix;
    converted->color_range = m_colour.range;
    if (const int code = av_frame_get_buffer(converted.get(), 0); code < 0) return Outcome::failure(avErrorText(code));
    if (wantsFloats)
        splitFloats(block, *converted);
    else if (Outcome outcome = convertIntegers(block, *converted); outcome.failed())
        return outcome;
    picture = std::move(converted);
    return Outcome();
}

Outcome PixelConverter::convertIntegers(PixelBlock const& block, AVFrame& picture) {
    const AVPixelFormat source = block.format == PixelFormat::rgba8 ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGBA64;
    // Every pixel counts: chroma is averaged over the full width, and rounding is not left to the processor's choice.
    constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT | SWS_BITEXACT;
    SwsContext* const scaler = sws_getCachedContext(m_scaler.release(), block.width, block.height, source, block.width,
                                                    block.height, m_colour.format, flags, nullptr, nullptr, nullptr);
    m_scaler.reset(scaler);
    if (!scaler) return Outcome::failure("its pixels cannot be converted");
    if (m_colour.matrix != AVCOL_SPC_RGB) {
        int const* const matrix = sws_getCoefficients(m_colour.matrix);
        constexpr int one = 1 << 16;  // brightness, contrast and saturation as they are
        const int range = m_colour.range == AVCOL_RANGE_JPEG ? 1 : 0;
        (void)sws_setColorspaceDetails(scaler, matrix, 1, matrix, range, 0, one, one);
    }
    std::uint8_t const* const rows[4] = {block.row(0)};
    const int strides[4] = {static_cast<int>(block.strideInBytes())};
    const int code = sws_scale(scaler, rows, strides, 0, block.height, picture.data, picture.linesize);
    return code == block.height ? Outcome() : Outcome::failure("its pixels cannot be converted");
}

}  // namespace qrtplay
