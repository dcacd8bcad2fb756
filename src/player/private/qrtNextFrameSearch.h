#pragma once

#include "foundation/core/qrtTypes.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

/// Finds the frame that the production loop renders next: the current one, then those ahead, then those behind.
///
/// It remembers how far the frames are known to be cached, so that a step of playback costs the same however many
/// frames are kept. What it knows holds as long as no wanted frame has left the cache, and while the current frame
/// stays or moves straight ahead over frames that it knows; else the search begins anew. Threading: player thread only.
class NextFrameSearch final {
public:
    static constexpr int64 noFrame = -1;

    /// The frame to produce next, or `noFrame`.
    ///
    /// `numRemoved`: how many records have left the cache so far, read before the first call of `isCached`.
    /// `isCached`:   says of a frame number whether the frame is in the cache.
    template <class IsCached>
    [[nodiscard]] int64 find(PlayParamsPrivate const& params, int32 numHead, int32 numTail, uint64 numRemoved,
                             IsCached const& isCached);

    /// Records have left the cache that are none of the frames wanted at `params`, where playback is now.
    void noteUnwantedRemoved(PlayParamsPrivate const& params, uint64 count);
    /// To be called at the beginning of a run, and when more or fewer frames are wanted than before.
    void forget();

private:
    /// Frames in a row from the current one on that are known to be cached.
    struct Run {
        PlayParamsPrivate last;  // where the walk stands after `length` steps
        int32 length = 0;

        /// Makes the run up to `wanted` frames long; false when one is missing, which is then `missing`, or `noFrame`
        /// when playback ends there.
        template <class IsCached>
        bool grow(int32 wanted, IsCached const& isCached, int64& missing);
    };

    /// Adapts what is known to where playback is now.
    void follow(PlayParamsPrivate const& params, uint64 numRemoved);
    /// How many steps straight ahead, without a turn or a jump, the current frame has moved to `params`; 0 for none.
    [[nodiscard]] int32 stepsAheadTo(PlayParamsPrivate const& params) const;

    bool m_isCurrentCached = false;
    PlayParamsPrivate m_params;
    uint64 m_numRemoved = 0;
    Run m_head;
    Run m_tail;
};

template <class IsCached>
int64 NextFrameSearch::find(PlayParamsPrivate const& params, int32 numHead, int32 numTail, uint64 numRemoved,
                            IsCached const& isCached) {
    follow(params, numRemoved);
    if (!m_isCurrentCached) {
        if (!isCached(params.currentFrame)) return params.currentFrame;
        m_isCurrentCached = true;
    }
    int64 missing = noFrame;
    // Where the frames ahead end those behind are not looked at either: playback ends here.
    if (m_head.grow(numHead, isCached, missing)) m_tail.grow(numTail, isCached, missing);
    return missing;
}

template <class IsCached>
bool NextFrameSearch::Run::grow(int32 wanted, IsCached const& isCached, int64& missing) {
    while (length < wanted) {
        PlayParamsPrivate next = last;
        if (!next.next()) return false;
        if (!isCached(next.currentFrame)) {
            missing = next.currentFrame;
            return false;
        }
        last = next;
        ++length;
    }
    return true;
}

}  // namespace QRT_0_81
