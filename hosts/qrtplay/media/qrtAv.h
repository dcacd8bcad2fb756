#pragma once

// FFmpeg's headers are C and bring no guards for C++ of their own.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace qrtplay {

/// Owners of FFmpeg's objects.
struct AvDeleter {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
template <class T>
using AvPtr = std::unique_ptr<T, AvDeleter>;

/// A decoded picture. Several owners share it, so nobody changes it.
using FramePtr = std::shared_ptr<AVFrame const>;

/// FFmpeg's words for one of its error codes.
inline std::string avErrorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof(text));
    return text;
}

}  // namespace qrtplay
