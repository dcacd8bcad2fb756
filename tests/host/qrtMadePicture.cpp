#include "host/qrtMadePicture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace qrtplay {

std::shared_ptr<AVFrame> makePicture(AVPixelFormat format, int width, int height,
                                     std::function<double(int component, int x, int y)> const& code) {
    std::shared_ptr<AVFrame> picture(av_frame_alloc(), AvDeleter());
    picture->format = format;
    picture->width = width;
    picture->height = height;
    EXPECT_EQ(av_frame_get_buffer(picture.get(), 0), 0);
    // FFmpeg adds samples to what is there.
    for (AVBufferRef const* buffer : picture->buf) {
        if (buffer) std::memset(buffer->data, 0, buffer->size);
    }
    AVPixFmtDescriptor const& descriptor = *av_pix_fmt_desc_get(format);
    const bool isFloat = (descriptor.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    const bool hasAlpha = (descriptor.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const bool isRgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    for (int number = 0; number < descriptor.nb_components; ++number) {
        const bool isAlpha = hasAlpha && number == descriptor.nb_components - 1;
        const bool isChroma = !isRgb && !isAlpha && number > 0;
        const int columns = isChroma ? -((-width) >> descriptor.log2_chroma_w) : width;
        const int rows = isChroma ? -((-height) >> descriptor.log2_chroma_h) : height;
        AVComponentDescriptor const& component = descriptor.comp[number];
        std::vector<uint16_t> line(static_cast<size_t>(columns));
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) {
                const double value = code(number, x, y);
                if (isFloat) {
                    const auto number32 = static_cast<float>(value);
                    uint8_t* const row =
                        picture->data[component.plane] + std::ptrdiff_t{y} * picture->linesize[component.plane];
                    std::memcpy(row + x * component.step + component.offset, &number32, sizeof(number32));
                } else {
                    line[static_cast<size_t>(x)] = static_cast<uint16_t>(std::lround(value));
                }
            }
            if (!isFloat)
                av_write_image_line(line.data(), picture->data, picture->linesize, &descriptor, 0, y, number, columns);
        }
    }
    return picture;
}

}  // namespace qrtplay
