#include "sound/qrtSoundDemuxer.h"

#include <cstring>
#include <utility>

#include "base/qrtLimits.h"
#include "media/qrtContainer.h"

namespace qrtplay {

Outcome SoundDemuxer::open(std::string const& path, std::unique_ptr<SoundDemuxer>& demuxer) {
    demuxer.reset();
    std::unique_ptr<SoundDemuxer> opened(new SoundDemuxer(path));
    if (Outcome outcome = openContainer(path, opened->m_format); outcome.failed()) return outcome;
    opened->chooseStream();
    if (!opened->m_stream) return Outcome();
    if (Outcome outcome = opened->checkStream(); outcome.failed()) return outcome;
    demuxer = std::move(opened);
    return Outcome();
}

void SoundDemuxer::chooseStream() {
    AVFormatContext* const format = m_format.get();
    const int number = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (number >= 0) m_stream = format->streams[number];
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        if (static_cast<int>(i) != number) format->streams[i]->discard = AVDISCARD_ALL;
    }
}

Outcome SoundDemuxer::checkStream() const {
    const AVCodecParameters& parameters = *m_stream->codecpar;
    const int channels = parameters.ch_layout.nb_channels;
    if (parameters.sample_rate < minSampleRate || parameters.sample_rate > maxSampleRate)
        return Outcome::failure(m_path + ": its sound states a sample rate of " +
                                std::to_string(parameters.sample_rate) + " Hz, which cannot be played");
    if (channels < 1 || channels > maxSoundChannels)
        return Outcome::failure(m_path + ": its sound states " + std::to_string(channels) +
                                " channels, which cannot be played");
    return Outcome();
}

SoundDemuxer::ReadResult SoundDemuxer::read(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        const int result = av_read_frame(m_format.get(), &packet);
        if (result == AVERROR_EOF) return ReadResult::end;
        if (result < 0) return ReadResult::failure;
        if (packet.stream_index == m_stream->index) return ReadResult::packet;
    }
}

bool SoundDemuxer::seek(int64 time) {
    return av_seek_frame(m_format.get(), m_stream->index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool SoundDemuxer::needsLead() const {
    return std::strcmp(m_format->iformat->name, "ogg") == 0;
}

Outcome SoundDemuxer::makeDecoder(AvPtr<AVCodecContext>& decoder) const {
    const char* const name = avcodec_get_name(m_stream->codecpar->codec_id);
    const AVCodec* const codec = avcodec_find_decoder(m_stream->codecpar->codec_id);
    if (!codec) return Outcome::failure(m_path + ": there is no decoder for its sound (" + name + ")");

    AvPtr<AVCodecContext> opened(avcodec_alloc_context3(codec));
    int result = opened ? avcodec_parameters_to_context(opened.get(), m_stream->codecpar) : AVERROR(ENOMEM);
    if (result >= 0) {
        opened->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
        opened->thread_count = 1;
        opened->max_samples = maxPacketSamples;
        // A lossless format carries checksums; what fails them would be noise at full level.
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec->id);
        constexpr int lossless = AV_CODEC_PROP_LOSSLESS;
        if (descriptor && (descriptor->props & (AV_CODEC_PROP_LOSSY | lossless)) == lossless)
            opened->err_recognition |= AV_EF_CRCCHECK | AV_EF_EXPLODE;
        result = avcodec_open2(opened.get(), codec, nullptr);
    }
    if (result < 0)
        return Outcome::failure(m_path + ": its sound (" + name + ") cannot be decoded: " + avErrorText(result));
    decoder = std::move(opened);
    return Outcome();
}

}  // namespace qrtplay
