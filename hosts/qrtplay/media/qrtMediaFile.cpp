#include "media/qrtMediaFile.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "media/qrtDemuxer.h"

namespace qrtplay {

namespace {

/// Whether a packet may be one of two fields that make a frame: possible where packets are cut out of a byte stream,
/// while containers with a table of samples keep a frame together.
bool packetsMayBeFields(Demuxer const& demuxer) {
    const AVFieldOrder order = demuxer.stream().codecpar->field_order;
    if (order == AV_FIELD_UNKNOWN || order == AV_FIELD_PROGRESSIVE) return false;
    if (demuxer.stream().codecpar->codec_id != AV_CODEC_ID_H264) return false;
    const char* const container = demuxer.format().iformat->name;
    return std::strstr(container, "mov") == nullptr && std::strstr(container, "matroska") == nullptr;
}

/// Decodes a clip from its beginning and tells of each frame which packet it came from, until `next` answers false.
template <class Next>
Outcome decodeInOrder(std::string const& path, Next next) {
    std::unique_ptr<Demuxer> demuxer;
    if (Outcome outcome = Demuxer::open(path, demuxer); outcome.failed()) return outcome;
    AvPtr<AVCodecContext> decoder;
    if (Outcome outcome = demuxer->makeDecoder(decoder); outcome.failed()) return outcome;
    AvPtr<AVPacket> packet(av_packet_alloc());
    AvPtr<AVFrame> frame(av_frame_alloc());

    int64 number = 0;
    bool drained = false;
    for (;;) {
        const int received = avcodec_receive_frame(decoder.get(), frame.get());
        if (received == AVERROR_EOF || (received == AVERROR(EAGAIN) && drained)) return Outcome();
        if (received >= 0) {
            const bool goOn = frame->pts == AV_NOPTS_VALUE || next(frame->pts);
            av_frame_unref(frame.get());
            if (!goOn) return Outcome();
        } else if (received == AVERROR(EAGAIN)) {
            drained = demuxer->read(*packet) != Demuxer::ReadResult::packet;
            packet->pts = number++;  // comes out again as the time of the frame
            packet->dts = AV_NOPTS_VALUE;
            // What cannot be decoded is left out, as it is when the clip is played.
            (void)avcodec_send_packet(decoder.get(), drained ? nullptr : packet.get());
        }
    }
}

}  // namespace

Outcome MediaFile::open(std::string const& path, std::shared_ptr<MediaFile const>& file, int64 mostPackets) {
    std::unique_ptr<Demuxer> demuxer;
    if (Outcome outcome = Demuxer::open(path, demuxer); outcome.failed()) return outcome;
    AvPtr<AVCodecContext> decoder;  // opened here so that a missing decoder is told of at once
    if (Outcome outcome = demuxer->makeDecoder(decoder); outcome.failed()) return outcome;

    std::shared_ptr<MediaFile> opened(new MediaFile(path));
    opened->readFacts(*demuxer);
    if (Outcome outcome = opened->readIndex(*demuxer, mostPackets); outcome.failed()) return outcome;
    opened->m_facts.frameCount = opened->m_index.frameCount();
    if (opened->m_facts.frameCount == 0) return Outcome::failure(path + ": its video holds no frame");
    opened->readStartTime(*demuxer);
    file = std::move(opened);
    return Outcome();
}

void MediaFile::readFacts(Demuxer const& demuxer) {
    AVStream& stream = demuxer.stream();
    const AVCodecParameters& parameters = *stream.codecpar;
    m_facts.width = parameters.width;
    m_facts.height = parameters.height;
    const AVRational aspect = av_guess_sample_aspect_ratio(&demuxer.format(), &stream, nullptr);
    if (aspect.num > 0 && aspect.den > 0) m_facts.sampleAspect = Rational(aspect.num, static_cast<uint32>(aspect.den));
    const AVRational rate = demuxer.frameRate();
    m_facts.frameRate = Rational(rate.num, static_cast<uint32>(rate.den));
    m_facts.pixelFormat = static_cast<AVPixelFormat>(parameters.format);
    m_facts.chromaLocation = parameters.chroma_location;
    m_facts.colour = completeColour(
        {parameters.color_space, parameters.color_range, parameters.color_primaries, parameters.color_trc},
        m_facts.pixelFormat, parameters.height);
    if (parameters.field_order != AV_FIELD_UNKNOWN) m_facts.fieldOrder = parameters.field_order;
    m_facts.codecName = avcodec_get_name(parameters.codec_id);

    size_t bytes = 0;
    const uint8_t* const stated = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &bytes);
    int32 matrix[9];
    if (!stated || bytes < sizeof(matrix)) return;
    std::memcpy(matrix, stated, sizeof(matrix));
    readDisplayMatrix(matrix, m_facts);
}

void MediaFile::readStartTime(Demuxer const& demuxer) {
    const int64 packet = m_index.packetOfFrame(0);
    if (packet < 0 || packet >= m_index.packetCount() || m_index.packet(packet).pts == FrameIndex::noTime) return;
    const AVRational tick = demuxer.stream().time_base;
    m_facts.startTime = ExactTime(m_index.packet(packet).pts, 1) * ExactTime(tick.num, tick.den);
}

Outcome MediaFile::readIndex(Demuxer& demuxer, int64 mostPackets) {
    AvPtr<AVPacket> packet(av_packet_alloc());
    while (demuxer.read(*packet) == Demuxer::ReadResult::packet) {
        if (m_index.packetCount() == mostPackets)
            return Outcome::failure(m_path + ": has more video packets than can be played");
        FrameIndex::Packet entry;
        entry.pts = packet->pts;
        entry.dts = packet->dts;
        entry.key = (packet->flags & AV_PKT_FLAG_KEY) != 0;
        entry.hidden = (packet->flags & AV_PKT_FLAG_DISCARD) != 0;
        entry.damaged = (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
        m_index.addPacket(entry);
    }
    if (m_index.packetCount() == 0) return Outcome::failure(m_path + ": its video holds no frame");

    const AVRational rate = demuxer.frameRate();
    const double ticksPerFrame = 1.0 / (av_q2d(rate) * av_q2d(demuxer.stream().time_base));
    if (!packetsMayBeFields(demuxer) && m_index.finish(ticksPerFrame, demuxer.promisedFrames()))
        return dropUndecodableBegin();
    return orderByDecoding();
}

Outcome MediaFile::orderByDecoding() {
    std::vector<int64> order;
    Outcome outcome = decodeInOrder(m_path, [&order](int64 packet) {
        order.push_back(packet);
        return true;
    });
    m_index.finishInOrder(std::move(order));
    return outcome;
}

Outcome MediaFile::dropUndecodableBegin() {
    const int64 leading = m_index.leadingFrames();
    if (leading == 0) return Outcome();
    int64 first = 0;
    Outcome outcome = decodeInOrder(m_path, [&](int64 packet) {
        first = m_index.frameOfPacket(packet);
        return first < 0;
    });
    m_index.dropFirstFrames(std::clamp<int64>(first, 0, leading));
    return outcome;
}

}  // namespace qrtplay
