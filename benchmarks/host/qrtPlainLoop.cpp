#include "qrtPlainLoop.h"

#include <stdexcept>

namespace qrtplay {

namespace {

int checked(int result, char const* what) {
    if (result < 0) throw std::runtime_error(std::string("plain loop: ") + what + ": " + avErrorText(result));
    return result;
}

}  // namespace

PlainLoop::PlainLoop(std::string const& path) : m_packet(av_packet_alloc()), m_decoded(av_frame_alloc()) {
    AVFormatContext* format = nullptr;
    checked(avformat_open_input(&format, path.c_str(), nullptr, nullptr), "open");
    m_format.reset(format);
    checked(avformat_find_stream_info(format, nullptr), "streams");
    const AVCodec* codec = nullptr;
    m_stream = format->streams[checked(av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0), "video")];
    m_decoder.reset(avcodec_alloc_context3(codec));
    checked(avcodec_parameters_to_context(m_decoder.get(), m_stream->codecpar), "parameters");
    m_decoder->thread_count = 0;  // as many as FFmpeg thinks best
    checked(avcodec_open2(m_decoder.get(), codec, nullptr), "decoder");
    m_pixels.resize(size_t{4} * static_cast<size_t>(m_decoder->width) * static_cast<size_t>(m_decoder->height));
}

int64 PlainLoop::timeOf(int64 number) const {
    const int64 start = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
    return start + av_rescale_q(number, av_inv_q(m_stream->avg_frame_rate), m_stream->time_base);
}

FrameView PlainLoop::frame(int64 number) {
    if (number != m_next) seek(number);
    const int64 wanted = timeOf(number);
    do {
        decodeNext();
    } while (m_decoded->pts < wanted);
    convert();
    m_next = number + 1;
    return {m_pixels.data(), m_decoder->width, m_decoder->height, false};
}

void PlainLoop::seek(int64 number) {
    checked(av_seek_frame(m_format.get(), m_stream->index, timeOf(number), AVSEEK_FLAG_BACKWARD), "seek");
    avcodec_flush_buffers(m_decoder.get());
}

void PlainLoop::decodeNext() {
    for (;;) {
        const int received = avcodec_receive_frame(m_decoder.get(), m_decoded.get());
        if (received >= 0) return;
        if (received != AVERROR(EAGAIN)) checked(received, "decode");
        do {
            av_packet_unref(m_packet.get());
            const int read = av_read_frame(m_format.get(), m_packet.get());
            if (read == AVERROR_EOF) break;
            checked(read, "read");
        } while (m_packet->stream_index != m_stream->index);
        checked(avcodec_send_packet(m_decoder.get(), m_packet->data ? m_packet.get() : nullptr), "send");
    }
}

void PlainLoop::convert() {
    AVFrame const& from = *m_decoded;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), from.width, from.height,
                                        static_cast<AVPixelFormat>(from.format), from.width, from.height,
                                        AV_PIX_FMT_RGBA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    std::uint8_t* const to[] = {m_pixels.data()};
    const int stride[] = {4 * from.width};
    checked(sws_scale(m_scaler.get(), from.data, from.linesize, 0, from.height, to, stride), "convert");
}

}  // namespace qrtplay
