#include "media/qrtFrameIndex.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qrtplay {

bool FrameIndex::finish(double ticksPerFrame, int64 expectedFrames) {
    std::vector<int64> shown;
    for (int64 number = 0; number < packetCount(); ++number) {
        if (packet(number).hidden) continue;
        if (packet(number).pts == noTime) return false;
        shown.push_back(number);
    }
    std::sort(shown.begin(), shown.end(), [this](int64 a, int64 b) { return packet(a).pts < packet(b).pts; });
    for (size_t i = 1; i < shown.size(); ++i) {
        if (packet(shown[i]).pts == packet(shown[i - 1]).pts) return false;
    }

    m_timed = true;
    m_packetOfFrame = numberWithGaps(shown, ticksPerFrame);
    if (expectedFrames > frameCount()) m_packetOfFrame.resize(static_cast<size_t>(expectedFrames), -1);
    collectKeys();
    spreadDamage();
    fillFrameOfPacket();
    return true;
}

void FrameIndex::finishInOrder(std::vector<int64> packetOfFrame) {
    m_timed = false;
    m_packetOfFrame = std::move(packetOfFrame);
    collectKeys();
    spreadDamage();
    fillFrameOfPacket();
}

// A file that is cut off may hold a frame but lack those that are shown before it and decoded after it; counting what
// is there would then show the wrong picture. A packet that is missing would have been decoded after the last one that
// was read and is never shown before it is decoded, so up to that time the count holds. Beyond it, and only in a clip
// whose frames are evenly spaced, the time says which number a frame has.
std::vector<int64> FrameIndex::numberWithGaps(std::vector<int64> const& shown, double ticksPerFrame) const {
    if (shown.empty()) return {};
    const int64 lastDts = m_packets.back().dts;
    const int64 firstPts = packet(shown.front()).pts;
    const auto isCertain = [&](int64 number) { return lastDts == noTime || packet(number).pts <= lastDts; };
    const auto firstUncertain = std::partition_point(shown.begin(), shown.end(), isCertain);
    const auto certainCount = firstUncertain - shown.begin();

    if (certainCount > 1) {
        const int64 span = packet(*(firstUncertain - 1)).pts - firstPts;
        ticksPerFrame = static_cast<double>(span) / static_cast<double>(certainCount - 1);
    }
    if (firstUncertain == shown.end() || !(ticksPerFrame > 0)) return shown;
    const auto numberByTime = [&](int64 number) {
        return std::llround(static_cast<double>(packet(number).pts - firstPts) / ticksPerFrame);
    };
    for (auto it = shown.begin(); it != firstUncertain; ++it) {
        if (numberByTime(*it) != it - shown.begin()) return shown;  // not evenly spaced: the count is all there is
    }

    std::vector<int64> numbered(shown.begin(), firstUncertain);
    // No decoder delays a frame by more than 16 others, so a larger gap is the clip's own.
    constexpr int64 longestDelay = 16;
    for (auto it = firstUncertain; it != shown.end(); ++it) {
        const int64 gap = numberByTime(*it) - static_cast<int64>(numbered.size());
        if (gap > 0 && gap <= longestDelay) numbered.resize(numbered.size() + static_cast<size_t>(gap), -1);
        numbered.push_back(*it);
    }
    return numbered;
}

// What follows a damaged packet may refer to it, up to the next key packet; and what is decoded after that one but
// shown before it still may.
void FrameIndex::spreadDamage() {
    bool damaged = false;
    bool damagedBeforeKey = false;
    int64 keyPts = noTime;
    for (Packet& packet : m_packets) {
        if (packet.key) {
            damagedBeforeKey = damaged;
            damaged = false;
            keyPts = packet.pts;
        }
        if (packet.damaged) damaged = true;
        packet.damaged = damaged || (damagedBeforeKey && packet.pts != noTime && packet.pts < keyPts);
    }
}

void FrameIndex::collectKeys() {
    m_keys.clear();
    for (int64 number = 0; number < packetCount(); ++number) {
        if (packet(number).key) m_keys.push_back(number);
    }
}

void FrameIndex::fillFrameOfPacket() {
    m_frameOfPacket.assign(m_packets.size(), -1);
    for (int64 frame = 0; frame < frameCount(); ++frame) {
        const int64 number = packetOfFrame(frame);
        if (number >= 0 && number < packetCount()) m_frameOfPacket[static_cast<size_t>(number)] = frame;
    }
}

int64 FrameIndex::leadingFrames() const {
    if (!m_timed || m_keys.empty()) return 0;
    const int64 keyPts = packet(m_keys.front()).pts;
    int64 leading = 0;
    while (leading < frameCount() && packetOfFrame(leading) >= 0 && packet(packetOfFrame(leading)).pts < keyPts)
        ++leading;
    return leading;
}

void FrameIndex::dropFirstFrames(int64 count) {
    m_packetOfFrame.erase(m_packetOfFrame.begin(), m_packetOfFrame.begin() + std::min(count, frameCount()));
    fillFrameOfPacket();
}

int64 FrameIndex::frameOfPacket(int64 packet) const {
    if (packet < 0 || packet >= packetCount()) return -1;
    return m_frameOfPacket[static_cast<size_t>(packet)];
}

int64 FrameIndex::startFor(int64 number) const {
    if (!m_timed) return 0;
    auto key = std::upper_bound(m_keys.begin(), m_keys.end(), number);
    while (key != m_keys.begin()) {
        --key;
        if (packet(*key).pts != noTime && packet(*key).pts <= packet(number).pts) return *key;
    }
    return 0;
}

int64 FrameIndex::startBefore(int64 number) const {
    const auto key = std::lower_bound(m_keys.begin(), m_keys.end(), number);
    return key == m_keys.begin() ? 0 : *(key - 1);
}

int64 FrameIndex::keyAfter(int64 number) const {
    const auto key = std::upper_bound(m_keys.begin(), m_keys.end(), number);
    return key == m_keys.end() ? packetCount() : *key;
}

}  // namespace qrtplay
