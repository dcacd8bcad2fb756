#pragma once

#include <QVariant>

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
/// an invalid variant when this platform's plugin has none.
[[nodiscard]] QVariant toQtNativeHandle(NativeContext const& native);

}  // namespace QRT_0_81
