#include "host/qrtReferencePicture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace qrtplay {

namespace {

/// One component of a picture, as code values.
struct Samples {
    int width = 0;
    int height = 0;
    std::vector<uint16_t> codes;

    [[nodiscard]] double at(int x, int y) const {
        const int column = std::clamp(x, 0, width - 1);
        const int row = std::clamp(y, 0, height - 1);
        return codes[static_cast<size_t>(row) * static_cast<size_t>(width) + static_cast<size_t>(column)];
    }
    /// Between the samples, whose centres lie at whole numbers.
    [[nodiscard]] double between(double x, double y) const {
        const int column = static_cast<int>(std::floor(x));
        const int row = static_cast<int>(std::floor(y));
        const double right = x - column;
        const double down = y - row;
        return (at(column, row) * (1 - right) + at(column + 1, row) * right) * (1 - down) +
               (at(column, row + 1) * (1 - right) + at(column + 1, row + 1) * right) * down;
    }
};

Samples readComponent(AVFrame const& picture, AVPixFmtDescriptor const& descriptor, int component) {
    const bool isRgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const bool isPalette = (descriptor.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const bool isChroma = !isRgb && !isPalette && component > 0;
    const int shiftX = isChroma ? descriptor.log2_chroma_w : 0;
    const int shiftY = isChroma ? descriptor.log2_chroma_h : 0;
    Samples samples;
    samples.width = -((-picture.width) >> shiftX);
    samples.height = -((-picture.height) >> shiftY);
    samples.codes.resize(static_cast<size_t>(samples.width) * static_cast<size_t>(samples.height));
    const uint8_t* planes[4] = {picture.data[0], picture.data[1], picture.data[2], picture.data[3]};
    for (int y = 0; y < samples.height; ++y) {
        uint16_t* const row = samples.codes.data() + static_cast<size_t>(y) * static_cast<size_t>(samples.width);
        if (isPalette) {
            // The entries of a palette are 32-bit numbers: alpha, red, green, blue from the high end to the low.
            const uint8_t* const indices = picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0];
            for (int x = 0; x < samples.width; ++x) {
                uint32_t entry = 0;
                std::memcpy(&entry, picture.data[1] + 4 * indices[x], sizeof(entry));
                row[x] = static_cast<uint16_t>((entry >> (8 * (2 - component))) & 0xff);
            }
            continue;
        }
        av_read_image_line(row, planes, picture.linesize, &descriptor, 0, y, component, samples.width, 0);
    }
    return samples;
}

unsigned char toByte(double value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

struct Weights {
    double red;
    double green;
    double blue;
};
Weights weightsOf(AVColorSpace matrix) {
    if (matrix == AVCOL_SPC_BT709) return {0.2126, 0.7152, 0.0722};
    if (matrix == AVCOL_SPC_BT2020_NCL) return {0.2627, 0.6780, 0.0593};
    return {0.299, 0.587, 0.114};
}

}  // namespace

std::vector<unsigned char> referenceColours(AVFrame const& picture, VideoFacts const& facts) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
    const bool isPalette = (descriptor.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const bool isRgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0 || isPalette;
    const bool isGrey = !isRgb && descriptor.nb_components < 3;
    const bool isFull = isRgb || facts.colour.range == AVCOL_RANGE_JPEG;
    const bool isJpeg = format == AV_PIX_FMT_YUVJ420P && picture.chroma_location == AVCHROMA_LOC_UNSPECIFIED;
    const int depth = isPalette ? 8 : descriptor.comp[0].depth;
    const double codeMax = (1 << depth) - 1;
    const double unit = std::pow(2.0, depth - 8);
    const Weights weights = weightsOf(facts.colour.matrix);
    const double shareX = 1 << descriptor.log2_chroma_w;
    const double shareY = 1 << descriptor.log2_chroma_h;

    std::vector<Samples> samples;
    for (int component = 0; component < (isGrey ? 1 : 3); ++component)
        samples.push_back(readComponent(picture, descriptor, component));

    std::vector<unsigned char> colours;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (isRgb) {
                for (Samples const& channel : samples)
                    colours.push_back(toByte(channel.at(x, y) / codeMax));
                colours.push_back(255);
                continue;
            }
            const double luma = isFull ? samples[0].at(x, y) / codeMax : (samples[0].at(x, y) / unit - 16) / 219;
            double cb = 0;
            double cr = 0;
            if (!isGrey) {
                // Chroma lies on the left one of the pixels that share it, or in their middle for JPEG, and halfway
                // down.
                const double chromaX = isJpeg ? (x - (shareX - 1) / 2) / shareX : x / shareX;
                const double chromaY = (y - (shareY - 1) / 2) / shareY;
                const double codeB = samples[1].between(chromaX, chromaY);
                const double codeR = samples[2].between(chromaX, chromaY);
                cb = isFull ? (codeB - 128 * unit) / codeMax : (codeB / unit - 128) / 224;
                cr = isFull ? (codeR - 128 * unit) / codeMax : (codeR / unit - 128) / 224;
            }
            const double red = luma + 2 * (1 - weights.red) * cr;
            const double blue = luma + 2 * (1 - weights.blue) * cb;
            const double green = (luma - weights.red * red - weights.blue * blue) / weights.green;
            colours.insert(colours.end(), {toByte(red), toByte(green), toByte(blue), 255});
        }
    }
    return colours;
}

int largestDifference(std::vector<unsigned char> const& bottomFirst, std::vector<unsigned char> const& topFirst,
                      int width, int height) {
    const size_t rowSize = static_cast<size_t>(width) * 4;
    if (bottomFirst.size() != topFirst.size() || topFirst.size() != rowSize * static_cast<size_t>(height)) return 256;
    int largest = 0;
    for (size_t row = 0; row < static_cast<size_t>(height); ++row) {
        const unsigned char* const a = bottomFirst.data() + (static_cast<size_t>(height) - 1 - row) * rowSize;
        const unsigned char* const b = topFirst.data() + row * rowSize;
        for (size_t i = 0; i < rowSize; ++i)
            largest = std::max(largest, std::abs(int{a[i]} - int{b[i]}));
    }
    return largest;
}

}  // namespace qrtplay
