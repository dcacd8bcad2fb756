#include "viewer/qrtViewerApplication.h"

#include <QApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPointer>

#include "playback/qrtSurfaceFormat.h"

namespace qrtplay {

namespace {

/// Makes the shared context current for one scope.
class SharedContextScope final {
public:
    SharedContextScope()
        : m_before(QOpenGLContext::currentContext()),
          m_surfaceBefore(m_before ? m_before->surface() : nullptr),
          m_shared(QOpenGLContext::globalShareContext()) {
        if (!m_shared) return;
        m_surface.setFormat(m_shared->format());
        m_surface.create();
        m_isCurrent = m_shared->makeCurrent(&m_surface);
    }
    ~SharedContextScope() {
        if (m_isCurrent) m_shared->doneCurrent();
        if (m_before) m_before->makeCurrent(m_surfaceBefore);
    }
    Q_DISABLE_COPY(SharedContextScope)

    /// Null when there is none or it cannot be used.
    [[nodiscard]] QOpenGLContext* context() const noexcept { return m_isCurrent ? m_shared : nullptr; }

private:
    QOpenGLContext* const m_before;
    QSurface* const m_surfaceBefore;
    QOpenGLContext* const m_shared;
    QOffscreenSurface m_surface;
    bool m_isCurrent = false;
};

std::string textOf(GLubyte const* text) {
    return text ? reinterpret_cast<char const*>(text) : "";
}

}  // namespace

std::unique_ptr<QApplication> makeViewerApplication(int& argc, char** argv) {
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
#if QT_VERSION_MAJOR == 5  // Qt 6 does so anyway
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QSurfaceFormat::setDefaultFormat(playerSurfaceFormat());
    return std::make_unique<QApplication>(argc, argv);
}

Outcome sharedContext(NativeContext& native) {
    const SharedContextScope scope;
    if (!scope.context()) return Outcome::failure("no OpenGL context can be had on this display");
    if (Outcome outcome = checkContext(*scope.context()); outcome.failed()) return outcome;
    native = nativeContextOf(*scope.context());
    if (!native.context) return Outcome::failure("Qt does not tell the native OpenGL context on this display");
    return Outcome();
}

std::string openGlText() {
    const SharedContextScope scope;
    if (!scope.context()) return {};
    QOpenGLFunctions& gl = *scope.context()->functions();
    return "OpenGL " + textOf(gl.glGetString(GL_VERSION)) + ", " + textOf(gl.glGetString(GL_RENDERER));
}

}  // namespace qrtplay
