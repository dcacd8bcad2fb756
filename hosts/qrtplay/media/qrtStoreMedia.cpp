#include "media/qrtStoreMedia.h"

#include <algorithm>
#include <tuple>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace qrtplay {

/// What it takes a source to get to a frame; the smaller, the better.
struct StoreMedia::Way {
    Way(StoreSource const& source, int64 frame)
        : startsAfresh(!canRunOn(source, frame)),
          pictures(startsAfresh ? frame - source.pictures->runBegin(frame) + 1 : frame - source.passed),
          isBusy(source.isBusy && source.passed < source.target),  // not one that is just about to return
          lastUse(source.lastUse) {}

    [[nodiscard]] static bool canRunOn(StoreSource const& source, int64 frame) {
        return source.passed < frame && source.passed >= source.pictures->runBegin(frame) - 1;
    }
    [[nodiscard]] bool operator<(Way const& other) const {
        return std::tie(pictures, startsAfresh, isBusy, lastUse) <
               std::tie(other.pictures, other.startsAfresh, other.isBusy, other.lastUse);
    }

    bool startsAfresh;
    int64 pictures;
    bool isBusy;
    uint64 lastUse;
};

void StoreMedia::finishOpening(Outcome const& outcome, std::unique_ptr<PictureSource> source) {
    m_failure = outcome;
    m_state = outcome.success() && source ? State::open : State::failed;
    if (m_state == State::failed) {
        if (outcome.success()) m_failure = Outcome::failure("a media opens without a source of pictures");
        return;
    }
    VideoFacts const& facts = source->facts();
    m_expectedBytes =
        static_cast<size_t>(std::max(0, av_image_get_buffer_size(facts.pixelFormat, facts.width, facts.height, 1)));
    m_mostSources = source->mostTwins();
    m_sources.push_back(std::make_unique<StoreSource>(std::move(source)));
    m_sources.back()->isAwake = true;
}

int64 StoreMedia::frameAt(ExactTime const& time) const noexcept {
    VideoFacts const& facts = pictures().facts();
    const int64 frame = time.frameAt(facts.frameRate);
    return facts.frameCount == endlessFrameCount && frame > 0 ? 0 : frame;
}

bool StoreMedia::holds(int64 frame) const noexcept {
    return frame >= 0 && frame < pictures().facts().frameCount;
}

bool StoreMedia::isBeingDecoded(int64 frame, Urgency urgency) {
    for (auto const& source : m_sources) {
        if (!source->isBusy || source->givesUp) continue;
        if (frame != source->target && (frame <= source->passed || frame > source->target)) continue;
        source->urgency = std::max(source->urgency, urgency);
        return true;
    }
    return false;
}

// Whoever waits for a source that is on its way saves starting afresh, unless the picture stands alone anyway.
bool StoreMedia::isAboutToBeReached(int64 frame) const {
    constexpr int64 soon = 32;
    const int64 begin = pictures().runBegin(frame);
    if (begin == frame && pictures().runBegin(frame - 1) == frame - 1) return false;
    return std::any_of(m_sources.begin(), m_sources.end(), [&](auto const& source) {
        if (!source->isBusy) return false;
        return source->givesUp || (source->target < frame && source->target >= std::min(begin - 1, frame - soon));
    });
}

StoreSource* StoreMedia::choose(int64 frame, Urgency urgency) {
    if (isBeingDecoded(frame, urgency)) return nullptr;
    if (urgency == decodingAhead && isAboutToBeReached(frame)) return nullptr;

    StoreSource* best = nullptr;
    for (auto const& source : m_sources) {
        if (source->isBusy && source->urgency >= urgency) continue;
        if (!best || Way(*source, frame) < Way(*best, frame)) best = source.get();
    }
    // A source that has a place in the media had better keep it, for that place may be wanted again in turn with this
    // one.
    const bool losesPlace = !best || (best->passed != StoreSource::nowhere && Way(*best, frame).startsAfresh);
    if (losesPlace) {
        if (StoreSource* const twin = addTwin()) return twin;
    }
    if (!best || !best->isBusy) return best;
    best->givesUp = true;
    return nullptr;
}

StoreSource* StoreMedia::addTwin() {
    if (m_sources.size() >= m_mostSources) return nullptr;
    std::unique_ptr<PictureSource> twin = pictures().twin();
    if (!twin) {
        m_mostSources = m_sources.size();
        return nullptr;
    }
    return m_sources.emplace_back(std::make_unique<StoreSource>(std::move(twin))).get();
}

void StoreMedia::begin(StoreSource& source, int64 frame, Urgency urgency) {
    if (!Way::canRunOn(source, frame)) source.passed = source.pictures->runBegin(frame) - 1;
    source.isBusy = true;
    source.target = frame;
    source.urgency = urgency;
    source.givesUp = false;
}

}  // namespace qrtplay
