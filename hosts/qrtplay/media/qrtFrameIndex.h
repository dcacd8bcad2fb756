#pragma once

#include <vector>

#include "base/qrtKit.h"

namespace qrtplay {

/// Which packet of a video stream holds which frame.
///
/// Packets are numbered in the order of decoding, frames in the order of presentation; both begin with 0. Filled once
/// with `addPacket` and `finish`, constant afterwards.
class FrameIndex final {
public:
    static constexpr int64 noTime = INT64_MIN;  ///< FFmpeg's mark for a timestamp that is not known

    /// One packet as the demuxer hands it out; times are in ticks of the stream.
    struct Packet {
        int64 pts = noTime;
        int64 dts = noTime;
        bool key = false;      ///< decoding can begin here
        bool hidden = false;   ///< decoded for others to refer to, never shown (it lies before an edit's begin)
        bool damaged = false;  ///< not all of its bytes could be read
    };

    void addPacket(Packet const& packet) { m_packets.push_back(packet); }

    /// Numbers the frames by presentation time. False when that cannot be: a shown packet has no time, or two have the
    /// same; then `finishInOrder` has to be called with what decoding shows.
    ///
    /// `ticksPerFrame`: of the nominal frame rate, 0 when it is not known.
    /// `expectedFrames`: how many frames the file's own table promises, 0 without one. The frames that a file lacks
    /// because it is cut off keep their numbers and have no packet.
    [[nodiscard]] bool finish(double ticksPerFrame, int64 expectedFrames);
    /// Numbers the frames as a decoder has put them out; `packetOfFrame` holds packet numbers.
    void finishInOrder(std::vector<int64> packetOfFrame);

    /// How many frames are shown before the first key packet: a recording that begins in the middle of a programme has
    /// pictures there that refer to what was never recorded. 0 unless timed.
    [[nodiscard]] int64 leadingFrames() const;
    /// Leaves out the first `count` frames: the following one becomes frame 0.
    void dropFirstFrames(int64 count);

    /// Whether packets can be recognised by their time, as needed for starting at another packet than the first.
    [[nodiscard]] bool isTimed() const noexcept { return m_timed; }
    [[nodiscard]] int64 frameCount() const noexcept { return static_cast<int64>(m_packetOfFrame.size()); }
    [[nodiscard]] int64 packetCount() const noexcept { return static_cast<int64>(m_packets.size()); }
    [[nodiscard]] Packet const& packet(int64 number) const { return m_packets[static_cast<size_t>(number)]; }

    /// The packet of a frame; -1 when the file lacks it.
    [[nodiscard]] int64 packetOfFrame(int64 frame) const { return m_packetOfFrame[static_cast<size_t>(frame)]; }
    /// The frame of a packet; -1 when it shows none.
    [[nodiscard]] int64 frameOfPacket(int64 packet) const;

    /// The last packet from which decoding of packet `number` can begin: a key packet that neither follows it in
    /// decoding nor in presentation. A frame that is decoded after a key packet but shown before it refers to what lies
    /// before.
    [[nodiscard]] int64 startFor(int64 number) const;
    /// The start before the start `number`; 0 at the end of the row.
    [[nodiscard]] int64 startBefore(int64 number) const;
    /// The first key packet after packet `number`, or the number of packets.
    [[nodiscard]] int64 keyAfter(int64 number) const;

private:
    void spreadDamage();
    void collectKeys();
    void fillFrameOfPacket();
    std::vector<int64> numberWithGaps(std::vector<int64> const& shown, double ticksPerFrame) const;

    std::vector<Packet> m_packets;
    std::vector<int64> m_packetOfFrame;
    std::vector<int64> m_frameOfPacket;
    std::vector<int64> m_keys;  // packet numbers, ascending
    bool m_timed = false;
};

}  // namespace qrtplay
