#include "sound/qrtSoundFile.h"

#include <algorithm>

#include "base/qrtLimits.h"

extern "C" {
#include <libavutil/adler32.h>
}

namespace qrtplay {

namespace {

/// Stations stand this close. Closer ones would save little decoding and cost memory in long recordings.
constexpr int64 stationsPerSecond = 4;

constexpr int measuredPackets = 16;

/// Containers promise lengths that are rounded, or that a last incomplete packet fills.
constexpr int64 toleratedLossMs = 100;

}  // namespace

Outcome SoundFile::open(std::string const& path, std::shared_ptr<SoundFile const>& file) {
    std::shared_ptr<SoundFile> opened(new SoundFile(path));
    std::unique_ptr<SoundDemuxer> demuxer;
    if (Outcome outcome = SoundDemuxer::open(path, demuxer); outcome.failed()) return outcome;
    if (demuxer) {
        AvPtr<AVCodecContext> decoder;
        if (Outcome outcome = demuxer->makeDecoder(decoder); outcome.failed()) return outcome;
        if (!PacketClock::tellsLengths(demuxer->stream())) {
            if (Outcome outcome = opened->measurePackets(); outcome.failed()) return outcome;
        }
        if (Outcome outcome = opened->scan(*demuxer); outcome.failed()) return outcome;
        opened->describe(*demuxer);
        if (opened->m_facts.sampleCount > maxSoundSeconds * opened->m_facts.sampleRate)
            return Outcome::failure(path + ": its sound states a length that cannot be played");
    }
    file = std::move(opened);
    return Outcome();
}

// Formats that keep silent about the length of their packets give all of them the same, which decoding some reveals.
Outcome SoundFile::measurePackets() {
    std::unique_ptr<SoundDemuxer> demuxer;
    AvPtr<AVCodecContext> decoder;
    if (Outcome outcome = SoundDemuxer::open(m_path, demuxer); outcome.failed() || !demuxer) return outcome;
    if (Outcome outcome = demuxer->makeDecoder(decoder); outcome.failed()) return outcome;
    const AvPtr<AVPacket> packet(av_packet_alloc());
    const AvPtr<AVFrame> frame(av_frame_alloc());
    if (!packet || !frame) return Outcome::failure(m_path + ": out of memory");

    for (int i = 0; i < measuredPackets && demuxer->read(*packet) == SoundDemuxer::ReadResult::packet; ++i) {
        if (avcodec_send_packet(decoder.get(), packet.get()) < 0) continue;
        int64 length = 0;
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0)
            length += frame->nb_samples;
        m_usualPacketLength = std::max(m_usualPacketLength, length);
    }
    return Outcome();
}

Outcome SoundFile::scan(SoundDemuxer& demuxer) {
    const AvPtr<AVPacket> packet(av_packet_alloc());
    if (!packet) return Outcome::failure(m_path + ": out of memory");
    PacketClock clock(demuxer.stream(), m_usualPacketLength);
    auto result = SoundDemuxer::ReadResult::end;
    for (int64 number = 0; (result = demuxer.read(*packet)) == SoundDemuxer::ReadResult::packet; ++number)
        takePacket(*packet, number, clock);
    if (m_stations.empty()) return Outcome::failure(m_path + ": its sound is empty; the file may be damaged");
    if (result == SoundDemuxer::ReadResult::failure) m_facts.isCutOff = true;
    m_seekable = clock.isOrdered();
    return Outcome();
}

uint32 SoundFile::checksumOf(AVPacket const& packet) noexcept {
    return static_cast<uint32>(av_adler32_update(1, packet.data, static_cast<size_t>(packet.size)));
}

void SoundFile::takePacket(AVPacket const& packet, int64 number, PacketClock& clock) {
    const PacketClock::State before = clock.state();
    const PacketPlace place = clock.place(packet);
    const int64 spacing = clock.sampleRate() / stationsPerSecond;
    if (m_stations.empty() || place.position - m_stations.back().position >= spacing)
        m_stations.push_back(
            {number, PacketClock::timestampOf(packet), checksumOf(packet), place.samples, place.position, before});

    // Whether it is the last packet that is incomplete shows when no other follows.
    m_facts.isCutOff = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
    const int64 from = place.position + place.skipped;
    const int64 until = place.position + place.samples - place.trimmed;
    if (from >= until) return;
    if (!m_anythingHeard) m_facts.firstSample = m_end = from;
    m_anythingHeard = true;
    m_end = std::max(m_end, until);
}

void SoundFile::describe(SoundDemuxer const& demuxer) {
    AVStream const& stream = demuxer.stream();
    AVCodecParameters const& parameters = *stream.codecpar;
    m_facts.hasSound = true;
    m_facts.sampleRate = parameters.sample_rate;
    m_facts.channels = parameters.ch_layout.nb_channels;
    char layout[128] = {};
    if (av_channel_layout_describe(&parameters.ch_layout, layout, sizeof(layout)) > 0) m_facts.channelLayout = layout;
    m_facts.codecName = avcodec_get_name(parameters.codec_id);
    m_facts.sampleCount = m_end - m_facts.firstSample;

    if (stream.duration == AV_NOPTS_VALUE || stream.duration <= 0) return;
    const int64 promised = av_rescale_q(stream.duration, stream.time_base, {1, parameters.sample_rate});
    if (promised - m_facts.sampleCount > toleratedLossMs * parameters.sample_rate / 1000) m_facts.isCutOff = true;
}

SoundFile::Station const& SoundFile::stationBefore(int64 position) const {
    const auto after = std::upper_bound(m_stations.begin(), m_stations.end(), position,
                                        [](int64 wanted, Station const& s) { return wanted < s.position; });
    return after == m_stations.begin() ? m_stations.front() : *(after - 1);
}

}  // namespace qrtplay
