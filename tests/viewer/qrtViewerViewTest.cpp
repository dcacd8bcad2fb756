// How the window looks at things: zoom, full screen, overlay, numbering, pages of its own.
#include <QApplication>
#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>
#include <set>

#include "base/qrtProgramVersion.h"
#include "viewer/preferences/qrtPreferencesPanel.h"
#include "viewer/qrtViewerFixture.h"
#include "viewer/window/qrtKeyboardHelp.h"
#include "viewer/window/qrtLogPanel.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

class ViewerView : public ViewerFixture {
protected:
    std::string position() {
        for (QLabel* const label : window().findChildren<QLabel*>()) {
            if (label->accessibleName() == "Position") return label->text().toStdString();
        }
        return {};
    }
    std::string overlayText() { return window().pictureView().overlay().join('\n').toStdString(); }
};

TEST_F(ViewerView, everyActionStandsInAMenuWithItsKeysAToolTipAndAName) {
    showEmpty();
    std::set<QAction*> inMenus;
    for (QAction* const menu : window().menuBar()->actions())
        for (QAction* const entry : menu->menu()->actions())
            inMenus.insert(entry);
    std::set<QString> keys;
    for (ViewerActions::Entry const& entry : ViewerActions::entries()) {
        QAction& one = action(entry.command);
        EXPECT_TRUE(inMenus.count(&one)) << entry.name;
        EXPECT_EQ(one.objectName(), entry.name);
        EXPECT_FALSE(one.toolTip().isEmpty()) << entry.name;
        EXPECT_TRUE(QString(entry.toolTip).endsWith('.')) << entry.name;
        for (QKeySequence const& sequence : one.shortcuts()) {
            EXPECT_FALSE(sequence.isEmpty()) << entry.name;
            EXPECT_TRUE(keys.insert(sequence.toString()).second)
                << sequence.toString().toStdString() << " means two things";
        }
    }
}

TEST_F(ViewerView, controlsOfTheWindowHaveNamesForWhoCannotSeeThem) {
    showEmpty();
    for (QToolButton* const button : window().findChildren<QToolButton*>()) {
        if (!button->defaultAction() || qobject_cast<QLineEdit*>(button->parent())) continue;  // Qt's own
        EXPECT_FALSE(button->accessibleName().isEmpty()) << button->objectName().toStdString();
        EXPECT_FALSE(button->toolTip().isEmpty()) << button->objectName().toStdString();
    }
}

TEST_F(ViewerView, theKeyboardPageListsEveryKey) {
    showEmpty();
    press(Qt::Key_F1);
    auto* const page = window().findChild<QDialog*>("keyboardPage");
    ASSERT_NE(page, nullptr);
    const std::string text = page->findChild<QTextBrowser*>()->toPlainText().toStdString();
    for (ViewerActions::Entry const& entry : ViewerActions::entries()) {
        if (!*entry.keys) continue;
        EXPECT_THAT(text, HasSubstr(entry.toolTip));
    }
    EXPECT_THAT(text, HasSubstr("Shift+Left"));
}

TEST_F(ViewerView, titleAndAboutBoxTellVersionQtAndOpenGl) {
    showFilm();
    const std::string title = window().windowTitle().toStdString();
    EXPECT_THAT(title, ::testing::MatchesRegex("film.mkv - qrtplay " + std::string(versionNumber) + " \\(Qt " +
                                               std::to_string(QT_VERSION_MAJOR) + "\\..*, OpenGL [0-9.]+\\)"));
    action(ViewerCommand::about).trigger();
    auto* const box = window().findChild<QMessageBox*>("aboutBox");
    ASSERT_NE(box, nullptr);
    EXPECT_THAT(box->text().toStdString(), HasSubstr(versionNumber));
    EXPECT_THAT(box->informativeText().toStdString(), HasSubstr(qVersion()));
    EXPECT_THAT(box->informativeText().toStdString(), HasSubstr("OpenGL"));
}

TEST_F(ViewerView, hShowsTheOverlayWithPositionRatesAndCounts) {
    showFilm();
    EXPECT_EQ(overlayText(), "");
    press(Qt::Key_H);
    for (const char* const word : {"TC 00:00:00:00", "frame 0 of 240", "24 frames/s wanted", "skipped", "late",
                                   "rendered ahead", "on demand", "to render", "32 x 18", "texture", "real time"})
        EXPECT_THAT(overlayText(), HasSubstr(word));
    press(Qt::Key_Right);
    EXPECT_TRUE(waitFor([&] { return overlayText().find("TC 00:00:00:01") != std::string::npos; }));
    press(Qt::Key_H);
    EXPECT_EQ(overlayText(), "");
}

TEST_F(ViewerView, theOverlayTellsBothTimecodesWhereThereAreTwo) {
    show({QRT_PAINTED_MEDIA "/ntsc.mkv"});
    press(Qt::Key_H);
    EXPECT_THAT(overlayText(), HasSubstr("DF 00:00:00;00"));
}

TEST_F(ViewerView, tChangesHowPositionsAreTold) {
    showFilm();
    playback().seek(36);
    expectShows(36);
    EXPECT_TRUE(waitFor([&] { return position() == "00:00:01:12"; })) << position();
    press(Qt::Key_T);
    EXPECT_EQ(position(), "36");
    press(Qt::Key_T);
    EXPECT_THAT(position(), HasSubstr("1.500"));
    press(Qt::Key_T);
    EXPECT_EQ(position(), "00:00:01:12");
    EXPECT_FALSE(action(ViewerCommand::drop_frame).isEnabled()) << "24 frames a second have no drop-frame timecode";
}

TEST_F(ViewerView, dCountsInDropFrameTimecode) {
    show({QRT_PAINTED_MEDIA "/ntsc.mkv"});
    press(Qt::Key_D);
    EXPECT_EQ(position(), "00:00:00;00");
    press(Qt::Key_D);
    EXPECT_EQ(position(), "00:00:00:00");
}

TEST_F(ViewerView, theKeysZoomThePicture) {
    showFilm();
    PictureView& view = window().pictureView();
    EXPECT_TRUE(view.zoom().isFit());
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(view.zoom().factor(), 1);
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_GT(view.zoom().factor(), 1);
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(view.zoom().factor(), 1);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_TRUE(view.zoom().isFit());
    EXPECT_GT(view.zoom().factor(), 10) << "a picture of 32 x 18 fills the window";
}

TEST_F(ViewerView, theKeysZoomTheTimeline) {
    showFilm();
    TimelineView& view = window().timelineView();
    const double whole = view.positionOf(100) - view.positionOf(0);
    press(Qt::Key_Plus, Qt::AltModifier);
    EXPECT_GT(view.positionOf(100) - view.positionOf(0), whole);
    press(Qt::Key_Minus, Qt::AltModifier);
    press(Qt::Key_Plus, Qt::AltModifier);
    press(Qt::Key_0, Qt::AltModifier);
    EXPECT_DOUBLE_EQ(view.positionOf(100) - view.positionOf(0), whole);
}

TEST_F(ViewerView, quittingClosesTheWindow) {
    showFilm();
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(playback().isPlaying());
}

TEST_F(ViewerView, fAndADoubleClickShowNothingButThePicture) {
    showFilm();
    press(Qt::Key_F);
    EXPECT_TRUE(window().isFullScreen());
    EXPECT_FALSE(window().menuBar()->isVisible());
    EXPECT_FALSE(window().timelineView().isVisible());
    press(Qt::Key_Right);
    expectShows(1);
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isFullScreen());
    EXPECT_TRUE(window().menuBar()->isVisible());
    EXPECT_TRUE(window().timelineView().isVisible());
    QTest::mouseDClick(&window().pictureView(), Qt::LeftButton);
    EXPECT_TRUE(window().isFullScreen());
    QTest::mouseDClick(&window().pictureView(), Qt::LeftButton);
    EXPECT_FALSE(window().isFullScreen());
}

TEST_F(ViewerView, panelsComeAndGo) {
    showFilm();
    auto* const preferences = window().findChild<QDockWidget*>("preferencesDock");
    auto* const log = window().findChild<QDockWidget*>("logDock");
    EXPECT_FALSE(preferences->isVisible() || log->isVisible());
    press(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_TRUE(preferences->isVisible());
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(log->isVisible());
    log->close();
    EXPECT_FALSE(action(ViewerCommand::log).isChecked());
    press(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_FALSE(preferences->isVisible());
}

TEST_F(ViewerView, theCacheBarsFollowWhatPlayerAndGraphEngineHold) {
    showFilm();
    EXPECT_TRUE(waitFor([&] { return !window().timelineView().rendered().empty(); }));
    EXPECT_TRUE(waitFor([&] { return !window().timelineView().decoded().empty(); }));
    playback().seek(200);
    EXPECT_TRUE(waitFor([&] {
        auto const& spans = window().timelineView().rendered();
        return std::any_of(spans.begin(), spans.end(),
                           [](FrameSpan const& span) { return span.first <= 200 && span.last >= 200; });
    }));
}

TEST_F(ViewerView, whatGoesWrongStandsInTheLogToo) {
    showEmpty();
    PlayInput missing;
    missing.files = {"/nowhere/lost.mov"};
    window().open(missing);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty(); }));
    EXPECT_THAT(window().findChild<LogPanel*>()->lines().join('\n').toStdString(), HasSubstr("/nowhere/lost.mov"));
}

TEST_F(ViewerView, theFrameStaysRightAfterEveryResize) {
    showFilm();
    playback().seek(99);
    expectShows(99);
    for (const QSize size : {QSize(640, 480), QSize(1600, 500), QSize(700, 900)}) {
        window().resize(size);
        EXPECT_TRUE(waitFor([&] { return window().size() == size; }));
        expectShows(99);
    }
}

}  // namespace
}  // namespace qrtplay
