#include "sound/qrtPacketClock.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace qrtplay {

namespace {

// Beyond what any recording holds, and far enough from the limits of 64 bits to add some up.
constexpr int64 farthestSample = int64{1} << 52;

// Muxers that once rounded to milliseconds pass their jitter on to containers with finer timestamps.
constexpr int64 jitterMs = 5;

/// Formats whose packets themselves say how many samples they hold, which differs from packet to packet.
bool packetsStateTheirLength(AVCodecID codec) {
    return codec == AV_CODEC_ID_OPUS || codec == AV_CODEC_ID_VORBIS || codec == AV_CODEC_ID_FLAC;
}

/// In samples; 0 when it takes more than the packet's size to tell.
int64 lengthBySize(AVCodecParameters& codec, int size) {
    // For these FFmpeg makes a guess from the bit rate.
    if (codec.codec_id == AV_CODEC_ID_WMAV1 || codec.codec_id == AV_CODEC_ID_WMAV2) return 0;
    return av_get_audio_frame_duration2(&codec, size);
}

/// Whether a tick is no longer than a sample.
bool hasFineTicks(AVStream const& stream) {
    return av_cmp_q(stream.time_base, {1, stream.codecpar->sample_rate}) <= 0;
}

int64 littleEndian32(uint8_t const* bytes) {
    return int64{bytes[0]} | int64{bytes[1]} << 8 | int64{bytes[2]} << 16 | int64{bytes[3]} << 24;
}

}  // namespace

PacketClock::PacketClock(AVStream const& stream, int64 usualLength) : m_stream(stream), m_usualLength(usualLength) {
    if (!packetsStateTheirLength(stream.codecpar->codec_id)) return;
    m_parser.reset(av_parser_init(stream.codecpar->codec_id));
    m_parserSettings.reset(avcodec_alloc_context3(nullptr));
    if (!m_parser || !m_parserSettings || avcodec_parameters_to_context(m_parserSettings.get(), stream.codecpar) < 0)
        m_parser.reset();
    else
        m_parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
}

bool PacketClock::tellsLengths(AVStream const& stream) {
    constexpr int anySize = 1024;
    return packetsStateTheirLength(stream.codecpar->codec_id) || hasFineTicks(stream) ||
           lengthBySize(*stream.codecpar, anySize) > 0;
}

int64 PacketClock::timestampOf(AVPacket const& packet) noexcept {
    return packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
}

void PacketClock::resume(State const& state, int64 samples) {
    m_state = state;
    m_resumedSamples = samples;
}

PacketPlace PacketClock::place(AVPacket const& packet) {
    PacketPlace place;
    place.samples = samplesIn(packet);
    // Some lengths depend on the packet before, which is unknown where reading resumes.
    if (m_resumedSamples >= 0) place.samples = m_resumedSamples;
    m_resumedSamples = -1;

    readTrimming(packet, place);
    moveTo(packet, place);
    place.position = m_state.next;
    m_state.next = std::min(m_state.next + place.samples, farthestSample);
    return place;
}

int64 PacketClock::samplesIn(AVPacket const& packet) {
    int64 samples = 0;
    if (m_parser) {
        uint8_t* data = nullptr;
        int size = 0;
        av_parser_parse2(m_parser.get(), m_parserSettings.get(), &data, &size, packet.data, packet.size, AV_NOPTS_VALUE,
                         AV_NOPTS_VALUE, -1);
        // Opus counts at 48 kHz whatever rate its header states; so does its decoder.
        samples = m_parser->duration;
    }
    if (samples <= 0) samples = lengthBySize(*m_stream.codecpar, packet.size);
    if (samples <= 0 && !hasFineTicks(m_stream)) samples = m_usualLength;
    if (samples <= 0 && packet.duration > 0)
        samples = av_rescale_q(packet.duration, m_stream.time_base, {1, m_stream.codecpar->sample_rate});
    return std::clamp<int64>(samples, 0, farthestSample);
}

void PacketClock::readTrimming(AVPacket const& packet, PacketPlace& place) {
    size_t size = 0;
    const uint8_t* const trimming = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    const AVCodecID codec = m_stream.codecpar->codec_id;
    if (trimming && size >= 10) {
        m_state.toBeSkipped = littleEndian32(trimming);
        place.trimmed = std::min(littleEndian32(trimming + 4), place.samples);
    } else if (!m_state.started && codec == AV_CODEC_ID_OPUS) {
        m_state.toBeSkipped = std::max(m_stream.codecpar->initial_padding, 0);
    } else if (!m_state.started && codec == AV_CODEC_ID_VORBIS) {
        m_state.toBeSkipped = place.samples;  // the first packet only prepares the second
    }
    const bool unheard = (packet.flags & AV_PKT_FLAG_DISCARD) != 0;
    const int64 skipped = std::min(m_state.toBeSkipped, place.samples);
    m_state.toBeSkipped -= skipped;
    place.skipped = unheard ? place.samples : skipped;
}

bool PacketClock::statedPosition(int64 timestamp, int64& position) const {
    if (timestamp == AV_NOPTS_VALUE || timestamp > INT64_MAX / 2 || timestamp < INT64_MIN / 2) return false;
    const int64 stated = av_rescale_q(timestamp, m_stream.time_base, {1, m_stream.codecpar->sample_rate});
    if (stated == INT64_MIN || stated > farthestSample || stated < -farthestSample) return false;
    position = stated + m_state.offset;
    return position <= farthestSample && position >= -farthestSample;
}

// Makes m_state.next the position of the packet.
void PacketClock::moveTo(AVPacket const& packet, PacketPlace const& place) {
    const AVRational sample{1, m_stream.codecpar->sample_rate};
    const AVRational tick = m_stream.time_base;
    const int64 skipped = place.skipped + m_state.toBeSkipped;
    int64 timestamp = timestampOf(packet);
    if (timestamp <= m_lastTimestamp) m_ordered = false;
    m_lastTimestamp = timestamp;
    const bool first = !m_state.started;
    m_state.started = true;
    // Coarse timestamps are exact for what is heard first, not for what is skipped before it.
    if (first && timestamp != AV_NOPTS_VALUE) timestamp += av_rescale_q(skipped, sample, tick);
    int64 stated = 0;
    if (!statedPosition(timestamp, stated)) {
        m_ordered = false;
        return;
    }
    if (first) {
        m_state.next = stated - skipped;
        return;
    }
    const int64 jitter = std::max(jitterMs * sample.den / 1000, av_rescale_q_rnd(2, tick, sample, AV_ROUND_UP));
    const int64 ahead = stated - m_state.next;
    // The first packet of a page of Ogg may be taken for shorter than it is; then its end is stated rightly.
    const int64 longer = packet.duration > 0 ? place.samples - av_rescale_q(packet.duration, tick, sample) : 0;
    if (std::abs(ahead - longer) <= jitter) return;
    if (ahead > jitter) m_state.next = stated;
    if (ahead < -jitter) m_state.offset -= ahead;
}

}  // namespace qrtplay
