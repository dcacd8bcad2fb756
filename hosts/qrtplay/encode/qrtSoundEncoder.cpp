#include "encode/qrtSoundEncoder.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "encode/qrtMovieSettings.h"

namespace qrtplay {

namespace {

/// 24 bits in the upper part of 32, as FFmpeg's encoder wants them; what is too loud is clipped.
int32_t toInteger(float sample) {
    constexpr double one = 1 << 23;
    const double scaled = std::isfinite(sample) ? std::round(static_cast<double>(sample) * one) : 0;
    return static_cast<int32_t>(std::clamp(scaled, -one, one - 1)) * 256;
}

void fillPlanes(AVFrame& frame, float const* samples, int count) {
    for (int channel = 0; channel < movieChannels; ++channel) {
        auto* const plane = reinterpret_cast<float*>(frame.data[channel]);
        for (int i = 0; i < count; ++i)
            plane[i] = samples[i * movieChannels + channel];
    }
}

void fillIntegers(AVFrame& frame, float const* samples, int count) {
    std::transform(samples, samples + ptrdiff_t{count} * movieChannels, reinterpret_cast<int32_t*>(frame.data[0]),
                   toInteger);
}

}  // namespace

Outcome SoundEncoder::open(Codec codec, bool globalHeader, std::unique_ptr<SoundEncoder>& encoder) {
    AvPtr<AVCodecContext> context = Encoder::prepare(codec == Codec::aac ? "aac" : "pcm_s24le");
    if (context) {
        constexpr int64 aacBitsPerSecond = 256000;
        context->sample_rate = movieSampleRate;
        context->time_base = {1, movieSampleRate};
        context->sample_fmt = codec == Codec::aac ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S32;
        if (codec == Codec::aac) context->bit_rate = aacBitsPerSecond;
        av_channel_layout_default(&context->ch_layout, movieChannels);
        if (globalHeader) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    std::unique_ptr<Encoder> opened;
    if (Outcome outcome = Encoder::open(std::move(context), {}, opened); outcome.failed()) return outcome;
    encoder.reset(new SoundEncoder(std::move(opened)));
    return Outcome();
}

Outcome SoundEncoder::add(std::vector<float> const& samples, Encoder::TakePacket const& take) {
    m_waiting.insert(m_waiting.end(), samples.begin(), samples.end());
    const int packetSize = context().frame_size;
    return encodeWaiting(packetSize > 0 ? static_cast<size_t>(packetSize) : 1, take);
}

Outcome SoundEncoder::finish(Encoder::TakePacket const& take) {
    if (Outcome outcome = encodeWaiting(1, take); outcome.failed()) return outcome;
    return m_encoder->encode(nullptr, take);
}

Outcome SoundEncoder::encodeWaiting(size_t least, Encoder::TakePacket const& take) {
    constexpr size_t mostOfPcm = 4096;
    const size_t packetSize = context().frame_size > 0 ? static_cast<size_t>(context().frame_size) : mostOfPcm;
    size_t begin = 0;
    const size_t waiting = m_waiting.size() / movieChannels;
    while (waiting - begin >= least) {
        const size_t count = std::min(packetSize, waiting - begin);
        Outcome outcome = encodeSamples(m_waiting.data() + begin * movieChannels, static_cast<int>(count), take);
        if (outcome.failed()) return outcome;
        begin += count;
    }
    m_waiting.erase(m_waiting.begin(), m_waiting.begin() + static_cast<ptrdiff_t>(begin * movieChannels));
    return Outcome();
}

Outcome SoundEncoder::encodeSamples(float const* samples, int count, Encoder::TakePacket const& take) {
    const AvPtr<AVFrame> frame(av_frame_alloc());
    if (!frame) return Outcome::failure("out of memory");
    frame->nb_samples = count;
    frame->format = context().sample_fmt;
    frame->sample_rate = movieSampleRate;
    av_channel_layout_copy(&frame->ch_layout, &context().ch_layout);
    frame->pts = m_encoded;
    if (const int code = av_frame_get_buffer(frame.get(), 0); code < 0) return Outcome::failure(avErrorText(code));
    if (context().sample_fmt == AV_SAMPLE_FMT_FLTP)
        fillPlanes(*frame, samples, count);
    else
        fillIntegers(*frame, samples, count);
    m_encoded += count;
    return m_encoder->encode(frame.get(), take);
}

}  // namespace qrtplay
