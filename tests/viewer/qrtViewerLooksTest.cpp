// What the window looks like, against pictures that a person has looked at.
#include <QApplication>
#include <QDockWidget>
#include <QPalette>
#include <QScrollArea>
#include <QStyleFactory>
#include <QTest>
#include <algorithm>

#include "viewer/qrtScreenshotComparison.h"
#include "viewer/qrtViewerFixture.h"

namespace qrtplay {
namespace {

class ViewerLooks : public ViewerFixture {
protected:
    ViewerLooks() {
        QApplication::setStyle(QStyleFactory::create("Fusion"));
        QFont font("DejaVu Sans");
        font.setPointSize(9);
        QApplication::setFont(font);
    }

    /// The window once the frame on show and all that is prepared ahead of it are there, and the caches shown.
    QImage look() {
        constexpr int64 renderedAhead = 2;  // by the player, unless it is told otherwise
        constexpr int64 decodedAhead = 33;  // by the graph engine, seen from the last of these
        const int64 frame = playback().frame();
        const int64 last = playback().whole().last;
        const auto reach = [](std::vector<FrameSpan> const& spans, int64 first, int64 end) {
            return std::any_of(spans.begin(), spans.end(),
                               [&](FrameSpan const& span) { return span.first <= first && span.last >= end; });
        };
        TimelineView& view = window().timelineView();
        EXPECT_TRUE(waitFor([&] {
            return reach(view.rendered(), frame, std::min(last, frame + renderedAhead)) &&
                   reach(view.decoded(), frame, std::min(last, frame + decodedAhead));
        }));
        QCoreApplication::processEvents();
        return window().grab().toImage();
    }
};

TEST_F(ViewerLooks, anEmptyWindow) {
    showEmpty();
    EXPECT_TRUE(looksLike(window().grab().toImage(), "empty"));
}

TEST_F(ViewerLooks, aTimelineAtItsFirstFrame) {
    show({timeline()});
    EXPECT_TRUE(waitFor([&] { return shownNumber() == 10; }));
    EXPECT_TRUE(looksLike(look(), "timeline"));
}

TEST_F(ViewerLooks, aRangeWithSafeAreas) {
    show({timeline()});
    (void)look();  // what is decoded around the first frame is shown as well
    playback().seek(60);
    playback().setInPoint(24);
    playback().setOutPoint(72);
    press(Qt::Key_G);
    EXPECT_TRUE(waitFor([&] { return playback().frame() == 60; }));
    EXPECT_TRUE(waitFor([&] { return shownNumber() > 30; }));
    EXPECT_TRUE(looksLike(look(), "range"));
}

TEST_F(ViewerLooks, preferencesOnASmallScreen) {
    show({timeline()});
    window().resize(1024, 600);
    press(Qt::Key_Comma, Qt::ControlModifier);
    auto* const dock = window().findChild<QDockWidget*>("preferencesDock");
    EXPECT_TRUE(waitFor([&] { return dock->isVisible(); }));
    // It may come up with rows that are a pixel too low, and keep them until something has it laid out once more.
    auto* const rows = dock->findChild<QScrollArea*>()->widget();
    rows->updateGeometry();
    EXPECT_TRUE(waitFor([&] { return rows->height() == rows->heightForWidth(rows->width()); }));
    EXPECT_TRUE(looksLike(look(), "preferences"));
}

TEST_F(ViewerLooks, aFailure) {
    showEmpty();
    PlayInput missing;
    missing.files = {"/nowhere/lost.mov"};
    window().open(missing);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty(); }));
    EXPECT_TRUE(looksLike(window().grab().toImage(), "failure"));
}

}  // namespace
}  // namespace qrtplay
