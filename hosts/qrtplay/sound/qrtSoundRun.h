#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"
#include "sound/qrtPacketClock.h"
#include "sound/qrtSoundDemuxer.h"
#include "sound/qrtSoundFile.h"

namespace qrtplay {

/// Decodes the sound of a file from one of its stations on, always with a decoder that remembers nothing: what comes
/// out depends on the station alone.
///
/// Threading: none of its own.
class SoundRun final {
public:
    enum class Result { sound, undecodable, end };

    /// Failures name the file.
    static Outcome open(std::shared_ptr<SoundFile const> const& file, std::unique_ptr<SoundRun>& run);

    /// Failures name the file.
    Outcome startAt(SoundFile::Station const& station);
    [[nodiscard]] Result next();

    /// Where what `next` has answered belongs, in samples from the file's time 0 on.
    [[nodiscard]] int64 position() const noexcept { return m_position; }
    /// What has been decoded; samples [`heardFrom`, `heardUntil`) of it are to be heard.
    [[nodiscard]] AVFrame const& sound() const noexcept { return *m_frame; }
    [[nodiscard]] int64 heardFrom() const noexcept { return m_heardFrom; }
    [[nodiscard]] int64 heardUntil() const noexcept { return m_heardUntil; }

private:
    explicit SoundRun(std::shared_ptr<SoundFile const> file) : m_file(std::move(file)) {}

    [[nodiscard]] bool seekTo(SoundFile::Station const& station);
    [[nodiscard]] bool seekTo(SoundFile::Station const& station, int64 time);
    Outcome rewindTo(SoundFile::Station const& station);
    [[nodiscard]] bool readNext();
    [[nodiscard]] bool feed();
    void takeFrame();
    [[nodiscard]] PacketPlace const& placeOf(int64 number) const;

    const std::shared_ptr<SoundFile const> m_file;
    std::unique_ptr<SoundDemuxer> m_demuxer;
    std::unique_ptr<PacketClock> m_clock;
    AvPtr<AVCodecContext> m_decoder;
    AvPtr<AVPacket> m_packet;
    AvPtr<AVFrame> m_frame;
    bool m_waiting = false;  // whether m_packet has been read and not fed
    bool m_drained = false;
    int64 m_fed = 0;                    // packets since the station
    std::vector<PacketPlace> m_places;  // of the packets fed last, by their number
    int64 m_packetHeardFrom = 0;        // positions
    int64 m_packetHeardUntil = 0;
    int64 m_position = 0;
    int64 m_heardFrom = 0;
    int64 m_heardUntil = 0;
    int64 m_framesEnd = 0;  // where a frame belongs that goes on with the packet of the one before
};

}  // namespace qrtplay
