#pragma once

#include <map>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtCacheStats.h"
#include "media/qrtPictureStore.h"
#include "timeline/qrtFramePlan.h"

namespace qrtplay {

/// The pictures that a plan takes from media, the lowest layer first.
[[nodiscard]] std::vector<PictureStore::Wish> picturesOf(FrameNode const& plan);

/// Which output frames have been planned lately, and from what pictures: to tell which of them could be drawn without
/// decoding.
///
/// Threading: none of its own.
class PlannedFrames final {
public:
    /// As many frames as a large cache may hold pictures for; the ones farthest from the last one added are forgotten.
    static constexpr size_t mostFrames = 16384;

    void add(int64 frame, std::vector<PictureStore::Wish> pictures);
    [[nodiscard]] bool contains(int64 frame) const { return m_frames.contains(frame); }
    /// Of a frame that is contained.
    [[nodiscard]] std::vector<PictureStore::Wish> const& pictures(int64 frame) const {
        return m_frames.at(frame).pictures;
    }
    /// The pictures of a frame that is contained are about to be decoded, perhaps once more.
    void expect(int64 frame) { m_frames.at(frame).wasKept = false; }
    void clear() { m_frames.clear(); }

    /// Adds the ranges of frames all of whose pictures are kept, ascending, and forgets those that have lost one. Those
    /// that are still expected are neither told nor forgotten.
    void collect(PictureStore const& store, CacheStats& stats);

private:
    struct Plan {
        std::vector<PictureStore::Wish> pictures;
        bool wasKept = false;  ///< all of them, since they were expected
    };

    std::map<int64, Plan> m_frames;
};

}  // namespace qrtplay
