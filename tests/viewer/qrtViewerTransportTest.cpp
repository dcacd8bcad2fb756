// Every key and action that moves through the timeline.
#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>

#include "viewer/qrtViewerFixture.h"

namespace qrtplay {
namespace {

class ViewerTransport : public ViewerFixture {
protected:
    /// Frames shown from now on.
    std::vector<int64> recorded;
    void record() {
        QObject::connect(&playback(), &Playback::frameShown, &playback(),
                         [this](FetchedFrame const& frame) { recorded.push_back(frame.frame); });
    }
};

TEST_F(ViewerTransport, arrowsStepByOneFrameAndWithShiftByASecond) {
    showFilm();
    expectShows(0);
    press(Qt::Key_Right);
    expectShows(1);
    press(Qt::Key_Right, Qt::ShiftModifier);
    expectShows(25);
    press(Qt::Key_Left);
    expectShows(24);
    press(Qt::Key_Left, Qt::ShiftModifier);
    expectShows(0);
    press(Qt::Key_Left);
    expectShows(0);
}

TEST_F(ViewerTransport, homeAndEndGoToTheFirstAndTheLastFrame) {
    showFilm();
    press(Qt::Key_End);
    expectShows(239);
    press(Qt::Key_Right);
    expectShows(239);
    press(Qt::Key_Home);
    expectShows(0);
}

TEST_F(ViewerTransport, upAndDownGoFromCutToCut) {
    show({timeline()});
    EXPECT_TRUE(waitFor([&] { return shownNumber() == 10; }));
    press(Qt::Key_Down);
    EXPECT_EQ(playback().frame(), 48);
    press(Qt::Key_Down);
    EXPECT_EQ(playback().frame(), 95);
    press(Qt::Key_Up);
    EXPECT_EQ(playback().frame(), 48);
    press(Qt::Key_Up);
    EXPECT_EQ(playback().frame(), 0);
    press(Qt::Key_Up);
    EXPECT_EQ(playback().frame(), 0);
}

TEST_F(ViewerTransport, spacePlaysAndPauses) {
    showFilm();
    record();
    press(Qt::Key_Space);
    EXPECT_TRUE(playback().isPlaying());
    EXPECT_TRUE(action(ViewerCommand::toggle_play).isChecked());
    EXPECT_EQ(action(ViewerCommand::toggle_play).text(), "&Pause");
    EXPECT_TRUE(waitFor([&] { return recorded.size() > 5; }));
    press(Qt::Key_Space);
    EXPECT_FALSE(playback().isPlaying());
    EXPECT_FALSE(action(ViewerCommand::toggle_play).isChecked());
    expectShows(static_cast<int>(playback().frame()));
}

TEST_F(ViewerTransport, aRunStopsAtTheEndAndSpaceBeginsAgain) {
    showFilm();
    playback().seek(236);
    expectShows(236);
    press(Qt::Key_Space);
    EXPECT_TRUE(waitFor([&] { return !playback().isPlaying(); }));
    expectShows(239);
    record();
    press(Qt::Key_Space);
    EXPECT_TRUE(waitFor([&] { return !recorded.empty(); }));
    EXPECT_LT(recorded.front(), 239) << "begins again";
}

TEST_F(ViewerTransport, jAndLPlayBothWaysFasterEachTime) {
    showFilm();
    playback().seek(120);
    expectShows(120);
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 1);
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 2);
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 4);
    press(Qt::Key_L);
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 8) << "no faster";
    press(Qt::Key_J);
    EXPECT_EQ(playback().step(), -1);
    press(Qt::Key_J);
    EXPECT_EQ(playback().step(), -2);
    press(Qt::Key_K);
    EXPECT_FALSE(playback().isPlaying());
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 1);
}

TEST_F(ViewerTransport, withKHeldJAndLStep) {
    showFilm();
    playback().seek(50);
    hold(Qt::Key_K);
    press(Qt::Key_L);
    expectShows(51);
    press(Qt::Key_L);
    expectShows(52);
    press(Qt::Key_J);
    expectShows(51);
    EXPECT_FALSE(playback().isPlaying());
    letGo(Qt::Key_K);
    press(Qt::Key_L);
    EXPECT_TRUE(playback().isPlaying());
}

TEST_F(ViewerTransport, inAndOutPointsBoundWhatIsPlayed) {
    showFilm();
    playback().seek(40);
    press(Qt::Key_I);
    playback().seek(47);
    press(Qt::Key_O);
    EXPECT_EQ(playback().range(), (FrameSpan{40, 47}));
    press(Qt::Key_I, Qt::ShiftModifier);
    expectShows(40);
    press(Qt::Key_O, Qt::ShiftModifier);
    expectShows(47);
    press(Qt::Key_M);
    EXPECT_EQ(playback().mode(), PlayParams::loop);
    press(Qt::Key_I, Qt::ShiftModifier);
    expectShows(40);
    record();
    press(Qt::Key_Space);
    EXPECT_TRUE(waitFor([&] { return recorded.size() > 20; }));
    press(Qt::Key_Space);
    for (const int64 frame : recorded)
        EXPECT_TRUE(frame >= 40 && frame <= 47) << frame;
    press(Qt::Key_X);
    EXPECT_EQ(playback().range(), (FrameSpan{0, 239}));
}

TEST_F(ViewerTransport, aPointThatPassesTheOtherRemovesIt) {
    showFilm();
    playback().seek(40);
    press(Qt::Key_O);
    playback().seek(60);
    press(Qt::Key_I);
    EXPECT_EQ(playback().inPoint(), 60);
    EXPECT_FALSE(playback().outPoint().has_value());
}

TEST_F(ViewerTransport, mChangesThePlayModeAndTheMenuSaysWhich) {
    showFilm();
    for (const auto& [mode, command] : {std::pair{PlayParams::loop, ViewerCommand::mode_loop},
                                        std::pair{PlayParams::ping_pong, ViewerCommand::mode_ping_pong},
                                        std::pair{PlayParams::single, ViewerCommand::mode_single}}) {
        press(Qt::Key_M);
        EXPECT_EQ(playback().mode(), mode);
        EXPECT_TRUE(action(command).isChecked());
    }
    action(ViewerCommand::mode_ping_pong).trigger();
    EXPECT_EQ(playback().mode(), PlayParams::ping_pong);
}

TEST_F(ViewerTransport, aRepeatsFromInToOut) {
    showFilm();
    playback().seek(30);
    press(Qt::Key_I);
    playback().seek(33);
    press(Qt::Key_O);
    expectShows(33);
    record();
    press(Qt::Key_A);
    EXPECT_EQ(playback().mode(), PlayParams::loop);
    EXPECT_TRUE(waitFor([&] { return recorded.size() > 12; }));
    for (const int64 frame : recorded)
        EXPECT_TRUE(frame >= 30 && frame <= 33) << frame;
}

TEST_F(ViewerTransport, theStepChoosesEveryNthFrame) {
    showFilm();
    EXPECT_TRUE(action(ViewerCommand::stride_1).isChecked());
    action(ViewerCommand::stride_5).trigger();
    EXPECT_TRUE(action(ViewerCommand::stride_5).isChecked());
    expectShows(0);
    record();
    press(Qt::Key_L);
    EXPECT_TRUE(waitFor([&] { return recorded.size() > 3; }));
    for (const int64 frame : recorded)
        EXPECT_EQ(frame % 5, 0);
    press(Qt::Key_L);
    EXPECT_EQ(playback().step(), 10) << "twice as fast";
}

TEST_F(ViewerTransport, rAndSChoosePaceAndSound) {
    showFilm();
    ASSERT_EQ(playback().policy(), PacePolicy::real_time);
    press(Qt::Key_R);
    EXPECT_EQ(playback().policy(), PacePolicy::every_frame);
    press(Qt::Key_R);
    EXPECT_EQ(playback().policy(), PacePolicy::real_time);
    press(Qt::Key_S);
    EXPECT_TRUE(playback().isMuted());
    EXPECT_TRUE(action(ViewerCommand::mute).isChecked());
    press(Qt::Key_S);
    EXPECT_FALSE(playback().isMuted());
}

TEST_F(ViewerTransport, keysDoNothingWithoutAFile) {
    showEmpty();
    for (ViewerActions::Entry const& entry : ViewerActions::entries()) {
        const auto command = entry.command;
        if (command == ViewerCommand::quit || command == ViewerCommand::about || command == ViewerCommand::keyboard)
            continue;
        if (action(command).isEnabled()) action(command).trigger();
    }
    EXPECT_FALSE(playback().isPlaying());
    EXPECT_EQ(playback().whole(), (FrameSpan{0, -1}));
    EXPECT_EQ(message(), QString()) << "nothing was asked for that could fail";
}

TEST_F(ViewerTransport, scrubbingFollowsTheMouseAndEndsOnTheExactFrame) {
    showFilm();
    TimelineView& view = window().timelineView();
    const auto pointOf = [&](int64 frame) {
        return QPoint(qRound(view.positionOf(frame) + (view.positionOf(frame + 1) - view.positionOf(frame)) / 2), 12);
    };
    QTest::mousePress(&view, Qt::LeftButton, {}, pointOf(10));
    expectShows(static_cast<int>(view.frameAt(pointOf(10).x())));
    const auto dragTo = [&](QPoint point) {
        QMouseEvent move(QEvent::MouseMove, point, view.mapToGlobal(point), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(&view, &move);
    };
    for (int64 frame = 11; frame < 230; frame += 3)
        dragTo(pointOf(frame));
    dragTo(pointOf(200));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, pointOf(200));
    expectShows(static_cast<int>(view.frameAt(pointOf(200).x())));
}

TEST_F(ViewerTransport, playingGoesOnAfterAScrub) {
    showFilm();
    press(Qt::Key_Space);
    TimelineView& view = window().timelineView();
    QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(view.width() / 2, 12));
    EXPECT_TRUE(waitFor([&] { return shownNumber() == view.frameAt(view.width() / 2); }));
    record();
    QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(view.width() / 2, 12));
    EXPECT_TRUE(playback().isPlaying());
    EXPECT_TRUE(waitFor([&] { return recorded.size() > 3; }));
    EXPECT_GE(recorded.front(), view.frameAt(view.width() / 2));
}

TEST_F(ViewerTransport, aControlWithTheFocusKeepsItsKeys) {
    showFilm();
    QPushButton button("Test", &window());
    button.show();
    button.setFocus();
    ASSERT_TRUE(waitFor([&] { return button.hasFocus(); }));
    bool isClicked = false;
    QObject::connect(&button, &QPushButton::clicked, &button, [&] { isClicked = true; });
    QTest::keyClick(&button, Qt::Key_Space);
    EXPECT_TRUE(isClicked);
    EXPECT_FALSE(playback().isPlaying());
}

}  // namespace
}  // namespace qrtplay
