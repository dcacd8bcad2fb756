// The search for the next frame to produce, against one that looks at every frame every time.
#include "qrtNextFrameSearch.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "qrtFrameWalk.h"

namespace QRT_0_81 {

namespace {

/// A cache by frame numbers, playback over it, and the search beside the literal one.
class SearchedCache {
public:
    SearchedCache(PlayParams::PlayMode mode, int32 numHead, int32 numTail) : m_numHead(numHead), m_numTail(numTail) {
        m_params.playMode = mode;
        m_params.step = 1;
    }

    PlayParamsPrivate& params() { return m_params; }
    std::set<int64> const& cached() const { return m_cached; }
    int numLookUps() const { return m_numLookUps; }

    int64 found() {
        m_numLookUps = 0;
        return m_search.find(m_params, m_numHead, m_numTail, m_numRemoved, [this](int64 frame) {
            ++m_numLookUps;
            return m_cached.count(frame) != 0;
        });
    }

    int64 foundLiterally() const {
        if (!isCached(m_params.currentFrame)) return m_params.currentFrame;
        PlayParamsPrivate head = m_params;
        for (int32 i = 0; i < m_numHead; ++i) {
            if (!head.next()) return NextFrameSearch::noFrame;
            if (!isCached(head.currentFrame)) return head.currentFrame;
        }
        PlayParamsPrivate tail = m_params.reversed();
        for (int32 i = 0; i < m_numTail; ++i) {
            if (!tail.next()) return NextFrameSearch::noFrame;
            if (!isCached(tail.currentFrame)) return tail.currentFrame;
        }
        return NextFrameSearch::noFrame;
    }

    void put(int64 frame) { m_cached.insert(frame); }

    /// As the cache's advisor does it: only what is not wanted, and the search is told.
    void evictUnwanted() {
        for (const int64 frame : m_cached) {
            if (isWanted(frame)) continue;
            remove(frame);
            m_search.noteUnwantedRemoved(m_params, 1);
            return;
        }
    }

    void remove(int64 frame) { m_numRemoved += m_cached.erase(frame); }

    void clear() {
        m_numRemoved += m_cached.size();
        m_cached.clear();
    }

    bool isInside(int64 frame) const { return frame >= m_params.startFrame && frame <= m_params.endFrame; }

    void beginRun() { m_search.forget(); }

    void setCounts(int32 numHead, int32 numTail) {
        m_numHead = numHead;
        m_numTail = numTail;
        m_search.forget();
    }

    /// Produces all that is to be produced; the last answer.
    int64 produceAll() {
        for (int64 frame = found(); frame != NextFrameSearch::noFrame; frame = found())
            put(frame);
        return NextFrameSearch::noFrame;
    }

private:
    bool isCached(int64 frame) const { return m_cached.count(frame) != 0; }

    bool isWanted(int64 frame) const {
        return frame == m_params.currentFrame || walkReaches(m_params, m_numHead, frame) ||
               walkReaches(m_params.reversed(), m_numTail, frame);
    }

    NextFrameSearch m_search;
    PlayParamsPrivate m_params;
    int32 m_numHead;
    int32 m_numTail;
    std::set<int64> m_cached;
    uint64 m_numRemoved = 0;
    int m_numLookUps = 0;
};

class NextFrameSearchInMode : public ::testing::TestWithParam<PlayParams::PlayMode> {};

}  // namespace

TEST_P(NextFrameSearchInMode, findsWhatAFreshSearchFindsWhateverHappensBetweenTwo) {
    std::mt19937 random(7u + static_cast<unsigned>(GetParam()));
    const auto upTo = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    const auto frameInside = [&upTo](SearchedCache& cache) {
        PlayParamsPrivate const& params = cache.params();
        return params.startFrame + upTo(static_cast<int>(params.endFrame - params.startFrame));
    };
    for (int round = 0; round < 400; ++round) {
        SearchedCache cache(GetParam(), upTo(8), upTo(5));
        cache.params().endFrame = upTo(24);
        cache.params().currentFrame = upTo(static_cast<int>(cache.params().endFrame));
        for (int event = 0; event < 250; ++event) {
            const int what = upTo(99);
            if (what < 50) {
                const int64 frame = cache.found();
                ASSERT_EQ(frame, cache.foundLiterally())
                    << "round " << round << ", event " << event << ", at " << cache.params().currentFrame;
                if (frame != NextFrameSearch::noFrame) cache.put(frame);
            } else if (what < 75) {
                cache.params().next();
                if (!cache.isInside(cache.params().currentFrame)) cache.params().currentFrame = frameInside(cache);
            } else if (what < 87) {
                cache.evictUnwanted();
            } else if (what < 92) {
                (void)cache.params().seek(frameInside(cache));
            } else if (what < 95) {
                cache.remove(upTo(24));
            } else if (what < 97) {
                cache.clear();
            } else if (what < 98) {
                cache.setCounts(upTo(8), upTo(5));
            } else if (what < 99) {
                cache.params().step = upTo(6) - 3;
            } else {
                cache.params().startFrame = upTo(5);
                cache.params().endFrame = cache.params().startFrame + upTo(20);
                cache.params().currentFrame = upTo(24);  // wherever it is
                cache.beginRun();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, NextFrameSearchInMode,
                         ::testing::Values(PlayParams::single, PlayParams::loop, PlayParams::ping_pong));

TEST(NextFrameSearch, looksAtOneFrameMoreForEachStepOfPlayback) {
    SearchedCache cache(PlayParams::single, 1000, 50);
    cache.params().endFrame = 100'000;
    cache.produceAll();
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(cache.params().next());
        const int64 frame = cache.found();
        ASSERT_EQ(frame, cache.params().currentFrame + 1000);
        ASSERT_EQ(cache.numLookUps(), 1) << "at " << cache.params().currentFrame;
        cache.put(frame);
        cache.evictUnwanted();
        ASSERT_EQ(cache.found(), NextFrameSearch::noFrame);
        ASSERT_LE(cache.numLookUps(), 2);
    }
}

TEST(NextFrameSearch, looksAtNoFrameWhenNothingHasChanged) {
    SearchedCache cache(PlayParams::single, 100, 0);
    cache.params().endFrame = 1000;
    cache.produceAll();
    EXPECT_EQ(cache.found(), NextFrameSearch::noFrame);
    EXPECT_EQ(cache.numLookUps(), 0);
}

TEST(NextFrameSearch, findsAFrameThatHasLeftTheCacheUnseen) {
    SearchedCache cache(PlayParams::single, 100, 0);
    cache.params().endFrame = 1000;
    cache.produceAll();
    cache.remove(60);
    EXPECT_EQ(cache.found(), 60);
}

TEST(NextFrameSearch, findsAFrameThatNobodyWantedWhilePlaybackWasElsewhere) {
    SearchedCache cache(PlayParams::single, 2, 0);
    cache.params().endFrame = 1000;
    cache.produceAll();
    (void)cache.params().seek(500);
    cache.evictUnwanted();
    (void)cache.params().seek(0);
    EXPECT_EQ(cache.found(), 0);
}

}  // namespace QRT_0_81
