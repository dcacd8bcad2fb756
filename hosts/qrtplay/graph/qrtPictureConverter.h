#pragma once

#include "base/qrtKit.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Brings pictures of rare pixel formats into one that can be uploaded; matrix and range stay what they are.
///
/// Threading: one thread at a time.
class PictureConverter final {
public:
    /// The same picture in `format`, or null when that cannot be done.
    [[nodiscard]] FramePtr convert(AVFrame const& picture, AVPixelFormat format);

private:
    [[nodiscard]] bool prepare(AVFrame const& picture, AVPixelFormat format);

    AvPtr<SwsContext> m_scaler;
    int m_width = 0;  // what m_scaler is made for
    int m_height = 0;
    int m_from = AV_PIX_FMT_NONE;
    AVPixelFormat m_to = AV_PIX_FMT_NONE;
};

}  // namespace qrtplay
