#include "viewer/playing/qrtCutPoints.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

/// Two tracks at 24 frames a second: items of 10, 20 and 18 frames above one of 25.
Timeline twoTracks() {
    Timeline::Content content;
    content.duration = ExactTime(48, 24);
    TrackView above;
    const auto add = [](TrackView& track, TrackItem::Kind kind, int64 first, int64 count) {
        TrackItem item;
        item.kind = kind;
        item.start = ExactTime(first, 24);
        item.duration = ExactTime(count, 24);
        track.items.push_back(item);
    };
    add(above, TrackItem::Kind::clip, 0, 10);
    add(above, TrackItem::Kind::transition, 6, 8);
    add(above, TrackItem::Kind::clip, 10, 20);
    add(above, TrackItem::Kind::gap, 30, 18);
    TrackView below;
    add(below, TrackItem::Kind::clip, 0, 25);
    content.tracks = {above, below};
    return Timeline(content);
}

TEST(CutPoints, liesWhereAnythingBeginsOrEndsOnAnyTrack) {
    const CutPoints cuts(twoTracks(), Rational(24, 1), 48);
    EXPECT_EQ(cuts.after(0), 10);
    EXPECT_EQ(cuts.after(10), 25);
    EXPECT_EQ(cuts.after(25), 30);
    EXPECT_EQ(cuts.after(30), 47) << "the last frame";
    EXPECT_EQ(cuts.after(47), std::nullopt);
    EXPECT_EQ(cuts.before(47), 30);
    EXPECT_EQ(cuts.before(11), 10);
    EXPECT_EQ(cuts.before(10), 0);
    EXPECT_EQ(cuts.before(0), std::nullopt);
}

TEST(CutPoints, countInOutputFrames) {
    const CutPoints cuts(twoTracks(), Rational(48, 1), 96);
    EXPECT_EQ(cuts.after(0), 20);
}

TEST(CutPoints, areNoneWithoutFrames) {
    EXPECT_EQ(CutPoints().after(0), std::nullopt);
    EXPECT_EQ(CutPoints(twoTracks(), Rational(24, 1), 0).before(5), std::nullopt);
}

}  // namespace
}  // namespace qrtplay
