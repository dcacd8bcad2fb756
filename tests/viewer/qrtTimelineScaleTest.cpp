#include "viewer/timeline/qrtTimelineScale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace qrtplay {
namespace {

TimelineScale scaleOf(int64 frameCount, double width) {
    TimelineScale scale;
    scale.setWidth(width);
    scale.setFrameCount(frameCount);
    return scale;
}

/// The first and last ones, and some in between.
std::vector<int64> someFrames(int64 frameCount) {
    std::vector<int64> frames;
    for (const int64 frame : {int64{0}, int64{1}, frameCount / 3, frameCount / 2, frameCount - 2, frameCount - 1}) {
        if (frame >= 0 && frame < frameCount) frames.push_back(frame);
    }
    return frames;
}

struct ScaleCase {
    char const* name;
    int64 frameCount;
    double width;
};
class TimelineScaleTable : public ::testing::TestWithParam<ScaleCase> {
protected:
    TimelineScale m_scale = scaleOf(GetParam().frameCount, GetParam().width);
};

TEST_P(TimelineScaleTable, fitsTheWholeBetweenTheMargins) {
    EXPECT_TRUE(m_scale.isFit());
    EXPECT_DOUBLE_EQ(m_scale.positionOf(0), TimelineScale::margin);
    EXPECT_NEAR(m_scale.positionOf(GetParam().frameCount), GetParam().width - TimelineScale::margin, 1e-6);
}

TEST_P(TimelineScaleTable, findsEachFrameWhereItBeginsAtEveryZoom) {
    for (int zoom = 0; zoom < 80; ++zoom) {
        for (const int64 frame : someFrames(GetParam().frameCount)) {
            if (m_scale.pixelsPerFrame() < 1) continue;
            EXPECT_EQ(m_scale.frameAt(m_scale.positionOf(frame)), frame) << m_scale.pixelsPerFrame();
            EXPECT_EQ(m_scale.frameAt(std::floor(m_scale.positionOf(frame))), frame) << m_scale.pixelsPerFrame();
        }
        m_scale.zoomBy(1.37, GetParam().width * 0.7);
    }
    EXPECT_GE(m_scale.pixelsPerFrame(), TimelineScale::widestFrame);
}

TEST_P(TimelineScaleTable, clampsFramesIntoTheTimeline) {
    const int64 last = GetParam().frameCount - 1;
    for (const double factor : {1.0, 8.0, 1e9}) {
        m_scale.zoomBy(factor, 0);
        EXPECT_EQ(m_scale.frameAt(-1e12), 0);
        EXPECT_EQ(m_scale.frameAt(1e12), last);
        EXPECT_EQ(m_scale.frameAt(-std::numeric_limits<double>::infinity()), 0);
        EXPECT_EQ(m_scale.frameAt(std::numeric_limits<double>::infinity()), last);
    }
}

TEST_P(TimelineScaleTable, zoomsAroundTheAnchor) {
    const double anchor = GetParam().width / 2;
    m_scale.zoomBy(3, anchor);  // away from the ends, which would hold it
    for (const double factor : {1.25, 1.25, 2.0, 0.8, 5.0, 0.9}) {
        const double before = (anchor - m_scale.positionOf(0)) / m_scale.pixelsPerFrame();
        m_scale.zoomBy(factor, anchor);
        const double after = (anchor - m_scale.positionOf(0)) / m_scale.pixelsPerFrame();
        EXPECT_NEAR(after, before, 1e-6 * static_cast<double>(GetParam().frameCount));
    }
}

TEST_P(TimelineScaleTable, zoomsOutNoFurtherThanTheWhole) {
    m_scale.zoomBy(4, 100);
    m_scale.zoomBy(1e-9, 100);
    EXPECT_TRUE(m_scale.isFit());
    EXPECT_DOUBLE_EQ(m_scale.positionOf(0), TimelineScale::margin);
}

TEST_P(TimelineScaleTable, scrollsToTheEndsAndNoFurther) {
    m_scale.zoomBy(16, 0);
    m_scale.scrollBy(-1e12);
    EXPECT_DOUBLE_EQ(m_scale.positionOf(0), TimelineScale::margin);
    m_scale.scrollBy(1e12);
    EXPECT_NEAR(m_scale.positionOf(GetParam().frameCount), GetParam().width - TimelineScale::margin, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(Lengths, TimelineScaleTable,
                         ::testing::Values(ScaleCase{"oneFrame", 1, 1000}, ScaleCase{"twoFrames", 2, 333},
                                           ScaleCase{"aFewPixelsAFrame", 250, 1103}, ScaleCase{"aMinute", 1440, 800},
                                           ScaleCase{"aFilm", 200'000, 1920},
                                           ScaleCase{"tenMillion", 10'000'000, 3840}),
                         [](auto const& one) { return std::string(one.param.name); });

TEST(TimelineScale, isOfNoFramesWithoutATimeline) {
    TimelineScale scale = scaleOf(0, 500);
    scale.zoomBy(2, 100);
    EXPECT_EQ(scale.frameAt(250), 0);
    EXPECT_TRUE(scale.isFit());
}

TEST(TimelineScale, fitsAnotherWidthOnlyWhenItFittedTheLastOne) {
    TimelineScale scale = scaleOf(100, 816);
    scale.setWidth(416);
    EXPECT_DOUBLE_EQ(scale.pixelsPerFrame(), 4);
    scale.zoomBy(2, 0);
    scale.setWidth(316);
    EXPECT_DOUBLE_EQ(scale.pixelsPerFrame(), 8);
    scale.setWidth(2016);
    EXPECT_DOUBLE_EQ(scale.pixelsPerFrame(), 20) << "as wide as the view at least";
    EXPECT_TRUE(scale.isFit());
}

TEST(TimelineScale, pagesToAFrameOutOfSightOnly) {
    TimelineScale scale = scaleOf(1000, 800);
    EXPECT_FALSE(scale.bringIntoView(999)) << "all is in sight";
    scale.zoomBy(1e9, 0);
    ASSERT_DOUBLE_EQ(scale.pixelsPerFrame(), TimelineScale::widestFrame);
    EXPECT_FALSE(scale.bringIntoView(11));
    EXPECT_TRUE(scale.bringIntoView(12)) << "its right half is cut off";
    EXPECT_DOUBLE_EQ(scale.positionOf(12), 80);
    EXPECT_FALSE(scale.bringIntoView(13));
    EXPECT_TRUE(scale.bringIntoView(500));
    EXPECT_TRUE(scale.bringIntoView(498));
    EXPECT_DOUBLE_EQ(scale.positionOf(499), 720) << "backwards a page has what follows on its left";
    EXPECT_TRUE(scale.bringIntoView(999));
    EXPECT_LE(scale.positionOf(1000), 800);
}

}  // namespace
}  // namespace qrtplay
