#pragma once

#include <memory>

#include "base/qrtKit.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Where the sound of one packet belongs, in samples of the stream's rate; position 0 is the file's time 0.
struct PacketPlace {
    int64 position = 0;  ///< of the first sample that decoding yields
    int64 samples = 0;   ///< that decoding should yield
    int64 skipped = 0;   ///< of these at the beginning, which nobody is to hear
    int64 trimmed = 0;   ///< of these at the end
};

/// Tells where packet after packet of a stream belongs.
///
/// Timestamps of many containers are coarser than a sample, so packets that follow each other closely enough count as
/// one continuous run, in which every packet begins where the one before it ends. A larger gap remains one. Timestamps
/// that go back do not: the sound goes on, and later timestamps are understood relative to the new beginning.
///
/// Threading: none of its own.
class PacketClock final {
public:
    /// All that the place of the next packet depends on, besides the packet.
    struct State {
        bool started = false;
        int64 next = 0;    ///< where a packet belongs that continues the run
        int64 offset = 0;  ///< what is to be added to timestamps
        int64 toBeSkipped = 0;
    };

    /// `usualLength`: in samples, of packets that do not tell their own; 0 when it is not known either.
    PacketClock(AVStream const& stream, int64 usualLength);

    /// Whether the packets of the stream tell their lengths to the sample.
    [[nodiscard]] static bool tellsLengths(AVStream const& stream);

    [[nodiscard]] int64 sampleRate() const noexcept { return m_stream.codecpar->sample_rate; }
    [[nodiscard]] PacketPlace place(AVPacket const& packet);

    [[nodiscard]] State const& state() const noexcept { return m_state; }
    /// Goes on at a packet of `samples` samples, before which the state was `state`.
    void resume(State const& state, int64 samples);
    /// Whether every packet so far had a timestamp of its own, later than those before it.
    [[nodiscard]] bool isOrdered() const noexcept { return m_ordered; }
    /// Of a packet, in ticks; `AV_NOPTS_VALUE` when it has none.
    [[nodiscard]] static int64 timestampOf(AVPacket const& packet) noexcept;

private:
    struct ParserDeleter {
        void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
    };

    [[nodiscard]] int64 samplesIn(AVPacket const& packet);
    void readTrimming(AVPacket const& packet, PacketPlace& place);
    [[nodiscard]] bool statedPosition(int64 timestamp, int64& position) const;
    void moveTo(AVPacket const& packet, PacketPlace const& place);

    AVStream const& m_stream;
    const int64 m_usualLength;
    std::unique_ptr<AVCodecParserContext, ParserDeleter> m_parser;
    AvPtr<AVCodecContext> m_parserSettings;
    State m_state;
    int64 m_resumedSamples = -1;
    int64 m_lastTimestamp = AV_NOPTS_VALUE;  // the smallest number there is
    bool m_ordered = true;
};

}  // namespace qrtplay
