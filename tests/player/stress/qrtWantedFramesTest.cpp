// The window of wanted frames, in every mode, step and short range, against walking it by the rules written down once
// more: what the advisor keeps, and what the production loop looks for and in which order.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "qrtCacheEvictionAdvisor.h"
#include "qrtEngineModel.h"
#include "qrtNextFrameSearch.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

constexpr int64 start = 2;  // -1 is how the search says that no frame is missing
constexpr int64 longest = 8;
constexpr int widestStep = 5;
constexpr int mostAhead = 6;
constexpr int mostBehind = 4;

struct Window {
    ModelParams params;
    int numAhead;
    int numBehind;

    [[nodiscard]] std::string text() const {
        return "mode " + std::to_string(params.mode) + ", step " + std::to_string(params.step) + ", at " +
               std::to_string(params.current) + " of " + std::to_string(params.start) + " to " +
               std::to_string(params.end) + ", " + std::to_string(numAhead) + " ahead, " + std::to_string(numBehind) +
               " behind";
    }
};

/// Calls `check` for every window; stops at the first that fails.
template <class Check>
void forEveryWindow(ModelParams::Mode mode, Check const& check) {
    for (int64 length = 1; length <= longest; ++length)
        for (int64 current = start; current < start + length; ++current)
            for (int step = -widestStep; step <= widestStep; ++step)
                for (int ahead = 0; ahead <= mostAhead; ++ahead)
                    for (int behind = 0; behind <= mostBehind; ++behind) {
                        check(Window{{current, start, start + length - 1, step, mode}, ahead, behind});
                        if (::testing::Test::HasFailure()) return;
                    }
}

/// A step that leaves the range does not end the walk: it only stands nowhere.
std::set<int64> keptByTheBook(Window const& window) {
    std::set<int64> kept{window.params.current};
    const auto walk = [&](ModelParams walker, int count) {
        for (int i = 0; i < count; ++i)
            if (walker.next()) kept.insert(walker.current);
    };
    walk(window.params, window.numAhead);
    walk(window.params.reversed(), window.numBehind);
    return kept;
}

/// The current frame, those ahead, those behind; where a step leaves the range the search ends.
std::vector<int64> producedByTheBook(Window const& window) {
    std::vector<int64> order{window.params.current};
    std::set<int64> known{window.params.current};
    const auto walk = [&](ModelParams walker, int count) {
        for (int i = 0; i < count; ++i) {
            if (!walker.next()) return false;
            if (known.insert(walker.current).second) order.push_back(walker.current);
        }
        return true;
    };
    if (walk(window.params, window.numAhead)) walk(window.params.reversed(), window.numBehind);
    return order;
}

class WantedFrames : public ::testing::TestWithParam<ModelParams::Mode> {};

}  // namespace

TEST_P(WantedFrames, areKeptAsTheWalkSays) {
    std::vector<SharedPtr<CacheData>> records;
    constexpr int64 margin = 6;
    for (int64 frame = start - margin; frame < start + longest + margin; ++frame)
        records.push_back(SharedPtr<CacheData>(new ProducedVideoBuffer(frame, nullptr)));
    forEveryWindow(GetParam(), [&](Window const& window) {
        const auto params =
            PlayParams::create(Time(), Time(), Time(), Rational(24, 1), window.params.step,
                               static_cast<PlayParams::PlayMode>(window.params.mode), PlayParams::video_only);
        params->setCurrentFrame(window.params.current);
        params->setStartFrame(window.params.start);
        params->setEndFrame(window.params.end);
        CacheEvictionAdvisor advisor(params, window.numAhead, window.numBehind);
        std::set<int64> kept;
        for (auto const& record : records)
            if (!advisor.canEvict("", record)) kept.insert(ProducedVideoBuffer::from(record)->getFrameNumber());
        ASSERT_EQ(kept, keptByTheBook(window)) << window.text();
    });
}

TEST_P(WantedFrames, areLookedForInTheOrderOfTheWalk) {
    forEveryWindow(GetParam(), [](Window const& window) {
        PlayParamsPrivate params;
        params.currentFrame = window.params.current;
        params.startFrame = window.params.start;
        params.endFrame = window.params.end;
        params.step = window.params.step;
        params.playMode = static_cast<PlayParams::PlayMode>(window.params.mode);
        NextFrameSearch search;
        std::set<int64> cached;
        const auto isCached = [&](int64 frame) { return cached.count(frame) != 0; };
        std::vector<int64> order;
        const auto find = [&] { return search.find(params, window.numAhead, window.numBehind, 0, isCached); };
        for (int64 frame = find(); frame != NextFrameSearch::noFrame && !isCached(frame); frame = find()) {
            order.push_back(frame);
            cached.insert(frame);
        }
        ASSERT_EQ(order, producedByTheBook(window)) << window.text();
    });
}

INSTANTIATE_TEST_SUITE_P(Modes, WantedFrames,
                         ::testing::Values(ModelParams::single, ModelParams::loop, ModelParams::ping_pong));

}  // namespace QRT_0_81
