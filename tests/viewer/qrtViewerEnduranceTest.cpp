// What stays behind after many windows and many scrubs. QRT_ENDURANCE=1 in the environment makes it the long run.
#include <malloc.h>

#include <QApplication>
#include <QMainWindow>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QPixmapCache>
#include <QTest>
#include <random>

#include "viewer/qrtViewerFixture.h"

namespace qrtplay {
namespace {

bool isLongRun() {
    return qEnvironmentVariableIsSet("QRT_ENDURANCE");
}

/// Bytes that are allocated; with a sanitizer, whose allocator does not tell, 0.
int64 allocatedBytes() {
    QPixmapCache::clear();  // of Qt, bounded by itself: icons of windows that are gone
    const auto heap = mallinfo2();
    return static_cast<int64>(heap.uordblks + heap.hblkhd);
}

/// Textures, programs, shaders and buffers of the contexts that share their objects with all views.
int countObjects() {
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    context.setShareContext(QOpenGLContext::globalShareContext());
    EXPECT_TRUE(context.create() && context.makeCurrent(&surface));
    constexpr GLuint mostNames = 20000;
    int count = 0;
    QOpenGLFunctions& gl = *context.functions();
    for (GLuint name = 1; name < mostNames; ++name) {
        for (const bool is : {gl.glIsTexture(name) == GL_TRUE, gl.glIsProgram(name) == GL_TRUE,
                              gl.glIsShader(name) == GL_TRUE, gl.glIsBuffer(name) == GL_TRUE})
            count += is ? 1 : 0;
    }
    context.doneCurrent();
    return count;
}

/// A window that shows a frame's colour through OpenGL, and nothing of ours.
class BareView final : public QOpenGLWidget {
protected:
    void paintGL() override {
        context()->functions()->glClearColor(1, 0, 0, 1);
        context()->functions()->glClear(GL_COLOR_BUFFER_BIT);
    }
};

class ViewerEndurance : public ViewerFixture {
protected:
    void openPlayAndClose() {
        show({timeline()});
        playback().play(1);
        EXPECT_TRUE(waitFor([&] { return playback().frame() > 0; }));
        window().close();
        closeWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static void openAndCloseBareWindow() {
        QMainWindow bare;
        bare.setCentralWidget(new BareView);
        bare.resize(1000, 700);
        bare.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&bare));
        bare.close();
    }
    /// How many bytes more are allocated after `rounds` rounds than before.
    template <typename Round>
    static int64 growthOver(int rounds, Round round) {
        constexpr int warmUp = 4;  // fonts, shaders and what libraries make once
        for (int i = 0; i < warmUp; ++i)
            round();
        const int64 before = allocatedBytes();
        for (int i = 0; i < rounds; ++i)
            round();
        return allocatedBytes() - before;
    }
};

// Qt keeps some 2 KB of every window of this kind until the application ends.
TEST_F(ViewerEndurance, openingAndClosingTheWindowLeavesNothingBehind) {
    const int rounds = isLongRun() ? 500 : 12;
    openPlayAndClose();
    const int objects = countObjects();
    const int64 bare = growthOver(rounds, openAndCloseBareWindow);
    const int64 growth = growthOver(rounds, [this] { openPlayAndClose(); });
    EXPECT_EQ(countObjects(), objects);
    constexpr int64 perRound = 4 << 10;
    constexpr int64 once = 64 << 10;  // tables that double now and then
    EXPECT_LT(growth, bare + perRound * rounds + once);
    std::cout << rounds << " rounds: " << growth << " bytes more, of a bare window " << bare << "\n";
}

TEST_F(ViewerEndurance, scrubbingAllOverLeavesNothingBehindAndEndsOnTheExactFrame) {
    const int scrubs = isLongRun() ? 10000 : 300;
    showFilm();
    std::mt19937 random(20261121);
    std::uniform_int_distribution<int64> frames(0, 239);
    const auto scrub = [&](int count) {
        int64 last = 0;
        for (int i = 0; i < count; ++i) {
            playback().scrub(last = frames(random));
            QCoreApplication::processEvents();
        }
        playback().endScrub();
        expectShows(static_cast<int>(last));
    };
    scrub(scrubs / 2);
    const int objects = countObjects();
    const int64 bytes = allocatedBytes();
    scrub(scrubs);
    constexpr int slack = 16;  // frames that are cached or on their way at one time and not at the other
    EXPECT_LE(countObjects(), objects + slack);
    constexpr int64 allowed = 4 << 20;
    const int64 growth = allocatedBytes() - bytes;
    EXPECT_LT(growth, allowed);
    std::cout << scrubs << " scrubs: " << growth << " bytes more, " << countObjects() - objects
              << " objects of OpenGL more\n";
}

}  // namespace
}  // namespace qrtplay
