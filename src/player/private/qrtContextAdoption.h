#pragma once

#include <QOpenGLContext>
#include <memory>

#if defined(_WIN32)
#include <qt_windows.h>
#elif defined(__APPLE__)
Q_FORWARD_DECLARE_OBJC_CLASS(NSOpenGLContext);
#else
#include <EGL/egl.h>
#include <GL/glx.h>
#endif

/// What Qt 5 and Qt 6 have different words for: each has a source of its own, and a build has one of them.
namespace QRT_0_81 {

// A context of Qt's that stands for the given one; null when Qt refuses.

#if defined(_WIN32)
[[nodiscard]] std::unique_ptr<QOpenGLContext> adoptWgl(HGLRC context, HWND window);
#elif defined(__APPLE__)
[[nodiscard]] std::unique_ptr<QOpenGLContext> adoptCocoa(NSOpenGLContext* context);
#else
struct FreedByX {
    void operator()(void* memory) const { XFree(memory); }
};
template <class T>
using XPtr = std::unique_ptr<T, FreedByX>;

/// `visual` is that of the context, or null for Qt to find it out.
[[nodiscard]] std::unique_ptr<QOpenGLContext> adoptGlx(GLXContext context, XPtr<XVisualInfo> visual);
[[nodiscard]] std::unique_ptr<QOpenGLContext> adoptEgl(EGLContext context, EGLDisplay display);

/// Whether Qt works through GLX, or through EGL, with a context that it has made itself.
[[nodiscard]] bool isOfGlx(QOpenGLContext const& context);
[[nodiscard]] bool isOfEgl(QOpenGLContext const& context);
#endif

}  // namespace QRT_0_81
