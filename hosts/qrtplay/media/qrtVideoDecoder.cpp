#include "media/qrtVideoDecoder.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

/// No format puts a frame out later than this many packets after others that refer to it.
constexpr int64 farthestReference = 32;

}  // namespace

Outcome VideoDecoder::open(std::shared_ptr<MediaFile const> const& file, std::unique_ptr<VideoDecoder>& decoder) {
    std::unique_ptr<VideoDecoder> opened(new VideoDecoder(file));
    if (Outcome outcome = Demuxer::open(file->path(), opened->m_demuxer); outcome.failed()) return outcome;
    if (Outcome outcome = opened->m_demuxer->makeDecoder(opened->m_decoder); outcome.failed()) return outcome;
    opened->m_packet.reset(av_packet_alloc());
    opened->m_decoded.reset(av_frame_alloc());
    if (!opened->m_packet || !opened->m_decoded) return Outcome::failure(file->path() + ": out of memory");
    decoder = std::move(opened);
    return Outcome();
}

Outcome VideoDecoder::fail(int64 frame, std::string const& why) const {
    return Outcome::failure(m_file->path() + ": frame " + std::to_string(frame) + ": " + why);
}

Outcome VideoDecoder::frame(int64 frame, FramePtr& picture) {
    picture.reset();
    FrameIndex const& index = m_file->index();
    if (frame < 0 || frame >= index.frameCount()) return fail(frame, "outside the clip");
    picture = m_cache.get(frame);
    if (picture) return Outcome();

    const int64 packet = index.packetOfFrame(frame);
    if (packet < 0) return fail(frame, "missing, the file is cut off");
    if (index.packet(packet).damaged) return fail(frame, "damaged, or depends on a damaged one");
    if (const auto known = m_failures.find(frame); known != m_failures.end()) return fail(frame, known->second);

    Outcome outcome = decode(frame, picture);
    if (outcome.failed()) m_failures.emplace(frame, "cannot be decoded");
    return outcome;
}

Outcome VideoDecoder::decode(int64 frame, FramePtr& picture) {
    FrameIndex const& index = m_file->index();
    if (canRunOnTo(frame) && runOnTo(frame, picture)) return Outcome();

    // A packet that is marked as a key may not be enough to start from, for example when its stream refreshes the picture
    // bit by bit; then an earlier one is, and the first in any case.
    constexpr int attempts = 3;
    int64 start = index.startFor(index.packetOfFrame(frame));
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (startAt(start) && runOnTo(frame, picture)) return Outcome();
        if (start == 0) break;
        start = attempt + 2 < attempts ? index.startBefore(start) : 0;
    }
    m_running = false;
    return fail(frame, "cannot be decoded");
}

bool VideoDecoder::canRunOnTo(int64 frame) const {
    FrameIndex const& index = m_file->index();
    if (isHeldBack(frame)) return true;
    return m_running && frame > m_lastFrame && index.startFor(index.packetOfFrame(frame)) <= m_nextPacket;
}

bool VideoDecoder::startAt(int64 start) {
    FrameIndex const& index = m_file->index();
    m_running = false;
    avcodec_flush_buffers(m_decoder.get());
    m_damagedFrom = m_damagedUntil = -1;
    m_heldBack.clear();
    m_lastFrame = -1;
    m_drained = false;
    m_packetRead = false;

    const int64 time = index.packet(start).pts;
    const bool found = start > 0 && time != FrameIndex::noTime && m_demuxer->seek(time) && skipTo(start);
    // What a seek cannot find is found by reading from the beginning.
    if (!found && !(rewind() && skipTo(start))) return false;
    m_startPacket = m_nextPacket = start;
    m_running = true;
    return true;
}

bool VideoDecoder::rewind() {
    m_packetRead = false;
    std::unique_ptr<Demuxer> reopened;
    if (Demuxer::open(m_file->path(), reopened).failed()) return false;
    m_demuxer = std::move(reopened);
    return true;
}

// Reads up to the packet `start`, which then waits to be fed.
bool VideoDecoder::skipTo(int64 start) {
    FrameIndex const& index = m_file->index();
    FrameIndex::Packet const& wanted = index.packet(start);
    if (!index.isTimed()) return start == 0 && readNext();
    while (readNext()) {
        if (m_packet->pts == wanted.pts) return true;
        const bool isKey = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
        if (isKey && m_packet->pts != AV_NOPTS_VALUE && m_packet->pts > wanted.pts) return false;  // too far
    }
    return false;
}

bool VideoDecoder::readNext() {
    m_packetRead = m_demuxer->read(*m_packet) == Demuxer::ReadResult::packet;
    return m_packetRead;
}

// Decodes until `frame` comes out; false when it does not.
bool VideoDecoder::runOnTo(int64 frame, FramePtr& picture) {
    for (;;) {
        picture = releaseSound(frame);
        if (picture) return true;
        // Frames come out in order: one that has been passed by and is not held back has been left out.
        if (!m_running || (m_lastFrame >= frame && !isHeldBack(frame))) return false;

        const int result = avcodec_receive_frame(m_decoder.get(), m_decoded.get());
        if (result >= 0) {
            takeDecoded();
        } else if (result == AVERROR(EAGAIN)) {
            feedPacket();
        } else if (result == AVERROR_EOF) {
            m_running = false;
        } else {
            noteDamage(m_nextPacket - 1);
        }
    }
}

void VideoDecoder::feedPacket() {
    FrameIndex const& index = m_file->index();
    if (m_drained) {
        m_running = false;  // a decoder that still wants more has nothing to give
        return;
    }
    const bool more = (m_packetRead || readNext()) && m_nextPacket < index.packetCount();
    if (!more) {
        m_drained = true;
        if (avcodec_send_packet(m_decoder.get(), nullptr) < 0) m_running = false;
        return;
    }
    if (index.isTimed() && m_packet->pts != index.packet(m_nextPacket).pts) {
        m_running = false;  // the numbering has slipped; another start gets it right
        return;
    }
    if (index.packet(m_nextPacket).damaged) {  // known beforehand, and so is what depends on it
        m_packetRead = false;
        ++m_nextPacket;
        return;
    }
    // Frames are recognised by the number of their packet, which the decoder hands on as their time.
    m_packet->pts = m_nextPacket;
    m_packet->dts = AV_NOPTS_VALUE;
    const int result = avcodec_send_packet(m_decoder.get(), m_packet.get());
    m_packetRead = false;
    ++m_nextPacket;
    if (result < 0) noteDamage(m_nextPacket - 1);
}

// What is decoded after a damaged packet may refer to it, up to the next key packet.
void VideoDecoder::noteDamage(int64 packet) {
    const bool farFromTheLast = m_damagedUntil + farthestReference < packet;
    m_damagedFrom = m_damagedUntil < 0 || farFromTheLast ? packet : std::min(m_damagedFrom, packet);
    m_damagedUntil = std::max(m_damagedUntil, m_file->index().keyAfter(packet));
}

bool VideoDecoder::isSuspect(int64 packet) const {
    FrameIndex const& index = m_file->index();
    if (packet < m_damagedFrom || m_damagedUntil < 0) return false;
    if (packet < m_damagedUntil || m_damagedUntil >= index.packetCount()) return true;
    // Decoded after the next key packet but shown before it: refers to what lies before the key packet as well.
    return index.isTimed() && packet < index.keyAfter(m_damagedUntil) &&
           index.packet(packet).pts < index.packet(m_damagedUntil).pts;
}

void VideoDecoder::takeDecoded() {
    FrameIndex const& index = m_file->index();
    AvPtr<AVFrame> decoded(av_frame_alloc());
    if (!decoded) return;
    av_frame_move_ref(decoded.get(), m_decoded.get());

    const int64 packet = decoded->pts;
    const bool known = packet >= m_startPacket && packet < m_nextPacket;
    // Shown before the start of the run: it refers to pictures that this run has not seen.
    if (!known || (m_startPacket > 0 && index.isTimed() && index.packet(packet).pts < index.packet(m_startPacket).pts))
        return;
    if ((decoded->flags & AV_FRAME_FLAG_CORRUPT) != 0 || decoded->decode_error_flags != 0) noteDamage(packet);

    const int64 frame = index.frameOfPacket(packet);
    if (frame < 0) return;
    m_lastFrame = std::max(m_lastFrame, frame);
    if (decoded->width > 0 && decoded->height > 0)
        m_heldBack.push_back({frame, packet, FramePtr(decoded.release(), AvDeleter())});
}

// A frame that others refer to may come out after them, and only then shows that it is flawed. So a picture is let go when
// all that were decoded shortly before it are out.
bool VideoDecoder::isSettled(int64 packet) const {
    for (int64 earlier = std::max(m_startPacket, packet - farthestReference); earlier < packet; ++earlier) {
        if (m_file->index().frameOfPacket(earlier) > m_lastFrame) return false;
    }
    return true;
}

bool VideoDecoder::isHeldBack(int64 frame) const {
    return std::any_of(m_heldBack.begin(), m_heldBack.end(), [&](HeldBack const& held) { return held.frame == frame; });
}

// Moves all pictures that have proved sound to the cache and gives back the wanted one, if it is among them.
FramePtr VideoDecoder::releaseSound(int64 wanted) {
    FramePtr picture;
    std::erase_if(m_heldBack, [&](HeldBack const& held) {
        if (isSuspect(held.packet)) return true;
        if (m_running && !isSettled(held.packet)) return false;
        if (held.frame == wanted) picture = held.picture;
        m_cache.put(held.frame, held.picture);
        return true;
    });
    return picture;
}

}  // namespace qrtplay
