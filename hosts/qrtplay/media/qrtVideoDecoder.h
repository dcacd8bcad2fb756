#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "media/qrtDecodedFrameCache.h"
#include "media/qrtDemuxer.h"
#include "base/qrtKit.h"
#include "media/qrtMediaFile.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Decodes frames of a media file by number, in any order.
///
/// Going forward costs one frame each. Any other frame is reached from the last key packet before it; the pictures that
/// are decoded on the way are cached, so that going backward decodes each group of pictures once as long as the budget
/// of the cache holds it.
/// A frame that cannot be decoded without an error fails; it never comes out as another picture.
/// Threading: one thread at a time, but for the cache.
class VideoDecoder final {
public:
    static Outcome open(std::shared_ptr<MediaFile const> const& file, std::unique_ptr<VideoDecoder>& decoder);

    [[nodiscard]] MediaFile const& file() const noexcept { return *m_file; }
    [[nodiscard]] DecodedFrameCache& cache() noexcept { return m_cache; }

    /// Sets `picture` to frame number `frame`. Failures name the file and the frame, and leave `picture` empty.
    Outcome frame(int64 frame, FramePtr& picture);

private:
    explicit VideoDecoder(std::shared_ptr<MediaFile const> file) : m_file(std::move(file)) {}

    Outcome fail(int64 frame, std::string const& why) const;
    Outcome decode(int64 frame, FramePtr& picture);
    [[nodiscard]] bool canRunOnTo(int64 frame) const;
    [[nodiscard]] bool startAt(int64 start);
    [[nodiscard]] bool rewind();
    [[nodiscard]] bool skipTo(int64 start);
    [[nodiscard]] bool readNext();
    [[nodiscard]] bool runOnTo(int64 frame, FramePtr& picture);
    void feedPacket();
    void noteDamage(int64 packet);
    [[nodiscard]] bool isSuspect(int64 packet) const;
    void takeDecoded();
    [[nodiscard]] FramePtr releaseSound(int64 wanted);
    [[nodiscard]] bool isSettled(int64 packet) const;
    [[nodiscard]] bool isHeldBack(int64 frame) const;

    struct HeldBack {
        int64 frame;
        int64 packet;
        FramePtr picture;
    };

    const std::shared_ptr<MediaFile const> m_file;
    DecodedFrameCache m_cache;
    std::unique_ptr<Demuxer> m_demuxer;
    AvPtr<AVCodecContext> m_decoder;
    AvPtr<AVPacket> m_packet;
    AvPtr<AVFrame> m_decoded;
    std::unordered_map<int64, std::string> m_failures;  // so that a broken frame is not tried again and again

    // The run: decoding from a key packet on, without a jump.
    bool m_running = false;
    bool m_packetRead = false;  // m_packet waits to be fed
    bool m_drained = false;     // the end of the stream has been fed
    int64 m_startPacket = 0;
    int64 m_nextPacket = 0;  // number of the packet to be fed next
    int64 m_lastFrame = -1;  // the last one that came out
    std::vector<HeldBack> m_heldBack;  // came out, but a frame that they may refer to has yet to prove sound
    int64 m_damagedFrom = -1;          // packets from here ...
    int64 m_damagedUntil = -1;         // ... up to here, exclusive, may show the traces of an error
};

}  // namespace qrtplay
