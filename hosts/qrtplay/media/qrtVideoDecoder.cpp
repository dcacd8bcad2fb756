#include "media/qrtVideoDecoder.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

/// No format puts a frame out later than this many packets after others that refer to it.
constexpr int64 farthestReference = 32;

/// Whether the decoder knows the pictures that nothing refers to, and leaves them out when it is told to. Other formats
/// have several grades of them, of which the lower refer to the upper.
bool knowsUnreferenced(AVCodecID codec) {
    return codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_MPEG2VIDEO || codec == AV_CODEC_ID_MPEG4;
}

}  // namespace

Outcome VideoDecoder::open(std::shared_ptr<MediaFile const> const& file, std::unique_ptr<VideoDecoder>& decoder) {
    std::unique_ptr<VideoDecoder> opened(new VideoDecoder(file));
    if (Outcome outcome = opened->wakeUp(); outcome.failed()) return outcome;
    decoder = std::move(opened);
    return Outcome();
}

Outcome VideoDecoder::wakeUp() {
    if (m_decoder) return Outcome();
    std::unique_ptr<Demuxer> demuxer;
    AvPtr<AVCodecContext> decoder;
    if (Outcome outcome = Demuxer::open(path(), demuxer); outcome.failed()) return outcome;
    if (!demuxer->gainsFromStrictness()) m_care = Demuxer::Care::tolerant;
    if (Outcome outcome = demuxer->makeDecoder(decoder, m_care); outcome.failed()) return outcome;
    m_packet.reset(av_packet_alloc());
    m_decoded.reset(av_frame_alloc());
    if (!m_packet || !m_decoded) return Outcome::failure(path() + ": out of memory");
    m_demuxer = std::move(demuxer);
    m_decoder = std::move(decoder);
    return Outcome();
}

void VideoDecoder::rest() {
    m_running = false;
    m_heldBack.clear();
    m_decoder.reset();
    m_demuxer.reset();
    m_packet.reset();
    m_decoded.reset();
}

std::unique_ptr<PictureSource> VideoDecoder::twin() const {
    return std::unique_ptr<PictureSource>(new VideoDecoder(m_file));
}

int64 VideoDecoder::runBegin(int64 frame) const noexcept {
    FrameIndex const& index = m_file->index();
    if (frame < 0 || frame >= index.frameCount() || index.packetOfFrame(frame) < 0) return frame;
    const int64 first = index.frameOfPacket(index.startFor(index.packetOfFrame(frame)));
    return first < 0 ? 0 : std::min(first, frame);
}

/// What makes a frame fail before it is tried; empty when nothing does.
std::string VideoDecoder::whyLost(int64 frame) const {
    FrameIndex const& index = m_file->index();
    if (frame < 0 || frame >= index.frameCount()) return "outside the clip";
    const int64 packet = index.packetOfFrame(frame);
    if (packet < 0) return "missing, the file is cut off";
    if (index.packet(packet).damaged) return "damaged, or depends on a damaged one";
    return m_failures.contains(frame) ? "cannot be decoded" : "";
}

PictureSource::Result VideoDecoder::frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                                          std::string& why) {
    picture.reset();
    const std::string frameName = path() + ": frame " + std::to_string(frame) + ": ";
    if (const std::string lost = whyLost(frame); !lost.empty()) {
        why = frameName + lost;
        return Result::failure;
    }
    if (const Outcome outcome = wakeUp(); outcome.failed()) {
        why = outcome.message();
        return Result::failure;
    }
    const Errand errand{frame, keep, isWanted, picture};
    Progress progress = decode(errand);
    if (progress == Progress::missed && becomeTolerant()) progress = decode(errand);
    switch (progress) {
        case Progress::arrived: return Result::picture;
        case Progress::given_up: return Result::given_up;
        case Progress::missed: break;
    }
    m_running = false;
    m_failures.insert(frame);
    why = frameName + "cannot be decoded";
    return Result::failure;
}

/// False when it is tolerant already.
bool VideoDecoder::becomeTolerant() {
    if (std::exchange(m_care, Demuxer::Care::tolerant) == Demuxer::Care::tolerant) return false;
    rest();
    return wakeUp().success();
}

VideoDecoder::Progress VideoDecoder::decode(Errand const& errand) {
    FrameIndex const& index = m_file->index();
    if (canRunOnTo(errand.frame)) {
        if (const Progress progress = runOnTo(errand); progress != Progress::missed) return progress;
    }
    // A packet that is marked as a key may not be enough to start from, for example when its stream refreshes the
    // picture bit by bit; then an earlier one is, and the first in any case.
    const int attempts = m_care == Demuxer::Care::strict ? 1 : 3;
    int64 start = index.startFor(index.packetOfFrame(errand.frame));
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (startAt(start)) {
            if (const Progress progress = runOnTo(errand); progress != Progress::missed) return progress;
        }
        if (start == 0) break;
        start = attempt + 2 < attempts ? index.startBefore(start) : 0;
    }
    return Progress::missed;
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
    if (Demuxer::open(path(), reopened).failed()) return false;
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

// Decodes until the wanted frame comes out.
VideoDecoder::Progress VideoDecoder::runOnTo(Errand const& errand) {
    for (;;) {
        releaseSound(errand);
        if (errand.picture) return Progress::arrived;
        // Frames come out in order: one that has been passed by and is not held back has been left out.
        if (!m_running || (m_lastFrame >= errand.frame && !isHeldBack(errand.frame))) return Progress::missed;
        if (!errand.isWanted(errand.frame)) return Progress::given_up;

        const int result = avcodec_receive_frame(m_decoder.get(), m_decoded.get());
        if (result >= 0) {
            takeDecoded();
        } else if (result == AVERROR(EAGAIN)) {
            feedPacket(errand);
        } else if (result == AVERROR_EOF) {
            m_running = false;
        } else {
            noteError();
        }
    }
}

void VideoDecoder::feedPacket(Errand const& errand) {
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
    m_decoder->skip_frame = isLeftOut(errand, m_nextPacket) ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    // Frames are recognised by the number of their packet, which the decoder hands on as their time.
    m_packet->pts = m_nextPacket;
    m_packet->dts = AV_NOPTS_VALUE;
    const int result = avcodec_send_packet(m_decoder.get(), m_packet.get());
    m_packetRead = false;
    ++m_nextPacket;
    if (result < 0) noteError();
}

// Whether the picture of a packet need not be decoded unless others refer to it.
bool VideoDecoder::isLeftOut(Errand const& errand, int64 packet) const {
    FrameIndex const& index = m_file->index();
    if (!index.isTimed() || !knowsUnreferenced(m_decoder->codec_id)) return false;
    const int64 frame = index.frameOfPacket(packet);
    return frame >= 0 && frame < errand.frame && !errand.isWanted(frame);
}

// A strict decoder is not asked for more: what it had in hand may be flawed, too.
void VideoDecoder::noteError() {
    if (m_care == Demuxer::Care::strict)
        m_running = false;
    else
        noteDamage(m_nextPacket - 1);
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
    if ((decoded->flags & AV_FRAME_FLAG_CORRUPT) != 0 || decoded->decode_error_flags != 0) {
        if (m_care == Demuxer::Care::strict) {
            m_running = false;
            return;
        }
        noteDamage(packet);
    }

    const int64 frame = index.frameOfPacket(packet);
    if (frame < 0) return;
    m_lastFrame = std::max(m_lastFrame, frame);
    if (decoded->width > 0 && decoded->height > 0)
        m_heldBack.push_back({frame, packet, FramePtr(decoded.release(), AvDeleter()), false});
}

// A frame that others refer to may come out after them, and only then shows that it is flawed. So a picture is let go
// when all that were decoded shortly before it are out.
bool VideoDecoder::isSettled(int64 packet) const {
    if (m_care == Demuxer::Care::strict) return true;  // what is flawed does not come out
    for (int64 earlier = std::max(m_startPacket, packet - farthestReference); earlier < packet; ++earlier) {
        if (m_file->index().frameOfPacket(earlier) > m_lastFrame) return false;
    }
    return true;
}

bool VideoDecoder::isHeldBack(int64 frame) const {
    return std::any_of(m_heldBack.begin(), m_heldBack.end(), [&](HeldBack const& held) { return held.frame == frame; });
}

// Tells of all pictures that have proved sound. Those that lie ahead stay at hand as well: whoever does not keep them
// will ask for them next.
void VideoDecoder::releaseSound(Errand const& errand) {
    std::erase_if(m_heldBack, [&](HeldBack& held) {
        if (isSuspect(held.packet)) return true;
        if (m_running && !isSettled(held.packet)) return false;
        const bool isWanted = held.frame == errand.frame;
        if (isWanted) errand.picture = held.picture;
        if (!std::exchange(held.isKept, true) || isWanted) errand.keep(held.frame, held.picture);
        return held.frame <= errand.frame;
    });
}

}  // namespace qrtplay
