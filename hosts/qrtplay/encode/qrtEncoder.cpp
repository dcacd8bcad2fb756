#include "encode/qrtEncoder.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace qrtplay {

AvPtr<AVCodecContext> Encoder::prepare(char const* name) {
    AVCodec const* const codec = avcodec_find_encoder_by_name(name);
    return AvPtr<AVCodecContext>(codec ? avcodec_alloc_context3(codec) : nullptr);
}

Outcome Encoder::open(AvPtr<AVCodecContext> context, Options const& options, std::unique_ptr<Encoder>& encoder) {
    if (!context) return Outcome::failure("this build of FFmpeg lacks its encoder");
    const std::string name = context->codec->name;
    for (auto const& [key, value] : options) {
        if (av_opt_set(context.get(), key, value.c_str(), AV_OPT_SEARCH_CHILDREN) < 0)
            return Outcome::failure("the encoder " + name + " does not know '" + key + "=" + value + "'");
    }
    if (const int code = avcodec_open2(context.get(), nullptr, nullptr); code < 0)
        return Outcome::failure("the encoder " + name + " does not take it: " + avErrorText(code));
    encoder.reset(new Encoder(std::move(context)));
    return Outcome();
}

Outcome Encoder::encode(AVFrame const* frame, TakePacket const& take) {
    int code = avcodec_send_frame(m_context.get(), frame);
    while (code >= 0) {
        code = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (code < 0) break;
        Outcome outcome = take(*m_packet);
        av_packet_unref(m_packet.get());
        if (outcome.failed()) return outcome;
    }
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return Outcome();
    return Outcome::failure("cannot be encoded: " + avErrorText(code));
}

}  // namespace qrtplay
