#include "viewer/timeline/qrtTimelineRuler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "viewer/qrtTestRates.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAreArray;

constexpr double letterWidth = 7;

double widthOf(QString const& text) {
    return letterWidth * static_cast<double>(text.size());
}

TimelineScale scaleFitting(int64 frameCount, double width) {
    TimelineScale scale;
    scale.setWidth(width);
    scale.setFrameCount(frameCount);
    return scale;
}

struct LabelCase {
    char const* name;
    Rational rate;
    Numbering shown;
    bool dropFrame;
    int64 clockStart;  // seconds
    int64 frameCount;
    std::vector<int64> frames;  // the first three
    std::vector<std::string> labels;
};
class TimelineRulerLabels : public ::testing::TestWithParam<LabelCase> {};

TEST_P(TimelineRulerLabels, standAtNeatSteps) {
    LabelCase const& one = GetParam();
    const ExactTime start(one.clockStart, 1);
    const TimelineRuler ruler(FrameNumbering(one.rate, start), start, one.shown, one.dropFrame);
    std::vector<int64> frames;
    std::vector<std::string> labels;
    for (RulerTick const& tick : ruler.ticks(scaleFitting(one.frameCount, 1016), widthOf)) {
        if (tick.label.isEmpty() || frames.size() == 3) continue;
        frames.push_back(tick.frame);
        labels.push_back(tick.label.toStdString());
    }
    EXPECT_THAT(frames, ElementsAreArray(one.frames));
    EXPECT_THAT(labels, ElementsAreArray(one.labels));
}

INSTANTIATE_TEST_SUITE_P(
    Countings, TimelineRulerLabels,
    ::testing::Values(
        LabelCase{"frames", {24, 1}, Numbering::frames, false, 3600, 100, {0, 5, 10}, {"0", "5", "10"}},
        LabelCase{
            "manyFrames", {24, 1}, Numbering::frames, false, 0, 100'000, {0, 5000, 10'000}, {"0", "5000", "10000"}},
        LabelCase{"halfSeconds",
                  {24, 1},
                  Numbering::timecode,
                  false,
                  3600,
                  100,
                  {0, 12, 24},
                  {"01:00:00:00", "01:00:00:12", "01:00:01:00"}},
        LabelCase{"tenFrames",
                  {30, 1},
                  Numbering::timecode,
                  false,
                  0,
                  100,
                  {0, 10, 20},
                  {"00:00:00:00", "00:00:00:10", "00:00:00:20"}},
        LabelCase{"wholeSeconds",
                  {25, 1},
                  Numbering::timecode,
                  false,
                  0,
                  100,
                  {0, 25, 50},
                  {"00:00:00:00", "00:00:01:00", "00:00:02:00"}},
        LabelCase{"minutes",
                  {25, 1},
                  Numbering::timecode,
                  false,
                  0,
                  25 * 600,
                  {0, 1500, 3000},
                  {"00:00:00:00", "00:01:00:00", "00:02:00:00"}},
        LabelCase{"hours",
                  {24, 1},
                  Numbering::timecode,
                  false,
                  0,
                  24 * 36000,
                  {0, 86400, 172800},
                  {"00:00:00:00", "01:00:00:00", "02:00:00:00"}},
        LabelCase{"droppedNumbers",
                  ntsc,
                  Numbering::timecode,
                  true,
                  0,
                  30 * 600,
                  {0, 1800, 3598},
                  {"00:00:00;00", "00:01:00;02", "00:02:00;02"}},
        LabelCase{"keptNumbers",
                  ntsc,
                  Numbering::timecode,
                  false,
                  0,
                  30 * 600,
                  {0, 1800, 3600},
                  {"00:00:00:00", "00:01:00:00", "00:02:00:00"}},
        LabelCase{"clockTime", ntsc, Numbering::seconds, false, 3600, 2997, {0, 150, 300}, {"0 s", "5 s", "10 s"}}),
    [](auto const& one) { return std::string(one.param.name); });

struct CountingCase {
    char const* name;
    Rational rate;
    Numbering shown;
    bool dropFrame;
};
class TimelineRulerTable : public ::testing::TestWithParam<CountingCase> {
protected:
    /// Calls `check` at many lengths, widths, zooms and places.
    template <typename Check>
    void forManyViews(Check const& check) {
        for (const int64 frameCount : {1, 7, 100, 4321, 150'000, 10'000'000}) {
            for (const double width : {200.0, 777.0, 1920.0, 4000.0}) {
                TimelineScale scale = scaleFitting(frameCount, width);
                for (int zoom = 0; zoom < 12; ++zoom) {
                    const std::string view = std::to_string(frameCount) + " frames, " + std::to_string(width) +
                                             " pixels, " + std::to_string(scale.pixelsPerFrame()) + " a frame";
                    check(scale, m_ruler.ticks(scale, widthOf), view);
                    if (::testing::Test::HasFailure()) return;
                    scale.zoomBy(frameCount > 10'000 ? 3.3 : 1.7, width * 0.8);
                }
            }
        }
    }

    const ExactTime m_start{3600, 1};
    const TimelineRuler m_ruler{FrameNumbering(GetParam().rate, m_start), m_start, GetParam().shown,
                                GetParam().dropFrame};
};

TEST_P(TimelineRulerTable, noLabelReachesTheNextOne) {
    forManyViews([](TimelineScale const& scale, std::vector<RulerTick> const& ticks, std::string const& view) {
        RulerTick const* last = nullptr;
        for (RulerTick const& tick : ticks) {
            if (tick.label.isEmpty()) continue;
            if (last) {
                const double end = scale.positionOf(last->frame) + TimelineRuler::labelIndent + widthOf(last->label);
                EXPECT_LT(end, scale.positionOf(tick.frame)) << view << ": " << last->label.toStdString();
            }
            last = &tick;
        }
    });
}

TEST_P(TimelineRulerTable, aViewHasLabelsButNoMoreTicksThanItHasRoomFor) {
    forManyViews([](TimelineScale const& scale, std::vector<RulerTick> const& ticks, std::string const& view) {
        size_t labelled = 0;
        for (size_t i = 0; i < ticks.size(); ++i) {
            EXPECT_TRUE(i == 0 || ticks[i - 1].frame < ticks[i].frame) << view;
            if (!ticks[i].label.isEmpty()) ++labelled;
        }
        EXPECT_GE(labelled, 1U) << view;
        const double extent = scale.positionOf(ticks.back().frame) - scale.positionOf(ticks.front().frame);
        EXPECT_LE(static_cast<double>(ticks.size()), 2 + extent / 3) << view;
    });
}

INSTANTIATE_TEST_SUITE_P(Countings, TimelineRulerTable,
                         ::testing::Values(CountingCase{"timecode24", {24, 1}, Numbering::timecode, false},
                                           CountingCase{"timecode25", {25, 1}, Numbering::timecode, false},
                                           CountingCase{"timecode2997", ntsc, Numbering::timecode, false},
                                           CountingCase{"dropFrame2997", ntsc, Numbering::timecode, true},
                                           CountingCase{"dropFrame5994", {60000, 1001}, Numbering::timecode, true},
                                           CountingCase{"timecodeOfSlides", {1, 2}, Numbering::timecode, false},
                                           CountingCase{"frames24", {24, 1}, Numbering::frames, false},
                                           CountingCase{"frames2997", ntsc, Numbering::frames, false},
                                           CountingCase{"seconds24", {24, 1}, Numbering::seconds, false},
                                           CountingCase{"seconds25", {25, 1}, Numbering::seconds, false},
                                           CountingCase{"seconds2997", ntsc, Numbering::seconds, false},
                                           CountingCase{"secondsOfSlides", {1, 2}, Numbering::seconds, false}),
                         [](auto const& one) { return std::string(one.param.name); });

TEST(TimelineRuler, hasNoTicksWithoutFramesOrRate) {
    const TimelineRuler ruler(FrameNumbering(Rational(24, 1), {}), {}, Numbering::seconds, false);
    EXPECT_TRUE(ruler.ticks(scaleFitting(0, 800), widthOf).empty());
    const TimelineRuler still(FrameNumbering(Rational(0, 1), {}), {}, Numbering::seconds, false);
    EXPECT_TRUE(still.ticks(scaleFitting(10, 800), widthOf).empty());
}

}  // namespace
}  // namespace qrtplay
