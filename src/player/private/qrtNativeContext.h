#pragma once

#include <QOpenGLContext>
#include <memory>

namespace QRT_0_81 {

/// The pair of native handles by which a host names its OpenGL context.
///
/// Windows: `HGLRC` and `HWND`. macOS: `NSOpenGLContext` and null. Linux: `GLXContext` and X window or null under GLX,
/// `EGLContext` and `EGLDisplay` under EGL; which of the two holds is asked from Qt.
struct NativeContext {
    void* context = nullptr;
    void* window = nullptr;
};

/// A context that stands for the host's among Qt's own, to share objects with; the host's stays the host's. Null when
/// Qt cannot adopt it on this platform. `surface` is one that this thread may make current.
[[nodiscard]] std::unique_ptr<QOpenGLContext> adoptContext(NativeContext const& native, QSurface* surface);

/// Lets go of the host's context for one scope, if it is current on the calling thread, and makes it current again.
///
/// To adopt a context under GLX or EGL, Qt makes it current on the adopting thread for a moment. A context must not be
/// current on two threads: drivers refuse that, or lose the drawable that the host had with it.
class HostContextRelease final {
public:
    explicit HostContextRelease(NativeContext const& native);
    ~HostContextRelease();
    HostContextRelease(HostContextRelease const&) = delete;
    HostContextRelease& operator=(HostContextRelease const&) = delete;

private:
    struct Current;
    std::unique_ptr<Current> m_current;  // null when there is nothing to make current again
};

}  // namespace QRT_0_81
