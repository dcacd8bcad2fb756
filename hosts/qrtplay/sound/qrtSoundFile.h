#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "sound/qrtPacketClock.h"
#include "sound/qrtSoundDemuxer.h"

namespace qrtplay {

/// What is known about the sound of a file once it is open.
struct SoundFacts {
    bool hasSound = false;  ///< the rest is meaningless without
    int sampleRate = 0;     ///< samples of every channel per second
    int channels = 0;
    std::string channelLayout;  ///< such as "mono", "stereo" or "5.1(side)"
    std::string codecName;
    int64 firstSample = 0;  ///< that is heard, in samples from the file's time 0 on
    int64 sampleCount = 0;  ///< from there to the end, gaps included
    bool isCutOff = false;  ///< whether the file promises more than it holds

    /// In the file's own counting.
    [[nodiscard]] ExactTime start() const { return {firstSample, sampleRate}; }
    [[nodiscard]] ExactTime duration() const { return {sampleCount, sampleRate}; }
};

/// The sound of a media file: its facts, and where in the file what belongs. Opening reads all of its packets, as only
/// their order and lengths tell to the sample where each belongs.
///
/// Threading: constant once open; any thread may read it.
class SoundFile final {
public:
    /// A packet at which decoding may begin.
    struct Station {
        int64 number = 0;     ///< of the packet, from the file's first one on
        int64 timestamp = 0;  ///< in ticks of the stream
        uint32 checksum = 0;  ///< of the packet's data
        int64 samples = 0;    ///< of the packet
        int64 position = 0;   ///< of its first sample, in samples from the file's time 0 on
        PacketClock::State before;
    };

    /// A file without sound is no failure: see `SoundFacts::hasSound`. Failures name the file.
    static Outcome open(std::string const& path, std::shared_ptr<SoundFile const>& file);
    [[nodiscard]] static uint32 checksumOf(AVPacket const& packet) noexcept;

    [[nodiscard]] std::string const& path() const noexcept { return m_path; }
    [[nodiscard]] SoundFacts const& facts() const noexcept { return m_facts; }
    /// The last station at or before `position` (in samples from the file's time 0 on), or the first one of all.
    [[nodiscard]] Station const& stationBefore(int64 position) const;
    /// Whether timestamps tell one packet from another, so that seeking finds stations.
    [[nodiscard]] bool isSeekable() const noexcept { return m_seekable; }
    /// Of packets, in samples, where neither they nor their timestamps tell it; 0 when it is not known.
    [[nodiscard]] int64 usualPacketLength() const noexcept { return m_usualPacketLength; }

private:
    explicit SoundFile(std::string path) : m_path(std::move(path)) {}

    Outcome measurePackets();
    Outcome scan(SoundDemuxer& demuxer);
    void takePacket(AVPacket const& packet, int64 number, PacketClock& clock);
    void describe(SoundDemuxer const& demuxer);

    const std::string m_path;
    SoundFacts m_facts;
    std::vector<Station> m_stations;  // ascending
    int64 m_usualPacketLength = 0;
    int64 m_end = 0;  // one past the last sample that is heard
    bool m_anythingHeard = false;
    bool m_seekable = true;
};

}  // namespace qrtplay
