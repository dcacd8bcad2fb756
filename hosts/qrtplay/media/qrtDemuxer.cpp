#include "media/qrtDemuxer.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

#include "media/qrtContainer.h"
#include "media/qrtPictureMemory.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

namespace {

/// Text art, which FFmpeg takes any text file for.
bool isTextArt(AVCodecID codec) {
    return codec == AV_CODEC_ID_ANSI || codec == AV_CODEC_ID_BINTEXT || codec == AV_CODEC_ID_XBIN ||
           codec == AV_CODEC_ID_IDF;
}

// A lossless format carries checksums and marks no frame that fails them, it has to be told to refuse it. Other formats
// mark what they had to mend, and a decoder that refuses that would refuse clips of careless cameras that play well.
bool mustRefuse(AVCodec const& codec) {
    constexpr int lossless = AV_CODEC_PROP_LOSSLESS;
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec.id);
    return descriptor && (descriptor->props & (AV_CODEC_PROP_LOSSY | lossless)) == lossless;
}

void setThreads(AVCodecContext& decoder, Demuxer::Care care, bool gainsFromStrictness) {
    if (care == Demuxer::Care::strict && gainsFromStrictness) {
        // Each one more delays the first picture after a jump and holds one picture more.
        decoder.thread_count = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 2u, 4u));
        decoder.thread_type = FF_THREAD_FRAME;
    } else {
        decoder.thread_count = 0;  // as many as there are processors
        decoder.thread_type = FF_THREAD_SLICE;
    }
}

}  // namespace

Outcome Demuxer::open(std::string const& path, std::unique_ptr<Demuxer>& demuxer) {
    std::unique_ptr<Demuxer> opened(new Demuxer(path));
    if (Outcome outcome = openContainer(path, opened->m_format); outcome.failed()) return outcome;
    if (Outcome outcome = opened->chooseStream(); outcome.failed()) return outcome;
    demuxer = std::move(opened);
    return Outcome();
}

Outcome Demuxer::chooseStream() {
    const int number = av_find_best_stream(m_format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (number < 0) return Outcome::failure(m_path + ": has no video");
    m_stream = m_format->streams[number];
    const AVCodecParameters& parameters = *m_stream->codecpar;
    if ((m_stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0)
        return Outcome::failure(m_path + ": has no video, only a cover picture");
    if (isTextArt(parameters.codec_id)) return Outcome::failure(m_path + ": is no media file");
    // A decoder that refuses its size leaves none behind.
    if (parameters.width <= 0 || parameters.height <= 0)
        return Outcome::failure(m_path + ": its video states no picture size, or a larger one than can be played; " +
                                "the file may be damaged");
    if (parameters.width > maxPictureSide || parameters.height > maxPictureSide ||
        int64{parameters.width} * parameters.height > maxPicturePixels)
        return Outcome::failure(m_path + ": its picture of " + std::to_string(parameters.width) + "x" +
                                std::to_string(parameters.height) + " pixels is larger than can be played");

    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        if (static_cast<int>(i) != number) m_format->streams[i]->discard = AVDISCARD_ALL;
    }
    return Outcome();
}

AVRational Demuxer::frameRate() const {
    const AVRational rate = av_guess_frame_rate(m_format.get(), m_stream, nullptr);
    constexpr AVRational usual{24, 1};
    return rate.num > 0 && rate.den > 0 ? rate : usual;
}

int64 Demuxer::promisedFrames() const {
    // Only this family of containers lists every sample; others list the packets at which decoding can begin.
    if (std::strstr(m_format->iformat->name, "mov") == nullptr) return 0;
    int64 shown = 0;
    const int entries = avformat_index_get_entries_count(m_stream);
    for (int i = 0; i < entries; ++i) {
        const AVIndexEntry* const entry = avformat_index_get_entry(m_stream, i);
        if (entry && (entry->flags & AVINDEX_DISCARD_FRAME) == 0) ++shown;
    }
    return shown;
}

Demuxer::ReadResult Demuxer::read(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        const int result = av_read_frame(m_format.get(), &packet);
        if (result == AVERROR_EOF) return ReadResult::end;
        if (result < 0) return ReadResult::failure;
        if (packet.stream_index == m_stream->index) return ReadResult::packet;
    }
}

bool Demuxer::seek(int64 time) {
    return av_seek_frame(m_format.get(), m_stream->index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

// Where most of a clip's frames are one slice each, so that there are no parts of a frame to share out.
bool Demuxer::gainsFromStrictness() const {
    return m_stream->codecpar->codec_id == AV_CODEC_ID_H264 || m_stream->codecpar->codec_id == AV_CODEC_ID_HEVC;
}

Outcome Demuxer::makeDecoder(AvPtr<AVCodecContext>& decoder, Care care) const {
    const char* const name = avcodec_get_name(m_stream->codecpar->codec_id);
    const AVCodec* const codec = avcodec_find_decoder(m_stream->codecpar->codec_id);
    if (!codec) return Outcome::failure(m_path + ": there is no decoder for its video (" + name + ")");

    AvPtr<AVCodecContext> opened(avcodec_alloc_context3(codec));
    int result = opened ? avcodec_parameters_to_context(opened.get(), m_stream->codecpar) : AVERROR(ENOMEM);
    if (result >= 0) {
        opened->pkt_timebase = m_stream->time_base;
        opened->max_pixels = maxPicturePixels;
        setThreads(*opened, care, gainsFromStrictness());
        usePictureMemory(*opened);
        opened->err_recognition |= AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER;
        if (care == Care::strict || mustRefuse(*codec)) opened->err_recognition |= AV_EF_EXPLODE;
        result = avcodec_open2(opened.get(), codec, nullptr);
    }
    if (result < 0)
        return Outcome::failure(m_path + ": its video (" + name + ") cannot be decoded: " + avErrorText(result));
    decoder = std::move(opened);
    return Outcome();
}

}  // namespace qrtplay
