#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "viewer/qrtPictureViewFixture.h"

namespace qrtplay {
namespace {

/// The smallest rectangle around all pixels in which two images differ.
QRect difference(QImage const& a, QImage const& b) {
    QRect around;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y)) around = around.united(QRect(x, y, 1, 1));
        }
    }
    return around;
}

const QColor light(230, 230, 230);  // of the lines

class PictureViewOverlay : public PictureViewFixture {
protected:
    PlayerContext player;
};

TEST_F(PictureViewOverlay, isABoxInTheTopLeftCorner) {
    ASSERT_NO_FATAL_FAILURE(open(600, 400, memoryFrame(evenPicture(600, 400, Qt::lightGray))));
    const QImage plain = grab();
    view->setOverlay({"01:00:00:12", "24 of 24 frames per second"});
    const QImage covered = grab();
    const QRect box = difference(plain, covered);
    EXPECT_EQ(box.topLeft(), QPoint(8, 8) * ratio);
    EXPECT_LT(box.right(), 600);
    EXPECT_LT(box.height(), 200);
    // Translucent at its rim, round at its corner, light text somewhere inside.
    const QColor rim = covered.pixelColor(box.left() + box.width() / 2, box.top() + qRound(2 * ratio));
    EXPECT_LT(rim.red(), 120);
    EXPECT_GT(rim.red(), 20);
    EXPECT_GT(covered.pixelColor(box.topLeft()).red(), rim.red() + 20);
    int lightest = 0;
    for (int y = box.top(); y <= box.bottom(); ++y) {
        for (int x = box.left(); x <= box.right(); ++x)
            lightest = std::max(lightest, covered.pixelColor(x, y).red());
    }
    EXPECT_GT(lightest, 220);

    view->setOverlay({});
    EXPECT_EQ(grab(), plain);
}

TEST_F(PictureViewOverlay, isAsWideForAllDigits) {
    ASSERT_NO_FATAL_FAILURE(open(600, 400, memoryFrame(evenPicture(600, 400, Qt::lightGray))));
    const QImage plain = grab();
    view->setOverlay({"11:11:11:11"});
    const QRect ones = difference(plain, grab());
    view->setOverlay({"00:48:38:20"});
    EXPECT_EQ(difference(plain, grab()), ones);
}

TEST_F(PictureViewOverlay, staysInsideANarrowView) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, memoryFrame(evenPicture(400, 300, Qt::lightGray))));
    const QImage plain = grab();
    view->setOverlay({QString(300, 'x')});
    const QRect box = difference(plain, grab());
    EXPECT_LE(box.right(), 400 - 8 * ratio);
}

TEST_F(PictureViewOverlay, staysTheSameWhenThePictureIsZoomed) {
    ASSERT_NO_FATAL_FAILURE(open(600, 400, memoryFrame(evenPicture(600, 400, Qt::lightGray))));
    view->setOverlay({"24 of 24 frames per second"});
    const QImage fitted = grab();
    for (int i = 0; i < 4; ++i)
        view->zoomIn();
    EXPECT_EQ(grab(), fitted);
}

TEST_F(PictureViewOverlay, messageTakesThePlaceOfThePicture) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300));
    const QImage empty = grab();
    view->showFrame(memoryFrame(evenPicture(400, 300, Qt::red)));
    view->setSafeAreas(true);
    view->setMessage("There is no file to play. Open one from the menu, or drop it on this window to see it here.");
    const QImage shown = grab();
    const QRect text = difference(empty, shown);
    ASSERT_FALSE(text.isEmpty());
    EXPECT_GE(text.left(), 24 * ratio);
    EXPECT_LE(text.right(), 400 - 24 * ratio);
    EXPECT_NEAR(text.center().x(), 200, 8 * ratio);
    EXPECT_NEAR(text.center().y(), 150, 4 * ratio);
    EXPECT_EQ(shown.pixelColor(2, 2), background);
    view->setSafeAreas(false);
    view->setMessage(QString());
    EXPECT_EQ(pixel(200, 150), QColor(Qt::red));
}

TEST_F(PictureViewOverlay, messageIsWrappedAnewInANarrowerView) {
    ASSERT_NO_FATAL_FAILURE(open(900, 300));
    view->setMessage("There is no file to play. Open one from the menu, or drop it on this window.");
    const int wide = difference(evenPicture(900, 300, background), grab()).height();
    view->resize(QSize(400, 300) / ratio);
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().width() == 400; }));
    const QRect text = difference(evenPicture(400, 300, background), grab());
    EXPECT_GT(text.height(), wide);
    EXPECT_LT(text.width(), 400);
}

TEST_F(PictureViewOverlay, messageIsLegibleOnEveryBackground) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300));
    for (const QColor& colour : {QColor(Qt::black), QColor(Qt::white)}) {
        view->setBackground(colour);
        view->setMessage("Nothing to play");
        const QImage shown = grab();
        int farthest = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x)
                farthest = std::max(farthest, std::abs(shown.pixelColor(x, y).red() - colour.red()));
        }
        EXPECT_GT(farthest, 200);
    }
}

TEST_F(PictureViewOverlay, safeAreasAreSeenOnLightAndDarkPictures) {
    for (const QColor& colour : {QColor(Qt::black), QColor(Qt::white), QColor(128, 128, 128), QColor(230, 230, 230)}) {
        ASSERT_NO_FATAL_FAILURE(open(600, 400, player.textureFrame(evenPicture(600, 400, colour))));
        const QImage plain = grab();
        view->setSafeAreas(true);
        const QImage shown = grab();
        const auto contrastNear = [&shown, &colour, this](int x, int y) {
            int most = 0;
            for (int d = -qRound(2 * ratio); d <= qRound(2 * ratio); ++d)
                most = std::max({most, std::abs(shown.pixelColor(x + d, y).red() - colour.red()),
                                 std::abs(shown.pixelColor(x, y + d).red() - colour.red())});
            return most;
        };
        // 93 and 90 % of 600 x 400, around the middle.
        EXPECT_GT(contrastNear(21, 200), 80);
        EXPECT_GT(contrastNear(579, 200), 80);
        EXPECT_GT(contrastNear(300, 14), 80);
        EXPECT_GT(contrastNear(300, 386), 80);
        EXPECT_GT(contrastNear(30, 200), 80);
        EXPECT_GT(contrastNear(570, 200), 80);
        EXPECT_GT(contrastNear(300, 20), 80);
        EXPECT_GT(contrastNear(300, 380), 80);
        EXPECT_EQ(shown.copy(40, 30, 520, 340), plain.copy(40, 30, 520, 340));
        EXPECT_EQ(shown.copy(0, 0, 600, 10), plain.copy(0, 0, 600, 10));
        view->setSafeAreas(false);
        EXPECT_EQ(grab(), plain);
    }
}

TEST_F(PictureViewOverlay, safeAreasLieOnWholePixelsOfTheStandard) {
    ASSERT_NO_FATAL_FAILURE(open(600, 400, player.textureFrame(evenPicture(600, 400, Qt::black))));
    view->setSafeAreas(true);
    const QImage shown = grab();
    const int thickness = qRound(ratio);
    for (int i = 0; i < thickness; ++i) {
        for (int x : {21 + i, 578 - i, 30 + i, 569 - i})
            EXPECT_EQ(shown.pixelColor(x, 200), light) << x;
        for (int y : {14 + i, 385 - i, 20 + i, 379 - i})
            EXPECT_EQ(shown.pixelColor(300, y), light) << y;
    }
    EXPECT_NE(shown.pixelColor(21 + thickness, 200), light);
}

TEST_F(PictureViewOverlay, safeAreasGoWithThePicture) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(evenPicture(200, 100, Qt::black))));
    view->setSafeAreas(true);
    view->zoomToOriginal();  // at 100, 100
    const QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(107, 150), light);
    EXPECT_EQ(shown.pixelColor(110, 150), light);
    EXPECT_EQ(shown.pixelColor(200, 105), light);
    EXPECT_EQ(shown.pixelColor(99, 150), background);
    EXPECT_EQ(shown.pixelColor(20, 150), background);
}

}  // namespace
}  // namespace qrtplay
