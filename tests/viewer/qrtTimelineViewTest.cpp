#include "viewer/timeline/qrtTimelineView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPalette>
#include <QScreen>
#include <QWheelEvent>
#include <QtTest>
#include <memory>
#include <vector>

#include "viewer/qrtTimelineItems.h"
#include "viewer/timeline/qrtTimelineColours.h"
#include "viewer/timeline/qrtTimelineLayout.h"
#include "viewer/timeline/qrtTimelineScale.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;

constexpr int64 frameCount = 100;
constexpr int pixels = 8;  // to a frame: what the view's width gives
constexpr QSize viewSize(frameCount* pixels + 2 * static_cast<int>(TimelineScale::margin), 220);

// Rows of the sample, from the top down.
enum Row : size_t { upper, lower, sound };

std::shared_ptr<Timeline const> sample() {
    TrackView street;
    street.name = "Street";
    street.items = {clipOf("walk", 0, 40, 0), itemOf(TrackItem::Kind::gap, "", 40, 60), clipOf("run", 60, 100, 0)};
    TrackView roof;
    TrackItem bars = itemOf(TrackItem::Kind::clip, "bars", 50, 90);
    bars.generator = 0;
    roof.items = {clipOf("<b>roof</b>", 20, 50, 1), itemOf(TrackItem::Kind::transition, "Soft", 45, 55), bars,
                  itemOf(TrackItem::Kind::stack, "", 90, 100)};
    TrackView noise;
    noise.kind = TrackView::Kind::audio;
    noise.items = {clipOf("noise", 0, 100, 2)};
    return timelineOf({street, roof, noise}, frameCount);
}

int columnOf(int64 frame) {
    return static_cast<int>(TimelineScale::margin) + static_cast<int>(frame) * pixels;
}

class TimelineViewTest : public ::testing::Test {
protected:
    TimelineViewTest() {
        prepare(m_view);
        m_layout.setSize(viewSize);
        m_layout.setTracks(2, 1, true);
        QObject::connect(&m_view, &TimelineView::scrubbed, [this](int64 frame) { m_scrubbed.push_back(frame); });
        QObject::connect(&m_view, &TimelineView::scrubEnded, [this] { ++m_scrubsEnded; });
    }

    static void prepare(TimelineView& view) {
        view.resize(viewSize);
        view.setTimeline(sample(), film, frameCount);
    }

    static QImage imageOf(TimelineView& view) { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    /// A pixel of a track near its upper edge, where no names are.
    [[nodiscard]] QPoint pointOn(size_t row, int64 frame) const {
        return {columnOf(frame) + pixels / 2, m_layout.track(row).top() + 3};
    }
    QColor colourOn(size_t row, int64 frame) { return imageOf(m_view).pixelColor(pointOn(row, frame)); }

    static void sendMouse(TimelineView& view, QEvent::Type type, QPointF at) {
        const bool isMove = type == QEvent::MouseMove;
        QMouseEvent event(type, at, view.mapToGlobal(at.toPoint()), isMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
    }
    static void turnWheel(TimelineView& view, QPointF at, double notches, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(at, view.mapToGlobal(at.toPoint()), QPoint(), QPoint(0, static_cast<int>(notches * 120)),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &event);
    }

    TimelineView m_view;
    TimelineLayout m_layout;
    const TimelineColours m_colours{m_view.palette()};
    std::vector<int64> m_scrubbed;
    int m_scrubsEnded = 0;
};

TEST_F(TimelineViewTest, showsClipsInTheColourOfTheirMedia) {
    m_view.setFrame(99);
    const auto timeline = sample();
    const QColor street = m_colours.clip(timeline->tracks()[0].items[0], *timeline).fill;
    EXPECT_EQ(colourOn(lower, 1), street);
    EXPECT_EQ(colourOn(lower, 38), street);
    EXPECT_EQ(colourOn(lower, 61), street) << "the same media again";
    const QColor roof = colourOn(upper, 30);
    EXPECT_EQ(roof, m_colours.clip(timeline->tracks()[1].items[0], *timeline).fill);
    EXPECT_NE(roof, street);
}

TEST_F(TimelineViewTest, leavesGapsEmptyUpToTheFrame) {
    m_view.setFrame(99);
    const QImage image = imageOf(m_view);
    const int y = pointOn(lower, 0).y();
    EXPECT_NE(image.pixelColor(columnOf(40) - 3, y), m_colours.track);
    for (int x = columnOf(40); x < columnOf(60); ++x)
        ASSERT_EQ(image.pixelColor(x, y), m_colours.track) << x;
    EXPECT_NE(image.pixelColor(columnOf(60) + 2, y), m_colours.track);
    EXPECT_EQ(image.pixelColor(columnOf(100) + 1, y), m_colours.ground) << "behind the end";
}

TEST_F(TimelineViewTest, tellsGeneratorsNestedAndMissingOnesApart) {
    const auto timeline = sample();
    const ClipLook media = m_colours.clip(timeline->tracks()[0].items[0], *timeline);
    const ClipLook generated = m_colours.clip(timeline->tracks()[1].items[2], *timeline);
    const ClipLook nested = m_colours.clip(timeline->tracks()[1].items[3], *timeline);
    const ClipLook missing = m_colours.clip(timeline->tracks()[2].items[0], *timeline);
    EXPECT_EQ(media.pattern, Qt::SolidPattern);
    EXPECT_NE(generated.pattern, missing.pattern);
    EXPECT_NE(generated.pattern, Qt::SolidPattern);
    EXPECT_NE(missing.pattern, Qt::SolidPattern);
    EXPECT_TRUE(nested.isNested);
    EXPECT_NE(nested.fill, generated.fill);
}

TEST_F(TimelineViewTest, boxesATransitionOverTheCut) {
    m_view.setFrame(0);
    const QImage image = imageOf(m_view);
    const QRect row = m_layout.track(upper);
    const QColor untouched = image.pixelColor(columnOf(44), row.top() + 6);
    EXPECT_NE(image.pixelColor(columnOf(46), row.top() + 6), untouched);
    const QPoint crossing((columnOf(45) + columnOf(55)) / 2, row.center().y());
    const QColor edge = image.pixelColor(columnOf(45), row.center().y());
    EXPECT_NEAR(image.pixelColor(crossing).lightness(), edge.lightness(), 60);
    EXPECT_NE(edge, untouched);
}

TEST_F(TimelineViewTest, barsCoverExactlyWhatIsCached) {
    m_view.setFrame(99);
    const auto expectBars = [this](FrameSpan const& rendered, FrameSpan const& decoded) {
        const QImage image = imageOf(m_view);
        const auto expectBar = [&](QRect const& row, FrameSpan const& span, QColor const& colour) {
            for (int x = 0; x < columnOf(98); ++x) {
                const bool isCached = x >= columnOf(span.first) && x < columnOf(span.last + 1);
                ASSERT_EQ(image.pixelColor(x, row.center().y()) == colour, isCached) << x;
            }
        };
        expectBar(m_layout.renderedBar(), rendered, m_colours.rendered);
        expectBar(m_layout.decodedBar(), decoded, m_colours.decoded);
    };
    EXPECT_NE(m_colours.rendered, m_colours.decoded);
    m_view.setCached({{10, 19}}, {{5, 30}});
    expectBars({10, 19}, {5, 30});
    m_view.setCached({{11, 21}}, {{40, 40}});
    expectBars({11, 21}, {40, 40});
    EXPECT_THAT(m_view.rendered(), ElementsAre(FrameSpan{11, 21}));
    EXPECT_THAT(m_view.decoded(), ElementsAre(FrameSpan{40, 40}));
    m_view.setCached({{-20, 3}, {50, 51}, {200, 300}}, {});
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(0), m_layout.renderedBar().top()), m_colours.rendered);
}

TEST_F(TimelineViewTest, dimsWhatLiesOutsideInAndOut) {
    const QColor inside = colourOn(lower, 25);
    const QColor before = colourOn(lower, 5);
    const QColor after = colourOn(lower, 80);
    m_view.setRange(10, 70);
    const auto towardsGround = [this](QColor const& colour) {
        return std::abs(colour.lightness() - m_colours.ground.lightness());
    };
    EXPECT_EQ(colourOn(lower, 25), inside);
    EXPECT_LT(towardsGround(colourOn(lower, 5)), towardsGround(before));
    EXPECT_LT(towardsGround(colourOn(lower, 80)), towardsGround(after));
    const QImage image = imageOf(m_view);
    const int y = pointOn(sound, 0).y();
    EXPECT_EQ(image.pixelColor(columnOf(10), y), m_colours.range);
    EXPECT_EQ(image.pixelColor(columnOf(71) - 1, y), m_colours.range);
    EXPECT_NE(image.pixelColor(columnOf(71), y), m_colours.range);
    m_view.setRange({}, {});
    EXPECT_EQ(colourOn(lower, 5), before);
}

TEST_F(TimelineViewTest, dimsTheCacheBarsOnce) {
    m_view.setRange(50, {});
    m_view.setCached({{0, 9}}, {});
    imageOf(m_view);
    m_view.setCached({{0, 10}}, {});  // painted over what was painted
    const QImage again = imageOf(m_view);
    TimelineView fresh;
    prepare(fresh);
    fresh.setRange(50, {});
    fresh.setCached({{0, 10}}, {});
    EXPECT_EQ(again, imageOf(fresh));
}

TEST_F(TimelineViewTest, paintsThePlayheadInTheColumnOfItsFrame) {
    for (const int64 frame : {0, 1, 42, 99}) {
        m_view.setFrame(frame);
        const QImage image = imageOf(m_view);
        const int column = static_cast<int>(m_view.positionOf(frame));
        EXPECT_EQ(column, columnOf(frame));
        for (int y = TimelineLayout::rulerHeight; y < viewSize.height(); ++y)
            ASSERT_EQ(image.pixelColor(column, y), m_colours.playhead) << frame;
        EXPECT_NE(image.pixelColor(column - 1, viewSize.height() - 1), m_colours.playhead);
        EXPECT_NE(image.pixelColor(column + 1, viewSize.height() - 1), m_colours.playhead);
    }
}

TEST_F(TimelineViewTest, marksTheWholeFrameWhereItIsWide) {
    m_view.setFrame(50);
    const int y = m_layout.track(lower).top() - 1;  // the space between two tracks
    const QImage image = imageOf(m_view);
    for (int x = columnOf(50); x < columnOf(51); ++x)
        EXPECT_NE(image.pixelColor(x, y), m_colours.ground) << x;
    EXPECT_EQ(image.pixelColor(columnOf(51), y), m_colours.ground);
}

TEST_F(TimelineViewTest, clampsFramesThatLieOutside) {
    m_view.setFrame(5000);
    const QImage last = imageOf(m_view);
    m_view.setFrame(99);
    EXPECT_EQ(imageOf(m_view), last);
    m_view.setFrame(-1);
    EXPECT_NE(imageOf(m_view), last);
}

TEST_F(TimelineViewTest, scrubsFromFrameToFrame) {
    const double y = 10;
    sendMouse(m_view, QEvent::MouseButtonPress, {columnOf(10) + 2.0, y});
    sendMouse(m_view, QEvent::MouseMove, {columnOf(10) + 5.0, y});
    sendMouse(m_view, QEvent::MouseMove, {columnOf(12) + 0.0, 150});
    sendMouse(m_view, QEvent::MouseMove, {columnOf(12) + 7.0, 150});
    EXPECT_EQ(m_scrubsEnded, 0);
    sendMouse(m_view, QEvent::MouseButtonRelease, {columnOf(12) + 7.0, 150});
    EXPECT_THAT(m_scrubbed, ElementsAre(10, 12));
    EXPECT_EQ(m_scrubsEnded, 1);
    sendMouse(m_view, QEvent::MouseMove, {columnOf(50) + 0.0, y});
    EXPECT_THAT(m_scrubbed, ElementsAre(10, 12)) << "the mouse is up";
}

TEST_F(TimelineViewTest, scrubsOnOutsideTheWidget) {
    sendMouse(m_view, QEvent::MouseButtonPress, {columnOf(98) + 0.0, 100});
    sendMouse(m_view, QEvent::MouseMove, {5000, -300});
    sendMouse(m_view, QEvent::MouseMove, {6000, 300});
    sendMouse(m_view, QEvent::MouseMove, {-700, 5000});
    sendMouse(m_view, QEvent::MouseButtonRelease, {-700, 5000});
    EXPECT_THAT(m_scrubbed, ElementsAre(98, 99, 0));
    EXPECT_EQ(m_scrubsEnded, 1);
}

TEST_F(TimelineViewTest, endsAScrubWithTheTimeline) {
    sendMouse(m_view, QEvent::MouseButtonPress, {columnOf(98) + 0.0, 100});
    m_view.setTimeline(nullptr, film, 0);
    EXPECT_EQ(m_scrubsEnded, 1);
    sendMouse(m_view, QEvent::MouseButtonRelease, {columnOf(98) + 0.0, 100});
    EXPECT_EQ(m_scrubsEnded, 1);
}

TEST_F(TimelineViewTest, thePointerAloneMovesThePlayheadWhileItScrubs) {
    sendMouse(m_view, QEvent::MouseButtonPress, {columnOf(20) + 0.0, 100});
    m_view.setFrame(70);  // a frame that was fetched late
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(20), viewSize.height() - 1), m_colours.playhead);
    sendMouse(m_view, QEvent::MouseButtonRelease, {columnOf(20) + 0.0, 100});
    m_view.setFrame(70);
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(70), viewSize.height() - 1), m_colours.playhead);
}

TEST_F(TimelineViewTest, otherButtonsDoNotScrub) {
    QTest::mouseClick(&m_view, Qt::RightButton, {}, {300, 100});
    EXPECT_TRUE(m_scrubbed.empty());
    EXPECT_EQ(m_scrubsEnded, 0);
}

TEST_F(TimelineViewTest, tellsWhatIsUnderThePointer) {
    m_view.setNumbering(Numbering::frames, false);
    EXPECT_EQ(m_view.textAt(pointOn(lower, 10)), "Street\nwalk\n0 to 39, 40 frames\n/film/street.mov");
    EXPECT_EQ(m_view.textAt(pointOn(upper, 30)), "V2\n<b>roof</b>\n20 to 49, 30 frames\n/film/roof.mov");
    EXPECT_EQ(m_view.textAt(pointOn(upper, 50)), "V2\nSoft\n45 to 54, 10 frames");
    EXPECT_EQ(m_view.textAt(pointOn(upper, 70)), "V2\nbars\n50 to 89, 40 frames\nGenerated: Bars");
    EXPECT_EQ(m_view.textAt(pointOn(upper, 95)), "V2\n90 to 99, 10 frames\nNested timeline");
    EXPECT_EQ(m_view.textAt(pointOn(sound, 5)), "A1\nnoise\n0 to 99, 100 frames\nMissing media: /film/lost.mov");
    EXPECT_EQ(m_view.textAt(pointOn(lower, 50)), "") << "a gap";
    EXPECT_EQ(m_view.textAt({2, pointOn(lower, 50).y()}), "") << "left of the first frame";
    EXPECT_EQ(m_view.textAt({columnOf(100) + 1, pointOn(lower, 50).y()}), "");
    EXPECT_EQ(m_view.textAt({300, 5}), "") << "the ruler";
}

TEST_F(TimelineViewTest, tellsMarkersByTheirFlagsAndLengths) {
    m_view.setNumbering(Numbering::frames, false);
    const int y = m_layout.markers().center().y();
    EXPECT_EQ(m_view.textAt({columnOf(30), y}), "Look here\n30 to 39, 10 frames");
    EXPECT_EQ(m_view.textAt({columnOf(39), y}), "Look here\n30 to 39, 10 frames");
    EXPECT_EQ(m_view.textAt({columnOf(40), y}), "");
    EXPECT_EQ(m_view.textAt({columnOf(60) + 3, y}), "Marker\n60, 1 frame");
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(30), y), m_colours.marker("RED"));
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(60), y), m_colours.marker("GREEN"));
}

TEST_F(TimelineViewTest, zoomsAroundThePointer) {
    const QPointF pointer(columnOf(40) + 1.0, 100);
    turnWheel(m_view, pointer, 6, Qt::ControlModifier);
    EXPECT_GT(m_view.positionOf(41) - m_view.positionOf(40), 2 * pixels);
    EXPECT_EQ(m_view.frameAt(pointer.x()), 40);
    turnWheel(m_view, pointer, -20, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(m_view.positionOf(0), TimelineScale::margin);
    EXPECT_DOUBLE_EQ(m_view.positionOf(100), columnOf(100));
}

TEST_F(TimelineViewTest, zoomsInAndOutWithThePlayheadInView) {
    m_view.setFrame(60);
    m_view.zoomIn();
    EXPECT_NEAR(m_view.positionOf(60), columnOf(60), 1e-6);
    m_view.zoomIn();
    m_view.zoomOut();
    EXPECT_DOUBLE_EQ(m_view.positionOf(61) - m_view.positionOf(60), 2 * pixels);
    m_view.zoomToFit();
    EXPECT_DOUBLE_EQ(m_view.positionOf(99), columnOf(99));
}

TEST_F(TimelineViewTest, scrollsSidewaysWhenZoomedIn) {
    m_view.zoomIn();
    const double before = m_view.positionOf(50);
    turnWheel(m_view, {400, 100}, -1, Qt::ShiftModifier);
    EXPECT_LT(m_view.positionOf(50), before);
    turnWheel(m_view, {400, 100}, 1, Qt::NoModifier);
    EXPECT_DOUBLE_EQ(m_view.positionOf(50), before) << "there is nothing to scroll up to";
}

TEST_F(TimelineViewTest, keepsThePlayheadInViewWhenZoomedIn) {
    for (int i = 0; i < 3; ++i)
        m_view.zoomIn();
    for (int64 frame = 0; frame < frameCount; ++frame) {
        m_view.setFrame(frame);
        ASSERT_GE(m_view.positionOf(frame), 0) << frame;
        ASSERT_LE(m_view.positionOf(frame + 1), viewSize.width()) << frame;
    }
}

TEST_F(TimelineViewTest, scrollsThroughMoreTracksThanFit) {
    std::vector<TrackView> tracks(50);
    for (size_t i = 0; i < tracks.size(); ++i)
        tracks[i].items = {clipOf("clip", 0, 100, 0)};
    m_view.setTimeline(timelineOf(tracks, frameCount), film, frameCount);
    const QPoint point(400, m_layout.tracks().top() + 3);
    EXPECT_TRUE(m_view.textAt(point).startsWith("V50\n"));
    turnWheel(m_view, point, -2, Qt::NoModifier);
    const QString scrolled = m_view.textAt(point);
    EXPECT_TRUE(scrolled.startsWith("V") && !scrolled.startsWith("V50\n")) << scrolled.toStdString();
    turnWheel(m_view, point, -1000, Qt::NoModifier);
    EXPECT_TRUE(m_view.textAt({400, viewSize.height() - 6}).startsWith("V1\n"));
}

TEST_F(TimelineViewTest, tracksGrowWithTheRoomForThem) {
    TimelineLayout layout;
    layout.setTracks(2, 1, false);
    layout.setSize({800, 180});
    const int low = layout.trackHeight();
    layout.setSize({800, 1000});
    EXPECT_GT(layout.trackHeight(), low);
    EXPECT_EQ(layout.trackHeight(), TimelineLayout::highestTrack);
    layout.setTracks(50, 50, false);
    EXPECT_EQ(layout.trackHeight(), TimelineLayout::lowestTrack);
    EXPECT_GT(layout.tracksHeight(), 1000);
}

TEST_F(TimelineViewTest, isEmptyWithoutATimeline) {
    TimelineView view;
    view.resize(viewSize);
    const QImage empty = imageOf(view);
    view.setFrame(7);
    EXPECT_EQ(imageOf(view), empty);
    EXPECT_EQ(view.frameAt(300), 0);
    EXPECT_EQ(view.textAt({300, 100}), "");
    QTest::mouseClick(&view, Qt::LeftButton, {}, {300, 100});
    turnWheel(view, {300, 100}, 3, Qt::ControlModifier);
    m_view.setTimeline(nullptr, film, 0);
    EXPECT_EQ(imageOf(m_view), empty) << "nothing is left of the last one";
}

TEST_F(TimelineViewTest, followsThePalette) {
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(40, 40, 40));
    dark.setColor(QPalette::WindowText, QColor(220, 220, 220));
    m_view.setPalette(dark);
    EXPECT_EQ(imageOf(m_view).pixelColor(columnOf(50), pointOn(lower, 50).y()), TimelineColours(dark).track);
    EXPECT_LT(TimelineColours(dark).track.lightness(), 80);
}

TEST_F(TimelineViewTest, paintsInFullResolution) {
    m_view.setCached({{10, 19}}, {});
    m_view.setFrame(99);
    QPixmap large(viewSize * 2);
    large.setDevicePixelRatio(2);
    m_view.render(&large);
    const QImage image = large.toImage();
    const int y = m_layout.renderedBar().center().y() * 2;
    EXPECT_EQ(image.pixelColor(columnOf(10) * 2, y), m_colours.rendered);
    EXPECT_NE(image.pixelColor(columnOf(10) * 2 - 1, y), m_colours.rendered);
    // Twice the pixels of a name show more than each pixel twice.
    QImage enlarged = imageOf(m_view).scaled(viewSize * 2);
    const QRect name(columnOf(60) * 2, m_layout.track(lower).top() * 2, 120, m_layout.trackHeight() * 2);
    EXPECT_NE(image.convertToFormat(QImage::Format_RGB32).copy(name),
              enlarged.convertToFormat(QImage::Format_RGB32).copy(name));
}

/// Remembers what a widget is asked to paint.
class PaintWatch final : public QObject {
public:
    QRegion region;

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
};

int areaOf(QRegion const& region) {
    int area = 0;
    for (QRect const& rect : region)
        area += rect.width() * rect.height();
    return area;
}

TEST_F(TimelineViewTest, playingRepaintsThePlayheadAloneAndLeavesNoneBehind) {
    m_view.setFrame(10);
    m_view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    QCoreApplication::processEvents();
    PaintWatch watch;
    m_view.installEventFilter(&watch);
    m_view.setFrame(70);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watch.region.isEmpty(); }));
    EXPECT_LT(areaOf(watch.region), viewSize.width() * viewSize.height() / 8);

    TimelineView fresh;
    prepare(fresh);
    fresh.setFrame(70);
    const QImage expected = imageOf(fresh);
    QImage onScreen;
    EXPECT_TRUE(QTest::qWaitFor([&] {
        const QPixmap seen = m_view.screen()->grabWindow(m_view.winId());
        onScreen = seen.toImage().convertToFormat(QImage::Format_RGB32);
        return onScreen == expected;
    }));
}

TEST_F(TimelineViewTest, cachingRepaintsTheBarsAlone) {
    m_view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    QCoreApplication::processEvents();
    PaintWatch watch;
    m_view.installEventFilter(&watch);
    m_view.setCached({{3, 9}}, {});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watch.region.isEmpty(); }));
    EXPECT_LT(watch.region.boundingRect().height(), 12);
}

}  // namespace
}  // namespace qrtplay
