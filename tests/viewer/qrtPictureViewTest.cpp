#include "viewer/picture/qrtPictureView.h"

#include <gtest/gtest.h>

#include <QHBoxLayout>
#include <QMainWindow>
#include <QProcess>
#include <QSignalSpy>
#include <QWheelEvent>
#include <cmath>

#include "viewer/qrtPictureViewFixture.h"

namespace qrtplay {
namespace {

class PictureViewTest : public PictureViewFixture {
protected:
    void turnWheel(int angle, QPoint const& at) {
        const QPointF position(logical(at));
        QWheelEvent event(position, view->mapToGlobal(position.toPoint()), QPoint(), QPoint(0, angle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view.get(), &event);
    }
    void drag(Qt::MouseButton button, QPoint const& from, QPoint const& to) {
        QTest::mousePress(view.get(), button, Qt::NoModifier, logical(from));
        QMouseEvent move(QEvent::MouseMove, logical(to), view->mapToGlobal(logical(to)), Qt::NoButton, button,
                         Qt::NoModifier);
        QApplication::sendEvent(view.get(), &move);
        QTest::mouseRelease(view.get(), button, Qt::NoModifier, logical(to));
    }

    PlayerContext player;
};

struct FormatCase {
    const char* name;
    int channels;
    int bits;
    bool isFloat;
    GLint internalFormat;  // of a texture
};

class PictureViewFormat : public PictureViewFixture, public ::testing::WithParamInterface<FormatCase> {
protected:
    [[nodiscard]] static VideoBufferResolution formatOf(QImage const& picture) {
        FormatCase const& format = GetParam();
        return VideoBufferResolution(picture.width(), picture.height(), format.channels, format.bits, format.isFloat);
    }
};
using PictureViewMemory = PictureViewFormat;
using PictureViewTexture = PictureViewFormat;

std::string nameOf(::testing::TestParamInfo<FormatCase> const& info) {
    return info.param.name;
}

TEST_P(PictureViewMemory, isShownPixelByPixel) {
    QImage picture = testPicture(53, 31);  // rows that need padding
    ASSERT_NO_FATAL_FAILURE(open(420, 300, memoryFrame(picture, formatOf(picture))));
    view->zoomToOriginal();
    if (GetParam().channels == 1) {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const int red = picture.pixelColor(x, y).red();
                picture.setPixelColor(x, y, QColor(red, red, red));
            }
        }
    }
    EXPECT_EQ(grabPicture(), picture);
}
INSTANTIATE_TEST_SUITE_P(Formats, PictureViewMemory,
                         ::testing::Values(FormatCase{"rgba8", 4, 8, false, 0}, FormatCase{"rgba16", 4, 16, false, 0},
                                           FormatCase{"rgba16f", 4, 16, true, 0}, FormatCase{"rgba32f", 4, 32, true, 0},
                                           FormatCase{"rgba32", 4, 32, false, 0}, FormatCase{"rgba10", 4, 10, false, 0},
                                           FormatCase{"rgb8", 3, 8, false, 0}, FormatCase{"rgb16", 3, 16, false, 0},
                                           FormatCase{"rgb16f", 3, 16, true, 0}, FormatCase{"rgb32f", 3, 32, true, 0},
                                           FormatCase{"two8", 2, 8, false, 0}, FormatCase{"grey8", 1, 8, false, 0},
                                           FormatCase{"grey16", 1, 16, false, 0}, FormatCase{"grey16f", 1, 16, true, 0},
                                           FormatCase{"grey32f", 1, 32, true, 0}),
                         nameOf);

TEST_P(PictureViewTexture, isShownPixelByPixel) {
    PlayerContext player;
    const QImage picture = testPicture(53, 31);
    ASSERT_NO_FATAL_FAILURE(open(420, 300, player.textureFrame(picture, formatOf(picture), GetParam().internalFormat)));
    view->zoomToOriginal();
    EXPECT_EQ(grabPicture(), picture);
}
INSTANTIATE_TEST_SUITE_P(
    Formats, PictureViewTexture,
    ::testing::Values(FormatCase{"rgba8", 4, 8, false, GL_RGBA8}, FormatCase{"rgba16", 4, 16, false, GL_RGBA16},
                      FormatCase{"rgba16f", 4, 16, true, GL_RGBA16F}, FormatCase{"rgba32f", 4, 32, true, GL_RGBA32F},
                      FormatCase{"rgba10", 4, 10, false, GL_RGB10_A2}, FormatCase{"rgb8", 3, 8, false, GL_RGB8},
                      FormatCase{"rgb16", 3, 16, false, GL_RGB16}, FormatCase{"rgb16f", 3, 16, true, GL_RGB16F},
                      FormatCase{"rgb32f", 3, 32, true, GL_RGB32F}),
    nameOf);

TEST_F(PictureViewTest, isEmptyWithoutAFrame) {
    ASSERT_NO_FATAL_FAILURE(open(420, 300));
    EXPECT_EQ(grab(), evenPicture(420, 300, background));
    EXPECT_TRUE(view->snapshot().isNull());
}

TEST_F(PictureViewTest, isEmptyAgainAfterAnEmptyFrame) {
    ASSERT_NO_FATAL_FAILURE(open(420, 300, memoryFrame(testPicture(420, 300))));
    view->showFrame(nullptr);
    EXPECT_EQ(grab(), evenPicture(420, 300, background));
}

TEST_F(PictureViewTest, aTextureThatIsGoneIsEmpty) {
    ASSERT_NO_FATAL_FAILURE(open(420, 300, memoryFrame(testPicture(420, 300))));
    struct GoneFrame final : VideoBuffer {
        [[nodiscard]] unsigned char getType() const override { return framebufferKind; }
        Status getData(void*& data) override { return static_cast<GoneFrame const&>(*this).getData(data); }
        Status getData(void*& data) const override {
            data = nullptr;
            return Status();
        }
        Status getTexture(unsigned int& texture) const override {
            texture = 0;
            return Status();
        }
        [[nodiscard]] VideoBufferResolution getResolution() const override { return {420, 300, 4, 8, false}; }
    };
    view->showFrame(SharedPtr<VideoBuffer>(new GoneFrame));
    EXPECT_EQ(grab(), evenPicture(420, 300, background));
    EXPECT_TRUE(view->snapshot().isNull());
}

TEST_F(PictureViewTest, fitsAPictureBetweenBars) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(evenPicture(800, 400, Qt::red))));
    const QImage shown = grab();
    for (int x : {0, 200, 399}) {
        EXPECT_EQ(shown.pixelColor(x, 49), background);
        EXPECT_EQ(shown.pixelColor(x, 50), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(x, 249), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(x, 250), background);
    }
}

TEST_F(PictureViewTest, fitsAgainAfterAnotherSize) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(evenPicture(800, 400, Qt::red))));
    QSignalSpy zoomed(view.get(), &PictureView::zoomChanged);
    view->resize(QSize(200, 300) / ratio);
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().width() == 200; }));
    const QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(100, 99), background);
    EXPECT_EQ(shown.pixelColor(0, 100), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(199, 199), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(100, 200), background);
    EXPECT_GT(zoomed.count(), 0);
}

TEST_F(PictureViewTest, keepsTheMiddleInTheMiddleWhenResized) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(testPicture(100, 80))));
    view->zoomToOriginal();
    view->resize(QSize(600, 360) / ratio);
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().width() == 600; }));
    EXPECT_EQ(view->zoom().pictureRect(), QRectF(250, 140, 100, 80));
    EXPECT_EQ(grabPicture(), testPicture(100, 80));
}

TEST_F(PictureViewTest, enlargedPixelsAreEvenSquares) {
    const QImage picture = testPicture(53, 31);
    ASSERT_NO_FATAL_FAILURE(open(420, 300, player.textureFrame(picture)));
    view->zoomToOriginal();
    for (int factor : {2, 3, 4}) {
        while (view->zoom().factor() < factor)
            view->zoomIn();
        ASSERT_EQ(view->zoom().factor(), factor);
        EXPECT_EQ(grabPicture(), picture.scaled(picture.size() * factor)) << factor;
    }
}

TEST_F(PictureViewTest, fittedEnlargementIsSmooth) {
    QImage picture = evenPicture(2, 1, Qt::black);
    picture.setPixelColor(1, 0, Qt::white);
    ASSERT_NO_FATAL_FAILURE(open(400, 200, player.textureFrame(picture)));
    const QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(50, 100), QColor(Qt::black));
    EXPECT_NEAR(shown.pixelColor(150, 100).red(), 64, 2);
    EXPECT_NEAR(shown.pixelColor(200, 100).red(), 128, 2);
    EXPECT_EQ(shown.pixelColor(0, 0), QColor(Qt::black));  // no rim
    EXPECT_EQ(shown.pixelColor(399, 199), QColor(Qt::white));
}

TEST_F(PictureViewTest, aShrunkCheckerboardIsGrey) {
    ASSERT_NO_FATAL_FAILURE(open(320, 200, player.textureFrame(checkerboard(1280, 800))));
    const QImage shown = grab();
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            ASSERT_NEAR(shown.pixelColor(x, y).red(), 127.5, 1) << x << ", " << y;
    }
    // At a size that the squares do not go into, little is left of them.
    view->resize(QSize(300, 200) / ratio);
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().width() == 300; }));
    const QImage uneven = grabPicture();
    for (int y = 1; y < uneven.height() - 1; ++y) {
        for (int x = 1; x < uneven.width() - 1; ++x)
            ASSERT_NEAR(uneven.pixelColor(x, y).red(), 127.5, 12) << x << ", " << y;
    }
}

TEST_F(PictureViewTest, aPictureManyTimesTooLargeIsItsMean) {
    ASSERT_NO_FATAL_FAILURE(open(320, 200, memoryFrame(testPicture(50, 40))));
    QImage lines = evenPicture(1600, 4000, Qt::black);
    for (int y = 0; y < lines.height(); y += 4) {
        for (int x = 0; x < lines.width(); ++x)
            lines.setPixelColor(x, y, QColor(200, 100, 40));
    }
    view->resize(QSize(320, 180) / ratio);
    view->showFrame(memoryFrame(lines));
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().height() == 180; }));
    EXPECT_NEAR(pixel(160, 90).red(), 50, 5);
}

TEST_F(PictureViewTest, backgroundIsSeenThroughTransparentParts) {
    QImage picture = evenPicture(400, 300, QColor(200, 100, 50, 128));
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 200; ++x)
            picture.setPixelColor(x, y, Qt::transparent);
    }
    for (const auto& frame : {player.textureFrame(picture), memoryFrame(picture)}) {
        ASSERT_NO_FATAL_FAILURE(open(400, 300, frame));
        EXPECT_EQ(pixel(100, 150), background);
        const QColor mixed = pixel(300, 150);
        EXPECT_NEAR(mixed.red(), 105, 1);
        EXPECT_NEAR(mixed.green(), 80, 1);
        EXPECT_NEAR(mixed.blue(), 35, 1);
        EXPECT_EQ(mixed.alpha(), 255);
    }
}

TEST_F(PictureViewTest, backgroundCanBeChanged) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300));
    view->setBackground(Qt::lightGray);
    EXPECT_EQ(pixel(10, 10), QColor(Qt::lightGray));
}

TEST_F(PictureViewTest, everyFrameInMemoryIsUploaded) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, memoryFrame(evenPicture(400, 300, Qt::red))));
    EXPECT_EQ(pixel(10, 10), QColor(Qt::red));
    view->showFrame(memoryFrame(evenPicture(400, 300, Qt::blue)));
    EXPECT_EQ(pixel(10, 10), QColor(Qt::blue));
    view->showFrame(player.textureFrame(evenPicture(400, 300, Qt::green)));
    EXPECT_EQ(pixel(10, 10), QColor(Qt::green));
    view->showFrame(memoryFrame(evenPicture(200, 150, Qt::white)));
    EXPECT_EQ(pixel(10, 10), QColor(Qt::white));
}

TEST_F(PictureViewTest, releasesAFrameWhenItIsReplaced) {
    bool isAlive = false;
    ASSERT_NO_FATAL_FAILURE(open(400, 300, memoryFrame(evenPicture(400, 300, Qt::red), &isAlive)));
    EXPECT_EQ(pixel(10, 10), QColor(Qt::red));
    ASSERT_TRUE(isAlive);
    view->showFrame(memoryFrame(evenPicture(400, 300, Qt::blue)));
    EXPECT_FALSE(isAlive);
    view->showFrame(memoryFrame(evenPicture(400, 300, Qt::red), &isAlive));
    ASSERT_TRUE(isAlive);
    view->showFrame(nullptr);
    EXPECT_FALSE(isAlive);
    view->showFrame(memoryFrame(evenPicture(400, 300, Qt::red), &isAlive));
    view.reset();
    EXPECT_FALSE(isAlive);
}

TEST_F(PictureViewTest, zoomStepsTellTheFactor) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(testPicture(800, 600))));
    QSignalSpy zoomed(view.get(), &PictureView::zoomChanged);
    EXPECT_DOUBLE_EQ(view->zoom().factor(), 0.5);
    view->zoomIn();
    EXPECT_DOUBLE_EQ(view->zoom().factor(), 0.64);
    EXPECT_FALSE(view->zoom().isFit());
    view->zoomOut();
    EXPECT_DOUBLE_EQ(view->zoom().factor(), 0.5);
    EXPECT_EQ(zoomed.count(), 2);
    view->zoomToFit();  // the same factor, but no longer the same manner
    EXPECT_TRUE(view->zoom().isFit());
    EXPECT_EQ(zoomed.count(), 3);
    for (int i = 0; i < 50; ++i)
        view->zoomIn();
    EXPECT_EQ(view->zoom().factor(), PictureZoom::largest);
    for (int i = 0; i < 50; ++i)
        view->zoomOut();
    EXPECT_EQ(view->zoom().factor(), PictureZoom::smallest);
}

TEST_F(PictureViewTest, wheelZoomsAroundThePointer) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(testPicture(400, 300))));
    const QColor under = testPicture(400, 300).pixelColor(100, 60);
    for (int i = 0; i < 3; ++i)
        turnWheel(120, QPoint(100, 60));
    EXPECT_DOUBLE_EQ(view->zoom().factor(), 2);
    EXPECT_EQ(pixel(100, 60), under);
    for (int i = 0; i < 2; ++i)
        turnWheel(-60, QPoint(100, 60));  // a wheel of finer steps
    EXPECT_DOUBLE_EQ(view->zoom().factor(), 1.5);
    EXPECT_NEAR(view->zoom().pictureRect().x(), -50, 1);
}

TEST_F(PictureViewTest, draggingMovesAZoomedPicture) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(testPicture(400, 300))));
    drag(Qt::LeftButton, {200, 150}, {240, 120});
    EXPECT_EQ(view->zoom().pictureRect(), QRectF(0, 0, 400, 300)) << "fitted, there is nothing to move";
    view->zoomToOriginal();
    drag(Qt::LeftButton, {200, 150}, {240, 120});
    EXPECT_EQ(view->zoom().pictureRect(), QRectF(40, -30, 400, 300));
    EXPECT_EQ(grab().copy(40, 0, 360, 270), testPicture(400, 300).copy(0, 30, 360, 270));
    EXPECT_EQ(pixel(39, 0), background);
    drag(Qt::MiddleButton, {200, 150}, {150, 150});
    EXPECT_EQ(view->zoom().pictureRect(), QRectF(-10, -30, 400, 300));
    drag(Qt::RightButton, {200, 150}, {240, 120});
    EXPECT_EQ(view->zoom().pictureRect(), QRectF(-10, -30, 400, 300));
}

TEST_F(PictureViewTest, doubleClickWantsTheFullScreen) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300));
    QSignalSpy wanted(view.get(), &PictureView::fullScreenWanted);
    QTest::mouseDClick(view.get(), Qt::MiddleButton);
    EXPECT_EQ(wanted.count(), 0);
    QTest::mouseDClick(view.get(), Qt::LeftButton);
    EXPECT_EQ(wanted.count(), 1);
}

TEST_F(PictureViewTest, snapshotIsTheFrameWhateverIsOnShow) {
    const QImage picture = testPicture(200, 150);
    const VideoBufferResolution half(200, 150, 4, 16, true);
    for (const auto& frame : {player.textureFrame(picture), player.textureFrame(picture, half, GL_RGBA16F),
                              memoryFrame(picture), memoryFrame(picture, half)}) {
        ASSERT_NO_FATAL_FAILURE(open(400, 300, frame));
        view->setOverlay({"25 frames per second"});
        view->setSafeAreas(true);
        EXPECT_EQ(view->snapshot(), picture);
        view->zoomIn();
        const QImage before = grab();
        EXPECT_EQ(view->snapshot(), picture);
        EXPECT_EQ(grab(), before);
    }
}

TEST_F(PictureViewTest, snapshotKeepsTransparency) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, player.textureFrame(evenPicture(8, 8, QColor(200, 100, 50, 128)))));
    const QColor colour = view->snapshot().pixelColor(3, 3);
    EXPECT_EQ(colour.alpha(), 128);
    EXPECT_NEAR(colour.red(), 200, 1);
    EXPECT_NEAR(colour.green(), 100, 1);
}

TEST_F(PictureViewTest, livesOnInAnotherWindow) {
    ASSERT_NO_FATAL_FAILURE(open(400, 300, memoryFrame(testPicture(300, 200))));
    view->setOverlay({"Overlay"});
    view->zoomToOriginal();
    const QImage before = grab();
    QWidget other;
    other.resize(QSize(400, 300) / ratio);
    QHBoxLayout layout(&other);
    layout.setContentsMargins(0, 0, 0, 0);
    layout.addWidget(view.get());
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
    ASSERT_TRUE(QTest::qWaitFor([this] { return grab().size() == QSize(400, 300); }));
    EXPECT_EQ(grab(), before);
    EXPECT_EQ(view->snapshot(), testPicture(300, 200));
    view.reset();
}

TEST_F(PictureViewTest, viewsLeaveNothingBehind) {
    const auto openAndClose = [this] {
        ASSERT_NO_FATAL_FAILURE(open(200, 150, memoryFrame(testPicture(40, 30))));
        view->setOverlay({"Overlay"});
        EXPECT_EQ(grab().size(), QSize(200, 150));
        view->setMessage("Message");
        EXPECT_EQ(grab().size(), QSize(200, 150));
        view.reset();
    };
    ASSERT_NO_FATAL_FAILURE(openAndClose());
    const int textures = player.countTextures();
    const int programs = player.countPrograms();
    for (int i = 0; i < 50; ++i)
        ASSERT_NO_FATAL_FAILURE(openAndClose());
    EXPECT_EQ(player.countTextures(), textures);
    EXPECT_EQ(player.countPrograms(), programs);
}

TEST(PictureViewScaled, allOfThisHoldsWithTwoPixelsAPoint) {
    if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) GTEST_SKIP() << "this is the scaled program";
    QProcess scaled;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_SCALE_FACTOR", "2");
    for (const char* own : {"GTEST_FILTER", "GTEST_OUTPUT", "GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX"})
        environment.remove(own);
    scaled.setProcessEnvironment(environment);
    scaled.setProcessChannelMode(QProcess::MergedChannels);
    scaled.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=*PictureView*:PixelRatio.*"});
    constexpr int longEnough = 200000;
    ASSERT_TRUE(scaled.waitForFinished(longEnough));
    EXPECT_EQ(scaled.exitCode(), 0) << scaled.readAll().toStdString();
}

TEST(PixelRatio, isWhatTheProgramWasStartedWith) {
    QWidget widget;
    widget.winId();
    EXPECT_EQ(widget.devicePixelRatioF(), qEnvironmentVariableIntValue("QT_SCALE_FACTOR") == 2 ? 2 : 1);
}

}  // namespace
}  // namespace qrtplay
