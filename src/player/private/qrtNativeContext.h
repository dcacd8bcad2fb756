#pragma once

#include <QVariant>
#include <memory>

class QSurface;

namespace QRT_0_81 {

/// The pair of native handles by which a host names its OpenGL context.
///
/// Windows: `HGLRC` and `HWND`. macOS: `NSOpenGLContext` and null. Linux: `GLXContext` and X window or null under GLX,
/// `EGLContext` and `EGLDisplay` under EGL; which of the two holds is asked from Qt.
struct NativeContext {
    void* context = nullptr;
    void* window = nullptr;
};

/// The record that lets a `QOpenGLContext` adopt the host's context, in the form that Qt's platform plugin understands;
/// an invalid variant when this platform's plugin has none. `surface` is one that this thread may make current.
[[nodiscard]] QVariant toQtNativeHandle(NativeContext const& native, QSurface* surface);

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
