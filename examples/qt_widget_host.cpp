// A host with a Qt widget: the player's textures, drawn by the widget's own OpenGL context at the pace of a clock.
//
//   qt_widget_host [FRAMES]    closes after that many frames and prints the middle row of what the widget shows
#include <QApplication>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLExtraFunctions>
#include <QOpenGLWidget>
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "common/bar_graph_engine.h"
#include "common/check.h"
#include "common/native_context.h"
#include "common/row_text.h"
#include "player/qrtPlayer.h"

using namespace examples;

namespace {

constexpr int64 numFrames = 240;

class PictureView final : public QOpenGLWidget {
public:
    /// Shows frames up to `lastFrame` and then closes; goes on for ever when that is negative.
    explicit PictureView(int64 lastFrame) : m_lastFrame(lastFrame) {}
    ~PictureView() override { stop(); }

protected:
    void initializeGL() override {
        // The context is current on this thread, as `initialize` allows.
        const NativeContext native = nativeContextOf(*context());
        check(m_player->initialize(native.context, native.window));
        connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PictureView::stop);
        context()->functions()->glGenFramebuffers(1, &m_framebuffer);

        check(m_player->setComposition(SharedPtr<Composition>(new Clip(numFrames)), {}));
        const Time start(0, frameRate);
        check(m_player->startProducing(PlayParams::create(start, start, Time(numFrames, frameRate), frameRate, 1,
                                                          PlayParams::loop, PlayParams::video_only)));
        m_clock.start();
        m_timer.start(5, Qt::PreciseTimer, this);
    }

    void timerEvent(QTimerEvent*) override {
        const double seconds = static_cast<double>(m_clock.elapsed()) / 1000;
        const auto due = static_cast<int64>(seconds * frameRate.getValue());
        if (m_lastFrame >= 0 && due > m_lastFrame) return finish();
        if (due % numFrames != m_frame) showFrame(due % numFrames);
    }

    void paintGL() override {
        SharedPtr<VideoBuffer> buffer;  // lent until the last reference to it goes
        check(m_player->getVideoBuffer(m_frame, buffer));
        unsigned int texture = 0;
        check(buffer->getTexture(texture));
        const VideoBufferResolution resolution = buffer->getResolution();

        QOpenGLExtraFunctions& gl = *context()->extraFunctions();
        gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_framebuffer);
        gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
        gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, defaultFramebufferObject());
        gl.glBlitFramebuffer(0, 0, resolution.getWidth(), resolution.getHeight(), 0, 0, pixels(width()),
                             pixels(height()), GL_COLOR_BUFFER_BIT, GL_LINEAR);
        // A texture that stays attached is not given back, whatever its owner does.
        gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
        gl.glFinish();  // the player may draw into the texture anew as soon as the last reference goes
    }

private:
    [[nodiscard]] int pixels(int length) const { return qRound(length * devicePixelRatioF()); }

    void showFrame(int64 frame) {
        m_frame = frame;
        update();
    }

    void finish() {
        m_timer.stop();
        showFrame(m_lastFrame % numFrames);
        const QImage shown = grabFramebuffer().convertToFormat(QImage::Format_RGBA8888);
        std::cout << "frame " << m_frame << ": " << rowText(shown.constScanLine(shown.height() / 2), shown.width())
                  << std::endl;
        close();
    }

    /// Before the context goes, with it current.
    void stop() {
        if (m_framebuffer == 0) return;
        m_timer.stop();
        disconnect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PictureView::stop);
        makeCurrent();
        context()->functions()->glDeleteFramebuffers(1, &m_framebuffer);
        m_framebuffer = 0;
        check(m_player->uninitialize());
        doneCurrent();
    }

    const SharedPtr<Player> m_player =
        Player::create(VideoBufferResolution(640, 360, 4, 8, false), BarGraphEngine::create);
    const int64 m_lastFrame;
    QElapsedTimer m_clock;
    QBasicTimer m_timer;
    int64 m_frame = 0;
    GLuint m_framebuffer = 0;
};

}  // namespace

int main(int argc, char** argv) {
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
    const QApplication application(argc, argv);

    PictureView view(argc > 1 ? std::atoi(argv[1]) - 1 : -1);
    view.resize(640, 360);
    view.show();
    return QApplication::exec();
}
