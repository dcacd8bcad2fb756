#include "media/qrtImageFile.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "base/qrtKit.h"
#include "base/qrtLimits.h"
#include "media/qrtRegularFile.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

namespace {

struct ImageKind {
    const char* suffix;
    AVCodecID codec;
};
constexpr ImageKind imageKinds[] = {
    {".png", AV_CODEC_ID_PNG},   {".tif", AV_CODEC_ID_TIFF},     {".tiff", AV_CODEC_ID_TIFF},
    {".jpg", AV_CODEC_ID_MJPEG}, {".jpeg", AV_CODEC_ID_MJPEG},   {".dpx", AV_CODEC_ID_DPX},
    {".exr", AV_CODEC_ID_EXR},   {".webp", AV_CODEC_ID_WEBP},    {".bmp", AV_CODEC_ID_BMP},
    {".tga", AV_CODEC_ID_TARGA}, {".jp2", AV_CODEC_ID_JPEG2000}, {".j2k", AV_CODEC_ID_JPEG2000},
    {".sgi", AV_CODEC_ID_SGI},   {".ppm", AV_CODEC_ID_PPM},      {".pgm", AV_CODEC_ID_PGM},
};

bool isTooLarge(int width, int height) {
    return width > maxPictureSide || height > maxPictureSide || int64{width} * height > maxPicturePixels;
}

/// Stands between a header and the memory that it claims.
int allocateBounded(AVCodecContext* decoder, AVFrame* frame, int flags) {
    if (isTooLarge(frame->width, frame->height)) return AVERROR(ERANGE);
    return avcodec_default_get_buffer2(decoder, frame, flags);
}

Outcome readPacket(std::string const& path, AVPacket& packet) {
    constexpr int64 mostBytes = maxPictureFileBytes - AV_INPUT_BUFFER_PADDING_SIZE;
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) return Outcome::failure(path + ": " + error.message());
    if (size == 0) return Outcome::failure(path + ": is empty");
    if (size > static_cast<uint64>(mostBytes)) return Outcome::failure(path + ": is larger than a picture can be");
    if (av_new_packet(&packet, static_cast<int>(size)) < 0) return Outcome::failure(path + ": out of memory");

    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) return Outcome::failure(path + ": cannot be opened");
    if (std::fread(packet.data, 1, static_cast<size_t>(size), file.get()) != size)
        return Outcome::failure(path + ": cannot be read");
    return Outcome();
}

Outcome openDecoder(std::string const& path, AvPtr<AVCodecContext>& decoder) {
    const AVCodecID id = imageCodecOf(path);
    if (id == AV_CODEC_ID_NONE) return Outcome::failure(path + ": is no picture of a known kind");
    const AVCodec* const codec = avcodec_find_decoder(id);
    if (!codec) return Outcome::failure(path + ": there is no decoder for it (" + avcodec_get_name(id) + ")");
    decoder.reset(avcodec_alloc_context3(codec));
    if (!decoder) return Outcome::failure(path + ": out of memory");
    decoder->get_buffer2 = allocateBounded;
    decoder->thread_count = 0;
    decoder->thread_type = FF_THREAD_SLICE;
    decoder->err_recognition |= AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER;
    // For TIFF that would be to refuse a file for any remark in it that FFmpeg does not know.
    if (id != AV_CODEC_ID_TIFF) decoder->err_recognition |= AV_EF_EXPLODE;
    if (const int result = avcodec_open2(decoder.get(), codec, nullptr); result < 0)
        return Outcome::failure(path + ": cannot be decoded: " + avErrorText(result));
    return Outcome();
}

}  // namespace

AVCodecID imageCodecOf(std::string const& path) {
    std::string suffix = std::filesystem::path(path).extension().string();
    std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto* const kind = std::find_if(std::begin(imageKinds), std::end(imageKinds),
                                          [&](ImageKind const& each) { return suffix == each.suffix; });
    return kind == std::end(imageKinds) ? AV_CODEC_ID_NONE : kind->codec;
}

Outcome readImageFile(std::string const& path, FramePtr& picture) {
    AvPtr<AVPacket> packet(av_packet_alloc());
    AvPtr<AVFrame> decoded(av_frame_alloc());
    AvPtr<AVCodecContext> decoder;
    if (!packet || !decoded) return Outcome::failure(path + ": out of memory");
    if (Outcome outcome = checkRegularFile(path); outcome.failed()) return outcome;
    if (Outcome outcome = openDecoder(path, decoder); outcome.failed()) return outcome;
    if (Outcome outcome = readPacket(path, *packet); outcome.failed()) return outcome;

    int result = avcodec_send_packet(decoder.get(), packet.get());
    if (result >= 0) result = avcodec_send_packet(decoder.get(), nullptr);
    if (result >= 0) result = avcodec_receive_frame(decoder.get(), decoded.get());
    if (isTooLarge(decoder->width, decoder->height))
        return Outcome::failure(path + ": its picture of " + std::to_string(decoder->width) + "x" +
                                std::to_string(decoder->height) + " pixels is larger than can be played");
    if (result < 0) return Outcome::failure(path + ": cannot be decoded: " + avErrorText(result));
    if ((decoded->flags & AV_FRAME_FLAG_CORRUPT) != 0 || decoded->decode_error_flags != 0 || decoded->width <= 0 ||
        decoded->height <= 0)
        return Outcome::failure(path + ": is damaged");
    picture = FramePtr(decoded.release(), AvDeleter());
    return Outcome();
}

}  // namespace qrtplay
