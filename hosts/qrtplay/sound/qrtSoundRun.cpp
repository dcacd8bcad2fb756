#include "sound/qrtSoundRun.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace qrtplay {

namespace {

/// No decoder of sound gives a packet's sound later than this many packets afterwards.
constexpr size_t rememberedPlaces = 64;

}  // namespace

Outcome SoundRun::open(std::shared_ptr<SoundFile const> const& file, std::unique_ptr<SoundRun>& run) {
    std::unique_ptr<SoundRun> opened(new SoundRun(file));
    opened->m_packet.reset(av_packet_alloc());
    opened->m_frame.reset(av_frame_alloc());
    if (!opened->m_packet || !opened->m_frame) return Outcome::failure(file->path() + ": out of memory");
    opened->m_places.resize(rememberedPlaces);
    run = std::move(opened);
    return Outcome();
}

Outcome SoundRun::startAt(SoundFile::Station const& station) {
    if (!seekTo(station)) {
        if (Outcome outcome = rewindTo(station); outcome.failed()) return outcome;
    }
    if (Outcome outcome = m_demuxer->makeDecoder(m_decoder); outcome.failed()) return outcome;
    m_clock = std::make_unique<PacketClock>(m_demuxer->stream(), m_file->usualPacketLength());
    m_clock->resume(station.before, station.samples);
    m_drained = false;
    m_fed = 0;
    m_framesEnd = m_packetHeardFrom = station.position;
    m_packetHeardUntil = INT64_MAX;
    return Outcome();
}

bool SoundRun::seekTo(SoundFile::Station const& station) {
    if (!m_demuxer || station.number == 0 || !m_file->isSeekable()) return false;
    // Some containers find a place later than they were asked for, and the last page of Ogg gets wrong timestamps
    // unless the one before it has been read: hence the lead.
    const int64 second = av_rescale_q(1, {1, 1}, m_demuxer->stream().time_base);
    if (!m_demuxer->needsLead() && seekTo(station, station.timestamp)) return true;
    return seekTo(station, station.timestamp - 2 * second) || seekTo(station, station.timestamp - 15 * second);
}

// Reads up to the station's packet, which then waits to be fed. Timestamps that a container works out by itself may
// come out a little different after a seek, or altogether wrong.
bool SoundRun::seekTo(SoundFile::Station const& station, int64 time) {
    if (!m_demuxer->seek(time)) return false;
    const AVStream& stream = m_demuxer->stream();
    const int64 close =
        av_rescale_q(std::max<int64>(station.samples, 2) / 2, {1, m_demuxer->sampleRate()}, stream.time_base);
    while (readNext()) {
        const int64 timestamp = PacketClock::timestampOf(*m_packet);
        if (timestamp == AV_NOPTS_VALUE) continue;
        if (std::abs(av_sat_sub64(timestamp, station.timestamp)) <= close)
            return SoundFile::checksumOf(*m_packet) == station.checksum;
        if (timestamp > station.timestamp) return false;
    }
    return false;
}

// Always finds the station, but reads everything before it.
Outcome SoundRun::rewindTo(SoundFile::Station const& station) {
    m_clock.reset();
    if (Outcome outcome = SoundDemuxer::open(m_file->path(), m_demuxer); outcome.failed()) return outcome;
    const bool unchanged = m_demuxer && m_demuxer->sampleRate() == m_file->facts().sampleRate;
    for (int64 number = 0; unchanged && readNext(); ++number) {
        if (number == station.number) return Outcome();
    }
    m_demuxer.reset();
    return Outcome::failure(m_file->path() + ": its sound has changed since it was opened");
}

bool SoundRun::readNext() {
    m_waiting = m_demuxer->read(*m_packet) == SoundDemuxer::ReadResult::packet;
    return m_waiting;
}

SoundRun::Result SoundRun::next() {
    for (;;) {
        const int result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result >= 0) {
            takeFrame();
            if (m_frame->sample_rate == m_file->facts().sampleRate) return Result::sound;
            return Result::undecodable;
        }
        if (result == AVERROR_EOF) return Result::end;
        const bool wantsMore = result == AVERROR(EAGAIN);
        if (wantsMore && m_drained) return Result::end;
        if (!wantsMore || !feed()) {
            m_position = placeOf(m_fed - 1).position;
            return Result::undecodable;
        }
    }
}

bool SoundRun::feed() {
    if (!m_waiting && !readNext()) {
        m_drained = true;
        return avcodec_send_packet(m_decoder.get(), nullptr) >= 0;
    }
    m_waiting = false;
    m_places[static_cast<size_t>(m_fed) % rememberedPlaces] = m_clock->place(*m_packet);
    // Sound is recognised by the number of its packet, which the decoder hands on as its time.
    m_packet->pts = m_fed++;
    m_packet->dts = AV_NOPTS_VALUE;
    return avcodec_send_packet(m_decoder.get(), m_packet.get()) >= 0;
}

void SoundRun::takeFrame() {
    const int64 number = m_frame->pts;
    const bool begins = number >= 0 && number < m_fed && number >= m_fed - static_cast<int64>(rememberedPlaces);
    // A packet may hold several frames, of which only the first one has the packet's number.
    m_position = m_framesEnd;
    if (begins) {
        const PacketPlace& place = placeOf(number);
        m_position = place.position;
        m_packetHeardFrom = place.position + place.skipped;
        m_packetHeardUntil = place.trimmed > 0 ? place.position + place.samples - place.trimmed : INT64_MAX;
    }
    const int64 length = m_frame->nb_samples;
    m_framesEnd = m_position + length;
    m_heardFrom = std::clamp<int64>(m_packetHeardFrom - m_position, 0, length);
    m_heardUntil = std::clamp<int64>(std::min(m_packetHeardUntil, m_framesEnd) - m_position, m_heardFrom, length);
}

PacketPlace const& SoundRun::placeOf(int64 number) const {
    return m_places[static_cast<size_t>(std::max<int64>(number, 0)) % rememberedPlaces];
}

}  // namespace qrtplay
