#include "host/qrtDecodedFile.h"

#include <gtest/gtest.h>

#include <QFloat16>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace qrtplay {

namespace {

/// The value of a channel from 0 to 1 (floats: as it is) in the block's own format.
void setChannel(PixelBlock& block, int x, int y, int channel, double value) {
    std::uint8_t* const at =
        block.row(y) + (static_cast<size_t>(x) * 4 + static_cast<size_t>(channel)) * bytesPerPixel(block.format) / 4;
    const auto store = [at](auto number) { std::memcpy(at, &number, sizeof(number)); };
    switch (block.format) {
        case PixelFormat::rgba8: return store(static_cast<std::uint8_t>(std::lround(value * 255)));
        case PixelFormat::rgba16: return store(static_cast<std::uint16_t>(std::lround(value * 65535)));
        case PixelFormat::rgba16f: return store(qfloat16(static_cast<float>(value)));
        case PixelFormat::rgba32f: return store(static_cast<float>(value));
    }
}

double channelOf(PixelBlock const& block, int x, int y, int channel) {
    std::uint8_t const* const at =
        block.row(y) + (static_cast<size_t>(x) * 4 + static_cast<size_t>(channel)) * bytesPerPixel(block.format) / 4;
    if (block.format == PixelFormat::rgba8) return *at;
    std::uint16_t deep = 0;
    std::memcpy(&deep, at, sizeof(deep));
    return deep / 257.0;
}

}  // namespace

DecodedFile::DecodedFile(std::string const& path) {
    AVFormatContext* opened = nullptr;
    EXPECT_EQ(avformat_open_input(&opened, path.c_str(), nullptr, nullptr), 0) << path;
    format.reset(opened);
    if (!opened) return;
    EXPECT_GE(avformat_find_stream_info(opened, nullptr), 0) << path;
    for (unsigned i = 0; i < opened->nb_streams; ++i) {
        decode(i);
        av_seek_frame(opened, -1, 0, AVSEEK_FLAG_BACKWARD);
    }
}

AVStream const* DecodedFile::stream(AVMediaType type) const {
    const int index = av_find_best_stream(format.get(), type, -1, -1, nullptr, 0);
    return index < 0 ? nullptr : format->streams[index];
}

std::string DecodedFile::tag(char const* key) const {
    AVDictionaryEntry const* entry = av_dict_get(format->metadata, key, nullptr, 0);
    for (unsigned i = 0; !entry && i < format->nb_streams; ++i)
        entry = av_dict_get(format->streams[i]->metadata, key, nullptr, 0);
    return entry ? entry->value : "";
}

void DecodedFile::decode(unsigned index) {
    AVCodecParameters const& parameters = *format->streams[index]->codecpar;
    AVCodec const* const codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec) return;  // a track of timecodes
    const AvPtr<AVCodecContext> decoder(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(decoder.get(), &parameters);
    decoder->pkt_timebase = format->streams[index]->time_base;
    ASSERT_EQ(avcodec_open2(decoder.get(), codec, nullptr), 0);
    const AvPtr<AVPacket> packet(av_packet_alloc());
    const AvPtr<AVFrame> frame(av_frame_alloc());
    bool more = true;
    while (more) {
        more = av_read_frame(format.get(), packet.get()) >= 0;
        if (more && packet->stream_index != static_cast<int>(index)) {
            av_packet_unref(packet.get());
            continue;
        }
        ASSERT_EQ(avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr), 0);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(decoder.get(), frame.get()) == 0)
            take(*frame);
    }
}

void DecodedFile::take(AVFrame const& frame) {
    if (frame.width > 0) {
        pictures.emplace_back(av_frame_clone(&frame));
        return;
    }
    constexpr double one = 2147483648.0;
    for (int i = 0; i < frame.nb_samples; ++i) {
        if (frame.format == AV_SAMPLE_FMT_FLTP)
            left.push_back(reinterpret_cast<float const*>(frame.data[0])[i]);
        else if (frame.format == AV_SAMPLE_FMT_S32)
            left.push_back(static_cast<float>(reinterpret_cast<int32_t const*>(frame.data[0])[i * 2] / one));
    }
}

PixelBlock blockOf(AVFrame const& picture, PixelFormat format) {
    PixelBlock block(picture.width, picture.height, format);
    if (format == PixelFormat::rgba32f) {
        EXPECT_EQ(picture.format, AV_PIX_FMT_GBRPF32);
        const int planes[] = {2, 0, 1};
        for (int y = 0; y < block.height; ++y)
            for (int x = 0; x < block.width; ++x)
                for (int c = 0; c < 4; ++c)
                    setChannel(block, x, y, c,
                               c == 3 ? 1.0
                                      : reinterpret_cast<float const*>(picture.data[planes[c]] +
                                                                       ptrdiff_t{y} * picture.linesize[planes[c]])[x]);
        return block;
    }
    const AVPixelFormat target = format == PixelFormat::rgba8 ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGBA64;
    const AvPtr<SwsContext> scaler(sws_getContext(
        picture.width, picture.height, static_cast<AVPixelFormat>(picture.format), picture.width, picture.height,
        target, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_BITEXACT, nullptr, nullptr, nullptr));
    const AVColorSpace matrix = picture.colorspace == AVCOL_SPC_UNSPECIFIED ? AVCOL_SPC_BT470BG : picture.colorspace;
    const int fullRange = picture.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    int const* const table = sws_getCoefficients(matrix);
    if (matrix != AVCOL_SPC_RGB)
        sws_setColorspaceDetails(scaler.get(), table, fullRange, table, 1, 0, 1 << 16, 1 << 16);
    std::uint8_t* const rows[4] = {block.row(0)};
    const int strides[4] = {static_cast<int>(block.strideInBytes())};
    EXPECT_EQ(sws_scale(scaler.get(), picture.data, picture.linesize, 0, picture.height, rows, strides),
              picture.height);
    return block;
}

PixelBlock noiseBlock(int width, int height, PixelFormat format, unsigned seed) {
    PixelBlock block(width, height, format);
    const bool isFloat = format == PixelFormat::rgba16f || format == PixelFormat::rgba32f;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                seed = seed * 1664525u + 1013904223u;
                const double value = (seed >> 8) / static_cast<double>(0xffffff);
                setChannel(block, x, y, c, isFloat ? value * 20 - 2 : value);
            }
            setChannel(block, x, y, 3, 1);
        }
    }
    return block;
}

PixelBlock gradientBlock(int width, int height, PixelFormat format, int phase) {
    PixelBlock block(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            setChannel(block, x, y, 0, 0.1 + 0.8 * x / width);
            setChannel(block, x, y, 1, 0.1 + 0.8 * y / height);
            setChannel(block, x, y, 2, 0.5 + 0.4 * std::sin(phase * 0.7));
            setChannel(block, x, y, 3, 1);
        }
    }
    return block;
}

double largestDifference(PixelBlock const& a, PixelBlock const& b) {
    constexpr double incomparable = 1000;
    if (a.width != b.width || a.height != b.height || a.format != b.format || a.empty() || b.empty())
        return incomparable;
    double largest = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            for (int c = 0; c < 4; ++c)
                largest = std::max(largest, std::abs(channelOf(a, x, y, c) - channelOf(b, x, y, c)));
    return largest;
}

}  // namespace qrtplay
