#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtDemuxer.h"
#include "media/qrtMediaFile.h"
#include "media/qrtPictureSource.h"

namespace qrtplay {

/// Decodes frames of a media file by number, in any order.
///
/// Going forward costs one frame each. Any other frame is reached from the last key packet before it.
/// A frame that cannot be decoded without an error fails; it never comes out as another picture.
/// Decoding is strict and fast until the clip turns out to be flawed, and tolerant from then on.
class VideoDecoder final : public PictureSource {
public:
    static Outcome open(std::shared_ptr<MediaFile const> const& file, std::unique_ptr<VideoDecoder>& decoder);

    [[nodiscard]] VideoFacts const& facts() const noexcept override { return m_file->facts(); }
    [[nodiscard]] std::string const& path() const noexcept override { return m_file->path(); }
    [[nodiscard]] Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                               std::string& why) override;
    [[nodiscard]] int64 runBegin(int64 frame) const noexcept override;
    /// Opens the file again when its first frame is asked for.
    [[nodiscard]] std::unique_ptr<PictureSource> twin() const override;
    /// Two places of one file are seen at a time when it dissolves into itself.
    [[nodiscard]] size_t mostTwins() const noexcept override { return 2; }
    void rest() override;

private:
    /// How far a run has come.
    enum class Progress { arrived, missed, given_up };
    /// What one call of `frame` is about.
    struct Errand {
        int64 frame;
        Keep const& keep;
        IsWanted const& isWanted;
        FramePtr& picture;
    };

    explicit VideoDecoder(std::shared_ptr<MediaFile const> file) : m_file(std::move(file)) {}

    [[nodiscard]] Outcome wakeUp();
    [[nodiscard]] bool becomeTolerant();
    [[nodiscard]] std::string whyLost(int64 frame) const;
    [[nodiscard]] Progress decode(Errand const& errand);
    [[nodiscard]] bool canRunOnTo(int64 frame) const;
    [[nodiscard]] bool startAt(int64 start);
    [[nodiscard]] bool rewind();
    [[nodiscard]] bool skipTo(int64 start);
    [[nodiscard]] bool readNext();
    [[nodiscard]] Progress runOnTo(Errand const& errand);
    void feedPacket(Errand const& errand);
    void noteError();
    [[nodiscard]] bool isLeftOut(Errand const& errand, int64 packet) const;
    void noteDamage(int64 packet);
    [[nodiscard]] bool isSuspect(int64 packet) const;
    void takeDecoded();
    void releaseSound(Errand const& errand);
    [[nodiscard]] bool isSettled(int64 packet) const;
    [[nodiscard]] bool isHeldBack(int64 frame) const;

    struct HeldBack {
        int64 frame;
        int64 packet;
        FramePtr picture;
        bool isKept = false;  // has been told of
    };

    const std::shared_ptr<MediaFile const> m_file;
    std::unique_ptr<Demuxer> m_demuxer;  // null at rest, as is the decoder
    AvPtr<AVCodecContext> m_decoder;
    Demuxer::Care m_care = Demuxer::Care::strict;
    AvPtr<AVPacket> m_packet;
    AvPtr<AVFrame> m_decoded;
    std::unordered_set<int64> m_failures;  // so that a broken frame is not tried again and again

    // The run: decoding from a key packet on, without a jump.
    bool m_running = false;
    bool m_packetRead = false;  // m_packet waits to be fed
    bool m_drained = false;     // the end of the stream has been fed
    int64 m_startPacket = 0;
    int64 m_nextPacket = 0;            // number of the packet to be fed next
    int64 m_lastFrame = -1;            // the last one that came out
    std::vector<HeldBack> m_heldBack;  // came out, but lie ahead or have yet to prove sound
    int64 m_damagedFrom = -1;          // packets from here ...
    int64 m_damagedUntil = -1;         // ... up to here, exclusive, may show the traces of an error
};

}  // namespace qrtplay
