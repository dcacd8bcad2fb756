#include "graph/qrtPictureConverter.h"

namespace qrtplay {

bool PictureConverter::prepare(AVFrame const& picture, AVPixelFormat format) {
    if (m_scaler && m_width == picture.width && m_height == picture.height && m_from == picture.format &&
        m_to == format)
        return true;
    m_scaler.reset(sws_getContext(picture.width, picture.height, static_cast<AVPixelFormat>(picture.format),
                                  picture.width, picture.height, format,
                                  SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!m_scaler) return false;
    m_width = picture.width;
    m_height = picture.height;
    m_from = picture.format;
    m_to = format;

    // The same range on both sides, or luma would be stretched; where the call means nothing to the formats it fails.
    constexpr int fullRange = 1;
    constexpr int one = 1 << 16;
    const int* const coefficients = sws_getCoefficients(SWS_CS_DEFAULT);
    (void)sws_setColorspaceDetails(m_scaler.get(), coefficients, fullRange, coefficients, fullRange, 0, one, one);
    return true;
}

FramePtr PictureConverter::convert(AVFrame const& picture, AVPixelFormat format) {
    if (format == AV_PIX_FMT_NONE || !prepare(picture, format)) return nullptr;
    AvPtr<AVFrame> converted(av_frame_alloc());
    if (!converted) return nullptr;
    converted->width = picture.width;
    converted->height = picture.height;
    converted->format = format;
    if (av_frame_get_buffer(converted.get(), 0) < 0) return nullptr;
    const int rows = sws_scale(m_scaler.get(), picture.data, picture.linesize, 0, picture.height, converted->data,
                               converted->linesize);
    if (rows != picture.height) return nullptr;
    return FramePtr(converted.release(), AvDeleter());
}

}  // namespace qrtplay
