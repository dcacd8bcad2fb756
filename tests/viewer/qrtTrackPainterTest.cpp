#include "viewer/timeline/qrtTrackPainter.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "viewer/qrtTimelineItems.h"
#include "viewer/timeline/qrtTimelineColours.h"
#include "viewer/timeline/qrtTimelineScale.h"
#include "viewer/timeline/qrtTimelineTracks.h"

namespace qrtplay {
namespace {

struct CrowdCase {
    char const* name;
    double zoom;
};
class TrackPainterTable : public ::testing::TestWithParam<CrowdCase> {};

TEST_P(TrackPainterTable, hundredThousandClipsTakeNoMoreWorkThanThereAreColumns) {
    constexpr int64 clipCount = 100'000;
    constexpr int64 each = 3;
    TrackView track;
    for (int64 i = 0; i < clipCount; ++i) {
        track.items.push_back(clipOf("clip", i * each, (i + 1) * each, static_cast<size_t>(i % 2)));
        if (i % 2 == 1) track.items.push_back(itemOf(TrackItem::Kind::transition, "", i * each, i * each + 1));
    }
    const TimelineTracks tracks(timelineOf({track}, clipCount * each), film, clipCount * each);
    ASSERT_EQ(tracks.tracks().at(0).clips.size(), 100'000U);
    TimelineScale scale;
    constexpr int width = 1000;
    scale.setWidth(width);
    scale.setFrameCount(clipCount * each);
    scale.zoomBy(GetParam().zoom, width / 2.0);
    QImage image(width, 40, QImage::Format_RGB32);
    QPainter painter(&image);
    const TimelineColours colours{QPalette()};
    TrackPainter trackPainter(painter, scale, colours, tracks);
    trackPainter.paint(tracks.tracks()[0], image.rect());
    EXPECT_GE(trackPainter.paintedItems(), 1U);
    EXPECT_LE(trackPainter.paintedItems(), 2U * width);
    EXPECT_NE(image.pixelColor(width / 2, 5), colours.track) << "there are clips everywhere";
}

INSTANTIATE_TEST_SUITE_P(Zooms, TrackPainterTable,
                         ::testing::Values(CrowdCase{"all", 1}, CrowdCase{"manyInAColumn", 10},
                                           CrowdCase{"aboutAPixelEach", 100}, CrowdCase{"aFewPixelsEach", 700},
                                           CrowdCase{"wide", 1e9}),
                         [](auto const& one) { return std::string(one.param.name); });

TEST(TimelineColours, tellApartMediaThatDifferInADigit) {
    const TimelineColours colours{QPalette()};
    std::vector<QRgb> fills;
    for (int i = 0; i < 10; ++i) {
        Timeline::Content content;
        content.media.resize(1);
        content.media[0].kind = MediaReference::Kind::file;
        content.media[0].path = "/film/shot_0" + std::to_string(i) + ".mov";
        const Timeline timeline(std::move(content));
        fills.push_back(colours.clip(clipOf("shot", 0, 1, 0), timeline).fill.rgb());
    }
    std::sort(fills.begin(), fills.end());
    EXPECT_GE(std::unique(fills.begin(), fills.end()) - fills.begin(), 7);
}

}  // namespace
}  // namespace qrtplay
