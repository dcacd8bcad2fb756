#include "render/qrtDisplay.h"

#include <QGuiApplication>
#include <QtGlobal>
#include <string>

#if defined(Q_OS_LINUX)
#include <X11/Xlib.h>
#endif

namespace qrtplay {

namespace {

const std::string advice = "; on a machine without one run it under xvfb-run, which starts a display of its own";

}  // namespace

Outcome checkDisplay() {
#if defined(Q_OS_LINUX)
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb") && !platform.startsWith("wayland")) return Outcome();
    const QByteArray x11 = qgetenv("DISPLAY");
    const QByteArray wayland = qgetenv("WAYLAND_DISPLAY");
    if (x11.isEmpty() && wayland.isEmpty())
        return Outcome::failure("no display: neither DISPLAY nor WAYLAND_DISPLAY is set" + advice);
    if (!wayland.isEmpty() && !platform.startsWith("xcb")) return Outcome();
    Display* const display = XOpenDisplay(nullptr);
    if (!display) return Outcome::failure("the display '" + x11.toStdString() + "' cannot be opened" + advice);
    XCloseDisplay(display);
#endif
    return Outcome();
}

Outcome checkPlatform() {
    const QString platform = QGuiApplication::platformName();
    if (platform == "offscreen" || platform == "minimal" || platform == "vnc" || platform == "linuxfb")
        return Outcome::failure("Qt's platform '" + platform.toStdString() + "' cannot share OpenGL objects" + advice);
    return Outcome();
}

}  // namespace qrtplay
